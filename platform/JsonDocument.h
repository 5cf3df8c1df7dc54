#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "platform/Data.h"
#include "platform/Rows.h"

namespace tarvo::platform::json {

/// One place of a parsed document. A view, valid as long as the document lives; null if there is no such place.
class Element {
public:
    Element() = default;
    ValueKind kind() const;
    std::optional<std::string_view> asText() const;
    /// The value where it lies; a list or a map gives a null view.
    ValueView view() const;
    /// A Value of its own with the same content.
    Value copy() const;

    /// Up to `into.size()` leading items of a list; the answer is how many there were. 0 for any other kind.
    std::size_t leadingItems(std::span<Element> into) const;
    /// All items of a list, into a vector that may be used again; false for any other kind.
    bool items(std::vector<Element>& into) const;
    /// A member of a map, the last of equal keys; a null element if there is none or this is not a map.
    Element find(std::string_view key) const;

private:
    friend class Document;
    using Representation = std::array<std::uintptr_t, 2>;  // of the parser's own view
    explicit Element(const Representation& representation) : representation_(representation) {}
    Representation representation_{};
};

/// A whole JSON document, parsed and checked, to be read where it lies: for bodies so large that making a Value of each
/// part would cost more than the work itself. Immutable; copies share it; any thread. It holds about as much memory as
/// its text, and does not need the text any more.
class Document {
public:
    /// Accepts and refuses exactly what `json::parse` does.
    static std::optional<Document> parse(const Data& data);
    Element root() const;

private:
    struct Content;
    explicit Document(std::shared_ptr<const Content> content) : content_(std::move(content)) {}
    std::shared_ptr<const Content> content_;
};

}  // namespace tarvo::platform::json

namespace tarvo {
namespace json = platform::json;
}
