#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tarvo::sandbox {

/// Generates numbers from a seed, the same on every machine and with every standard library (SplitMix64).
class Generator {
public:
    explicit Generator(std::uint64_t seed) : state_(seed) {}

    std::uint64_t number() {
        state_ += 0x9E3779B97F4A7C15ULL;
        auto mixed = (state_ ^ (state_ >> 30)) * 0xBF58476D1CE4E5B9ULL;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBULL;
        return mixed ^ (mixed >> 31);
    }
    /// Returns a number from 0 up to, but not including, `limit`.
    std::uint64_t below(std::uint64_t limit) { return number() % limit; }
    std::string_view oneOf(std::span<const std::string_view> choices) { return choices[below(choices.size())]; }

private:
    std::uint64_t state_;
};

/// Makes the server's ids of nineteen digits: a prefix of the organisation and a rising part, so that they sort by age.
class IdSequence {
public:
    explicit IdSequence(std::uint64_t seed) : prefix_(prefix(seed)) {}

    /// Returns the first ten digits of every id of the organisation.
    static std::uint64_t prefix(std::uint64_t seed) { return 4876000000ULL + seed % 1000000ULL; }

    std::string next() {
        auto rest = std::to_string(++last_);
        return std::to_string(prefix_) + std::string(9 - rest.size(), '0') + rest;
    }

private:
    std::uint64_t prefix_;
    std::uint64_t last_ = 1000;
};

}  // namespace tarvo::sandbox
