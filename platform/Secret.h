#pragma once

#include <memory>
#include <string>

namespace tarvo::platform {

/// Overwrites a text, the bytes beyond its end included, and empties it.
void wipe(std::string& text);

/// A passphrase or the like. Copies share one text, which is wiped when the last of them is gone.
class Secret {
public:
    /// Takes the text over and wipes the given one.
    explicit Secret(std::string&& text);

    const std::string& text() const { return *text_; }

private:
    std::shared_ptr<const std::string> text_;
};

}  // namespace tarvo::platform
