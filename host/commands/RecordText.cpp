#include "host/commands/RecordText.h"

#include <algorithm>

#include "platform/Json.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/utils/Util.h"

namespace tarvo::host {

namespace {

/// Returns the text that the server shows for a lookup, which may be in two parts for a person.
std::string lookupText(const Record& record, const std::string& column) {
    if (auto shown = record.getString(getLookupColumn(column)); !shown.empty()) return shown;
    auto first = record.getString(column + std::string(firstNameSuffix));
    auto last = record.getString(column + std::string(lastNameSuffix));
    return first + (first.empty() || last.empty() ? "" : " ") + last;
}

std::string labelOf(const std::string& value, const FieldMetadata& field, const FieldList& fields) {
    for (auto& one : fields.getPicklist(field))
        if (one.fieldActualValue == value && !one.fieldOptionalValue.empty()) return one.fieldOptionalValue;
    return value;
}

std::optional<std::string> dateText(std::int64_t seconds, FieldDataType type) {
    if (type == FieldDataType::date) return Util::dateFormatter().string(seconds);
    if (type == FieldDataType::dateTime) return Util::dateTimeFormatter().string(seconds);
    return std::nullopt;
}

/// Reads a Bool, which is stored as a number or as a text, as the server declared the column.
std::optional<bool> truthOf(const ValueView& value) {
    if (auto truth = value.asBool()) return truth;
    if (auto number = value.asInteger()) return *number != 0;
    if (value.asText() == "true" || value.asText() == "1") return true;
    if (value.asText() == "false" || value.asText() == "0") return false;
    return std::nullopt;
}

std::string plainText(const ValueView& value) {
    if (auto text = value.asText()) return std::string(*text);
    if (auto bytes = value.asBytes()) return std::to_string(bytes->size()) + " bytes";
    auto copy = value.copy();
    if (auto list = copy.asList()) {
        std::string joined;
        for (auto& item : *list) joined += (joined.empty() ? "" : ", ") + plainText(item);
        return joined;
    }
    return json::write(copy).value_or("");
}

}  // namespace

std::string readableText(const Record& record, const FieldMetadata& field, const FieldList& fields) {
    auto& column = fields.identifierOf(field);
    if (auto shown = lookupText(record, column); !shown.empty()) return shown;
    auto value = record[column];
    if (value.isNull()) return "";
    if (auto seconds = value.asInteger())
        if (auto text = dateText(*seconds, field.fieldType)) return *text;
    if (field.fieldType == FieldDataType::boolean)
        if (auto truth = truthOf(value)) return *truth ? "yes" : "no";
    auto text = plainText(value);
    return isPickListField(field.fieldType) ? labelOf(text, field, fields) : text;
}

std::string shortened(const std::string& text, std::size_t characters) {
    auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; };
    std::size_t count = 0, cut = text.size();
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (!begins(text[at])) continue;
        if (++count == characters) cut = at;
        if (count > characters) return text.substr(0, cut) + "…";
    }
    return text;
}

}  // namespace tarvo::host
