// Carries the precompiled header; it needs one source of its own.
