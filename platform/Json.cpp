#include "platform/Json.h"

#include <charconv>
#include <cmath>
#include <utility>

#include "platform/JsonDocument.h"
#include "platform/Text.h"

namespace tarvo::platform::json {

namespace {

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
    auto document = Document::parse(data);
    return document ? std::optional(document->root().copy()) : std::nullopt;
}

std::optional<Value> parse(std::string_view text) { return parse(Data(std::string(text))); }

std::optional<std::string> write(const Value& value) {
    std::string out;
    // One look at the whole: what is written around the texts cannot complete a broken sequence.
    if (!writeValue(out, value) || !text::isValidUtf8(out)) return std::nullopt;
    return out;
}

}  // namespace tarvo::platform::json
