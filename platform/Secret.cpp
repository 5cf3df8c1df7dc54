#include "platform/Secret.h"

#include <string.h>

namespace tarvo::platform {

void wipe(std::string& text) {
    // The compiler could leave out a plain overwriting of a text that nobody reads afterwards.
    text.resize(text.capacity());
    ::explicit_bzero(text.data(), text.size());
    text.clear();
}

// A copy, since a short text does not leave its place when it is moved.
Secret::Secret(std::string&& text)
    : text_(new std::string(text), [](std::string* held) {
          wipe(*held);
          delete held;
      }) {
    wipe(text);
}

}  // namespace tarvo::platform
