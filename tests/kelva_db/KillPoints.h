#pragma once

namespace kelva::tests {

/// Kills this process when it is about to make its `number`th call from now on that writes to, syncs, cuts, renames or
/// removes a file. For a process that was started to be killed.
void dieAtCall(long number);

}  // namespace kelva::tests
