#include "platform/Random.h"

#include <sys/random.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "platform/Log.h"

namespace tarvo::platform {

namespace {

void fill(void* to, std::size_t count) {
    auto* bytes = static_cast<char*>(to);
    while (count > 0) {
        auto given = getrandom(bytes, count, 0);
        if (given > 0) {
            bytes += given;
            count -= static_cast<std::size_t>(given);
        } else if (errno != EINTR) {
            // Nobody may go on with a secret that is not random.
            log(LogLevel::error, "random", "The system gives no random numbers");
            std::abort();
        }
    }
}

}  // namespace

std::string Random::bytes(std::size_t count) {
    std::string bytes(count, '\0');
    fill(bytes.data(), count);
    return bytes;
}

std::uint64_t Random::number() {
    std::uint64_t number;
    fill(&number, sizeof number);
    return number;
}

std::string Random::uuid() {
    static constexpr char digits[] = "0123456789ABCDEF";
    unsigned char bytes[16];
    fill(bytes, sizeof bytes);
    bytes[6] = (bytes[6] & 0x0F) | 0x40;  // version 4: random
    bytes[8] = (bytes[8] & 0x3F) | 0x80;
    std::string text;
    text.reserve(36);
    for (std::size_t i = 0; i < sizeof bytes; ++i) {
        if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
        text += digits[bytes[i] >> 4];
        text += digits[bytes[i] & 15];
    }
    return text;
}

}  // namespace tarvo::platform
