#include "tarvobase/records/RecordConversion.h"

#include "platform/Json.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/records/RecordPlan.h"
#include "tarvobase/value_objects/IdentifierConstants.h"
#include "tarvobase/value_objects/TagList.h"

namespace tarvo {

namespace {

std::optional<std::vector<std::string>> textsOf(const Value& value) {
    auto list = value.asList();
    if (!list) return std::nullopt;
    std::vector<std::string> texts;
    for (auto& item : *list) {
        if (!item.asText()) return std::nullopt;
        texts.push_back(*item.asText());
    }
    return texts;
}

bool isListOf(const Value* value, ValueKind kind) {
    auto list = value ? value->asList() : nullptr;
    return list && std::all_of(list->begin(), list->end(), [&](auto& item) { return item.kind() == kind; });
}

std::string textIn(const ValueMap& map, std::string_view key) {
    auto value = map.find(key);
    return value ? value->textOr("") : "";
}

/// A wire dictionary by the slots of a plan.
class DictionarySource {
public:
    DictionarySource(const RecordPlan& plan, const ValueMap& wire) : plan_(plan), wire_(wire) {}
    const Value* value(std::size_t slot) const {
        auto value = wire_.find(plan_.keys()[slot]);
        return value && !value->isNull() ? value : nullptr;
    }
    ValueView view(std::size_t slot) const {
        auto found = value(slot);
        auto view = found ? ValueView(*found) : ValueView();
        return view.nested() ? ValueView() : view;
    }
    bool isPresent(std::size_t slot) const { return value(slot) != nullptr; }
    bool isRecords(std::size_t slot) const { return isListOf(value(slot), ValueKind::map); }
    bool isTexts(std::size_t slot) const { return isListOf(value(slot), ValueKind::text); }

private:
    const RecordPlan& plan_;
    const ValueMap& wire_;
};

/// Fills a database dictionary.
class DictionarySink {
public:
    DictionarySink(const RecordPlan& plan, const DictionarySource& source, ValueMap& dictionary)
        : plan_(plan), source_(source), dictionary_(dictionary) {}

    void value(std::size_t column, const ValueView& view) { set(column, view.copy()); }
    void other(std::size_t column, std::size_t slot) { set(column, *source_.value(slot)); }
    void rows(std::size_t column, std::size_t slot) { other(column, slot); }
    void noRecords(std::size_t column) { set(column, ValueList()); }
    bool attachments(std::size_t column, std::size_t slot) {
        ValueList ids;
        for (auto& map : *source_.value(slot)->asList())
            if (auto id = map.asMap()->find("id"); id && id->asText()) ids.push_back(*id);
        auto bytes = json::write(ids);
        if (bytes) set(column, Bytes{*std::move(bytes)});
        return bytes.has_value();
    }
    void tags(std::size_t column, std::size_t slot) {
        std::vector<Tag> tags;
        for (auto& item : *source_.value(slot)->asList()) {
            auto id = item.asMap()->find("id"), name = item.asMap()->find("name");
            if (id && id->asText() && name && name->asText())
                tags.push_back({*id->asText(), *name->asText(), plan_.moduleName()});
        }
        set(column, TagList::value(std::move(tags)));
    }
    bool noteTitle(std::size_t column, std::size_t slot) {
        auto text = json::write(*source_.value(slot));
        if (text) set(column, *std::move(text));
        return text.has_value();
    }

private:
    void set(std::size_t column, Value value) { dictionary_.set(plan_.columns()[column], std::move(value)); }

