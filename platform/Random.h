#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace tarvo::platform {

/// Random numbers and identities.
class Random {
public:
    /// A random UUID in the usual form, capital letters.
    static std::string uuid();
    static std::uint64_t number();
    /// Bytes that may serve as a secret.
    static std::string bytes(std::size_t count);
};

}  // namespace tarvo::platform
