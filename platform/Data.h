#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tarvo::platform {

/// The bytes of a body or a file. Copies share one buffer, which nobody changes once it is here. Behind the last
/// byte stand at least `padding` readable bytes, so that the JSON parser reads the buffer in place.
class Data {
public:
    static constexpr std::size_t padding = 64;

    Data() = default;
    /// Takes over the text; its buffer grows by the padding.
    explicit Data(std::string bytes) {
        if (bytes.empty()) return;
        auto size = bytes.size();
        bytes.resize(size + padding, '\0');
        size_ = size;
        bytes_ = std::make_shared<const std::string>(std::move(bytes));
    }

    std::string_view view() const { return bytes_ ? std::string_view(bytes_->data(), size_) : std::string_view(); }
    std::string text() const { return std::string(view()); }
    std::size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }
    friend bool operator==(const Data& a, const Data& b) { return a.view() == b.view(); }

private:
    std::shared_ptr<const std::string> bytes_;
    std::size_t size_ = 0;
};

}  // namespace tarvo::platform