    const RecordPlan& plan_;
    const DictionarySource& source_;
    ValueMap& dictionary_;
};

/// The bytes of a list of texts as that list; what is no such list stays.
void decodeAttachments(Value& value) {
    auto bytes = value.asBytes();
    auto list = bytes ? json::parse(bytes->bytes) : std::nullopt;
    if (isListOf(list ? &*list : nullptr, ValueKind::text)) value = *std::move(list);
}

Value textOfMoment(const ValueView& stored, const DateFormatter& formatter) {
    auto seconds = stored.asInteger();
    return seconds ? Value(formatter.string(*seconds)) : Value();
}

Value wireBoolean(const ValueView& stored) {
    if (auto text = stored.asText()) return *text == "true";
    if (auto boolean = stored.asBool()) return *boolean;
    platform::log("invalid bool");
    return {};
}

/// Null when a value has no wire form.
Value wireValue(FieldDataType type, const ValueView& stored) {
    switch (type) {
        case FieldDataType::boolean:
            return wireBoolean(stored);
        case FieldDataType::date:
            return textOfMoment(stored, Util::DateFormatters::dateOnlyFormatter());
        case FieldDataType::dateTime:
            return textOfMoment(stored, Util::DateFormatters::iso8601DateFormatter());
        case FieldDataType::file:
        case FieldDataType::alarm:
            return stored.asText() ? Value(ValueMap{{std::string(rawText(type)), *stored.asText()}}) : Value();
        default:
            return stored.copy();
    }
}

}  // namespace

RecordConversion::RecordConversion(const FieldList& metadata) : plan_(std::make_unique<RecordPlan>(metadata)) {}
RecordConversion::~RecordConversion() = default;
RecordConversion::RecordConversion(RecordConversion&&) noexcept = default;

ValueMap RecordConversion::toDatabaseDictionary(const ValueMap& wire) const {
    ValueMap dictionary;
    dictionary.reserve(plan_->columns().size());
    DictionarySource source(*plan_, wire);
    DictionarySink sink(*plan_, source, dictionary);
    plan_->convert(source, sink);
    return dictionary;
}

std::optional<Record> RecordConversion::toRecord(const ValueMap& wire) const {
    if (plan_->fields().empty()) return std::nullopt;
    auto dictionary = toDatabaseDictionary(wire);
    auto& naming = plan_->naming();
    auto id = textIn(dictionary, RecordUtil::getIdentifierFieldName(plan_->moduleName(), naming));
    if (auto attachments = dictionary.find(naming.constant->attachments)) decodeAttachments(*attachments);
    return Record(std::move(dictionary), std::move(id), plan_->moduleName(), naming);
}

ValueMap convertRecordFromNetworkToDBDictionary(const ValueMap& wire, const FieldList& metadata) {
    return RecordConversion(metadata).toDatabaseDictionary(wire);
}

std::optional<Record> recordFromNetworkDictionary(const std::optional<ValueMap>& wire, const FieldList& with) {
    return wire ? RecordConversion(with).toRecord(*wire) : std::nullopt;
}

void convertDateToTimestamp(ValueMap& wire, const std::vector<std::string>& keys, const FieldList& fieldList) {
    for (auto& key : keys) {
        auto field = fieldList.getField(key);
        auto value = wire.find(key);
        if (!field || !isDate(field->fieldType) || !value || !value->asText()) continue;
        auto& formatter = field->fieldType == FieldDataType::date ? Util::DateFormatters::dateOnlyFormatter()
                                                                  : Util::DateFormatters::iso8601DateFormatter();
        *value = formatter.date(*value->asText()).value_or(0);
    }
}

void createLookupFields(ValueMap& wire, const std::vector<std::string>& keys, const FieldList& fieldList) {
    for (auto& key : keys) {
        auto field = fieldList.getField(key);
        auto value = wire.find(key);
        if (!field || field->fieldType != FieldDataType::multiselectlookup || !value) continue;
        if (auto ids = textsOf(*value)) wire.set(key + std::string(lookupDataSuffix), text::join(*ids, ","));
    }
}

ValueMap convertRecordToNetworkDictionary(const Record& record, const FieldList& metadata) {
    ValueMap wire;
    auto& names = *metadata.naming().constant;
    for (auto [identifier, field] : metadata.orderedFields()) {
        auto stored = record[identifier];
        if (stored.isNull() || identifier == names.modifiedTime || identifier == names.modifiedBy) continue;
        if (auto value = wireValue(field.fieldType, stored); !value.isNull())
            wire.set(field.fieldAPIName, std::move(value));
    }
    return wire;
}

}  // namespace tarvo
