#include "platform/JsonDocument.h"

#include <simdjson.h>

#include <bit>
#include <charconv>

#include "platform/DispatchQueue.h"
#include "platform/Text.h"
#include "platform/ThreadSafety.h"

namespace tarvo::platform::json {

namespace {

constexpr std::size_t maximumDepth = 1000;

Value valueOf(simdjson::dom::element element) {
    using simdjson::dom::element_type;
    switch (element.type()) {
        case element_type::ARRAY: {
            ValueList list;
            simdjson::dom::array array = element;
            list.reserve(array.size());
            for (auto item : array) list.push_back(valueOf(item));
            return list;
        }
        case element_type::OBJECT: {
            ValueMap map;
            simdjson::dom::object object = element;
            map.reserve(object.size());
            for (auto [key, item] : object) map.set(key, valueOf(item));
            return map;
        }
        case element_type::INT64:
            return element.get_int64().value_unsafe();
        case element_type::UINT64:
            return static_cast<double>(element.get_uint64().value_unsafe());
        case element_type::DOUBLE:
            return element.get_double().value_unsafe();
        case element_type::STRING:
            return element.get_string().value_unsafe();
        case element_type::BOOL:
            return element.get_bool().value_unsafe();
        case element_type::NULL_VALUE:
            return {};
    }
    return {};
}

constexpr std::size_t escapeSize = 6;  // as in "\ud83d"

// Returns the number of a "\uXXXX" escape at this place, or nullopt if there is none.
std::optional<unsigned> escapedUnit(std::string_view json, std::size_t at) {
    if (at + escapeSize > json.size() || json[at] != '\\' || json[at + 1] != 'u') return std::nullopt;
    unsigned unit = 0;
    auto end = json.data() + at + escapeSize;
    auto read = std::from_chars(json.data() + at + 2, end, unit, 16);
    return read.ptr == end ? std::optional(unit) : std::nullopt;
}
bool isHighSurrogate(std::optional<unsigned> unit) { return unit && *unit >= 0xD800 && *unit <= 0xDBFF; }
bool isLowSurrogate(std::optional<unsigned> unit) { return unit && *unit >= 0xDC00 && *unit <= 0xDFFF; }

// JSON allows two things that the parser refuses: a whole number that fits in no integer type, and an escape that is
// half of a surrogate pair, which a server makes when it cuts a text. They are rare, so the document is read again with
// ".0" after each such number and U+FFFD in place of each half. Returns nullopt if there is nothing to replace.
class JsonRepair {
public:
    explicit JsonRepair(std::string_view json) : json_(json) {}

    std::optional<std::string> repaired() {
        while (at_ < json_.size()) {
            if (json_[at_] == '"')
                passText();
            else if (json_[at_] == '-' || (json_[at_] >= '0' && json_[at_] <= '9'))
                passNumber();
            else
                ++at_;
        }
        if (copied_ == 0) return std::nullopt;
        return out_.append(json_, copied_);
    }

private:
    void passText() {
        for (++at_; at_ < json_.size() && json_[at_] != '"';) {
            auto unit = escapedUnit(json_, at_);
            if (isHighSurrogate(unit) && isLowSurrogate(escapedUnit(json_, at_ + escapeSize)))
                at_ += 2 * escapeSize;
            else if (isHighSurrogate(unit) || isLowSurrogate(unit))
                replace(escapeSize, "\\ufffd");
            else
                at_ += json_[at_] == '\\' ? 2 : 1;
        }
        ++at_;
    }
    void passNumber() {
        auto end = std::min(json_.find_first_not_of("+-0123456789.eE", at_), json_.size());
        auto token = json_.substr(at_, end - at_);
        bool isWhole = token.find_first_of(".eE") == std::string_view::npos;
        at_ = end;
        if (isWhole && !text::toInteger(token)) replace(0, ".0");
    }
    /// Writes the text in place of `size` bytes and goes on after them.
    void replace(std::size_t size, std::string_view text) {
        out_.append(json_, copied_, at_ - copied_).append(text);
        copied_ = at_ += size;
    }

    std::string_view json_;
    std::string out_;
    std::size_t at_ = 0, copied_ = 0;
};

}  // namespace

namespace {

/// Objects with large buffers that wait for the next use: a page of a download needs 40 MB to be read, and taking them
/// from the system again for each page costs half as much as reading it. They are freed when the pages end.
template <class T>
class Spares {
public:
    static Spares& shared() {
        // Documents may end after statics are destroyed.
        static auto& spares = *new Spares;
        return spares;
    }

    T take() {
        MutexLock lock(mutex_);
        if (spares_.empty()) return T();
        auto spare = std::move(spares_.back());
        spares_.pop_back();
        return spare;
    }
    void put(T spare) {
        MutexLock lock(mutex_);
        if (spares_.size() < mostKept) spares_.push_back(std::move(spare));
        if (!release_.isPending()) release_ = queue_->asyncAfter(std::chrono::seconds(1), [this] { release(); });
    }

private:
    static constexpr std::size_t mostKept = 2;

    void release() {
        std::vector<T> released;
        MutexLock lock(mutex_);
        spares_.swap(released);
    }

