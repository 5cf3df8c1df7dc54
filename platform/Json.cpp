#include "platform/Json.h"

#include <simdjson.h>

#include <charconv>
#include <cmath>

#include "platform/Text.h"

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

std::size_t endOfText(std::string_view json, std::size_t at) {
    for (++at; at < json.size() && json[at] != '"'; ++at)
        if (json[at] == '\\') ++at;
    return std::min(at + 1, json.size());
}

// The parser refuses whole numbers that fit in no integer type. They are rare, so the document is read again with ".0"
// behind each of them. Nothing when there is none.
std::optional<std::string> withLongIntegersAsReals(std::string_view json) {
    std::string out;
    std::size_t copied = 0;
    for (std::size_t at = 0; at < json.size();) {
        if (json[at] == '"') {
            at = endOfText(json, at);
        } else if (json[at] == '-' || (json[at] >= '0' && json[at] <= '9')) {
            auto end = std::min(json.find_first_not_of("+-0123456789.eE", at), json.size());
            auto token = json.substr(at, end - at);
            bool whole = token.find_first_of(".eE") == std::string_view::npos;
            at = end;
            if (!whole || text::toInteger(token)) continue;
            out.append(json, copied, end - copied).append(".0");
            copied = end;
        } else {
            ++at;
        }
    }
    if (copied == 0) return std::nullopt;
    return out.append(json, copied);
}

std::optional<Value> parsePadded(std::string_view text) {
    // A parser keeps its buffers between documents. One that grew for a huge body is let go again.
    constexpr std::size_t keptCapacity = 32 * 1024 * 1024;
    thread_local auto parser = std::make_unique<simdjson::dom::parser>();
    if (parser->max_depth() != maximumDepth &&
        parser->allocate(std::max<std::size_t>(text.size(), 1024), maximumDepth) != simdjson::SUCCESS)
        return std::nullopt;
    simdjson::dom::element document;
    auto error = parser->parse(text.data(), text.size(), false).get(document);
    // Which error stands for a whole number beyond 64 bits depends on the version of the parser.
    if (error != simdjson::SUCCESS) {
        auto rewritten = withLongIntegersAsReals(text);
        if (rewritten) error = parser->parse(*rewritten).get(document);
    }
    if (error != simdjson::SUCCESS) return std::nullopt;
    auto value = valueOf(document);
    if (parser->capacity() > keptCapacity) parser = std::make_unique<simdjson::dom::parser>();
    return value;
}

void writeText(std::string& out, std::string_view text) {
    static constexpr char hex[] = "0123456789abcdef";
    out += '"';
    for (char c : text) {
        switch (c) {
            case '"':
                out += "\\\"";
                break;
            case '\\':
                out += "\\\\";
                break;
            case '\n':
                out += "\\n";
                break;
            case '\r':
                out += "\\r";
                break;
            case '\t':
                out += "\\t";
                break;
            default:
                if (static_cast<unsigned char>(c) < 0x20) {
                    out += "\\u00";
                    out += hex[c >> 4];
                    out += hex[c & 15];
                } else {
                    out += c;
                }
        }
    }
    out += '"';
}

bool writeReal(std::string& out, double real) {
    if (!std::isfinite(real)) return false;
    char buffer[32];
    auto end = std::to_chars(buffer, buffer + sizeof buffer, real).ptr;
    std::string_view digits(buffer, static_cast<std::size_t>(end - buffer));
    out += digits;
    // A whole real keeps its kind when it is read back.
    if (digits.find_first_of(".e") == std::string_view::npos) out += ".0";
    return true;
}

bool writeValue(std::string& out, const Value& value) {
    switch (value.kind()) {
        case ValueKind::null:
            out += "null";
            return true;
        case ValueKind::boolean:
            out += *value.asBool() ? "true" : "false";
            return true;
        case ValueKind::integer:
            out += std::to_string(*value.asInteger());
            return true;
        case ValueKind::real:
            return writeReal(out, *value.asReal());
        case ValueKind::text:
            writeText(out, *value.asText());
            return true;
        case ValueKind::bytes:
            writeText(out, text::base64(value.asBytes()->bytes));
            return true;
        case ValueKind::list: {
            out += '[';
            bool first = true;
            for (auto& item : *value.asList()) {
                if (!std::exchange(first, false)) out += ',';
                if (!writeValue(out, item)) return false;
            }
            out += ']';
            return true;
        }
        case ValueKind::map: {
            out += '{';
            bool first = true;
            for (auto& entry : *value.asMap()) {
                if (!std::exchange(first, false)) out += ',';
                writeText(out, entry.name);
                out += ':';
                if (!writeValue(out, entry.value)) return false;
            }
            out += '}';
            return true;
        }
        case ValueKind::object:
            return false;
    }
    return false;
}

}  // namespace

std::optional<Value> parse(const Data& data) {
    if (data.empty()) return std::nullopt;
    return parsePadded(data.view());
}

std::optional<Value> parse(std::string_view text) { return parse(Data(std::string(text))); }

std::optional<std::string> write(const Value& value) {
    std::string out;
    // One look at the whole: what is written around the texts cannot complete a broken sequence.
    if (!writeValue(out, value) || !text::isValidUtf8(out)) return std::nullopt;
    return out;
}

}  // namespace tarvo::platform::json