    const std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("json", DispatchQueue::Quality::background);
    Mutex mutex_;
    std::vector<T> spares_ TARVO_GUARDED_BY(mutex_);
    Timer release_ TARVO_GUARDED_BY(mutex_);
};

constexpr std::size_t largeSize = 1024 * 1024;

using Parser = std::unique_ptr<simdjson::dom::parser>;

simdjson::error_code parseWith(Parser& parser, simdjson::dom::document& document, std::string_view text) {
    if (!parser) parser = std::make_unique<simdjson::dom::parser>();
    if (parser->max_depth() != maximumDepth) {
        auto error = parser->allocate(std::max<std::size_t>(text.size(), 1024), maximumDepth);
        if (error != simdjson::SUCCESS) return error;
    }
    auto error = parser->parse_into_document(document, text.data(), text.size(), false).error();
    if (error == simdjson::SUCCESS) return error;
    // The parser's errors do not say precisely what it refused, and they differ between its versions.
    auto repaired = JsonRepair(text).repaired();
    return repaired ? parser->parse_into_document(document, *repaired).error() : error;
}

}  // namespace

struct Document::Content {
    explicit Content(std::size_t size) {
        if (size >= largeSize) document = Spares<simdjson::dom::document>::shared().take();
    }
    ~Content() {
        if (document.capacity() >= largeSize) Spares<simdjson::dom::document>::shared().put(std::move(document));
    }
    Content(const Content&) = delete;
    Content& operator=(const Content&) = delete;
    simdjson::dom::document document;
};

// An element of ours is the parser's own view in plain words, so that its header stays out of this one's.
static_assert(sizeof(Element) == sizeof(simdjson::dom::element));
static_assert(std::is_trivially_copyable_v<simdjson::dom::element>);

namespace {

simdjson::dom::element theirs(const std::array<std::uintptr_t, 2>& representation) {
    return std::bit_cast<simdjson::dom::element>(representation);
}
std::array<std::uintptr_t, 2> plain(simdjson::dom::element element) {
    return std::bit_cast<std::array<std::uintptr_t, 2>>(element);
}

}  // namespace

std::optional<Document> Document::parse(const Data& data) {
    if (data.empty()) return std::nullopt;
    auto text = data.view();
    auto content = std::make_shared<Content>(text.size());
    simdjson::error_code error = simdjson::SUCCESS;
    if (text.size() >= largeSize) {
        auto parser = Spares<Parser>::shared().take();
        error = parseWith(parser, content->document, text);
        Spares<Parser>::shared().put(std::move(parser));
    } else {
        // The parser keeps its buffers between documents.
        thread_local Parser parser;
        error = parseWith(parser, content->document, text);
    }
    return error == simdjson::SUCCESS ? std::optional(Document(std::move(content))) : std::nullopt;
}

Element Document::root() const { return Element(plain(content_->document.root())); }

ValueKind Element::kind() const {
    using simdjson::dom::element_type;
    if (!representation_[0]) return ValueKind::null;
    switch (theirs(representation_).type()) {
        case element_type::ARRAY:
            return ValueKind::list;
        case element_type::OBJECT:
            return ValueKind::map;
        case element_type::INT64:
            return ValueKind::integer;
        case element_type::UINT64:
        case element_type::DOUBLE:
            return ValueKind::real;
        case element_type::STRING:
            return ValueKind::text;
        case element_type::BOOL:
            return ValueKind::boolean;
        case element_type::NULL_VALUE:
            return ValueKind::null;
    }
    return ValueKind::null;
}

std::optional<std::string_view> Element::asText() const {
    std::string_view text;
    if (!representation_[0] || theirs(representation_).get(text) != simdjson::SUCCESS) return std::nullopt;
    return text;
}

ValueView Element::view() const {
    switch (kind()) {
        case ValueKind::boolean:
            return ValueView::boolean(theirs(representation_).get_bool().value_unsafe());
        case ValueKind::integer:
            return ValueView::integer(theirs(representation_).get_int64().value_unsafe());
        case ValueKind::real:
            return ValueView::real(theirs(representation_).get_double().value_unsafe());
        case ValueKind::text:
            return ValueView::text(theirs(representation_).get_string().value_unsafe());
        default:
            return {};
    }
}

Value Element::copy() const { return representation_[0] ? valueOf(theirs(representation_)) : Value(); }

std::size_t Element::leadingItems(std::span<Element> into) const {
    simdjson::dom::array list;
    if (!representation_[0] || theirs(representation_).get(list) != simdjson::SUCCESS) return 0;
    std::size_t count = 0;
    for (auto item : list) {
        if (count < into.size()) into[count] = Element(plain(item));
        ++count;
    }
    return count;
}

bool Element::items(std::vector<Element>& into) const {
    into.clear();
    simdjson::dom::array list;
    if (!representation_[0] || theirs(representation_).get(list) != simdjson::SUCCESS) return false;
    for (auto item : list) into.push_back(Element(plain(item)));
    return true;
}

Element Element::find(std::string_view key) const {
    simdjson::dom::object map;
    if (!representation_[0] || theirs(representation_).get(map) != simdjson::SUCCESS) return {};
    Element found;
    for (auto [name, item] : map)
        if (name == key) found = Element(plain(item));
    return found;
}

}  // namespace tarvo::platform::json
