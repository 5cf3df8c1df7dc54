#include "tarvobase/records/wire/RecordConversion.h"

#include "platform/Json.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/network_layer/TypedReads.h"
#include "tarvobase/records/wire/RecordPlan.h"
#include "tarvobase/storage/StoredForm.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tarvobase/value_objects/tag/TagList.h"

namespace tarvo {

namespace {

bool isListOf(const Value* value, ValueKind kind) {
    auto list = value ? value->asList() : nullptr;
    return list && std::all_of(list->begin(), list->end(), [&](auto& item) { return item.kind() == kind; });
}

std::string textIn(const ValueMap& map, std::string_view key) {
    auto value = map.find(key);
    return value ? value->textOr("") : "";
}

/// Returns the ids of attachments as a column holds them.
Value storedAttachments(const std::vector<std::string>& ids, bool isNotesModule) {
    if (isNotesModule) return text::join(ids, ",");
    return Bytes{json::write(Value(ids)).value_or("[]")};
}

/// Reads a wire dictionary by the slots of a plan.
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

/// Writes a database dictionary, or its table form.
class DatabaseDictionarySink {
public:
    DatabaseDictionarySink(const RecordPlan& plan, const DictionarySource& source, ValueMap& dictionary, Form form)
        : plan_(plan), source_(source), dictionary_(dictionary), form_(form) {}

    void value(std::size_t column, const ValueView& view) { set(column, view.copy()); }
    void other(std::size_t column, std::size_t slot) { set(column, *source_.value(slot)); }
    void rows(std::size_t column, std::size_t slot) {
        form_ == Form::table ? set(column, countOf(slot)) : other(column, slot);
    }
    void noRecords(std::size_t column) { set(column, form_ == Form::table ? Value(0) : Value(ValueList())); }
    bool attachments(std::size_t column, std::size_t slot) {
        std::vector<std::string> ids;
        for (auto& map : *source_.value(slot)->asList())
            if (auto id = map.asMap()->find("id"); id && id->asText()) ids.push_back(*id->asText());
        set(column, storedAttachments(ids, form_ == Form::table && plan_.isNotesModule()));
        return true;
    }
    void tags(std::size_t column, std::size_t slot) {
        if (form_ == Form::table) return set(column, countOf(slot));
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
    Value countOf(std::size_t slot) const { return static_cast<std::int64_t>(source_.value(slot)->asList()->size()); }
    void set(std::size_t column, Value value) { dictionary_.set(plan_.columns()[column], std::move(value)); }

    const RecordPlan& plan_;
    const DictionarySource& source_;
    ValueMap& dictionary_;
    const Form form_;
};

ValueMap converted(const RecordPlan& plan, const ValueMap& wire, Form form) {
    ValueMap dictionary;
    dictionary.reserve(plan.columns().size());
    DictionarySource source(plan, wire);
    DatabaseDictionarySink sink(plan, source, dictionary, form);
    plan.convert(source, sink);
    return dictionary;
}

Value textOfMoment(const ValueView& stored, const DateFormatter& formatter) {
    auto seconds = stored.asInteger();
    return seconds ? Value(formatter.string(*seconds)) : Value();
}

Value wireBoolean(const ValueView& stored) {
    if (auto text = stored.asText()) return *text == "true";
    if (auto boolean = stored.asBool()) return *boolean;
    platform::log(platform::LogLevel::warning, "records", "invalid bool");
    return {};
}

/// Returns null if a value has no wire form.
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
    return converted(*plan_, wire, Form::plain);
}
ValueMap RecordConversion::toRow(const ValueMap& wire) const { return converted(*plan_, wire, Form::table); }

std::optional<Record> RecordConversion::toRecord(const ValueMap& wire) const {
    if (plan_->fields().empty()) return std::nullopt;
    auto dictionary = toDatabaseDictionary(wire);
    auto& naming = plan_->naming();
    auto id = textIn(dictionary, RecordUtil::getIdentifierFieldName(plan_->moduleName(), naming));
    if (auto attachments = dictionary.find(naming.constant->attachments); attachments && attachments->asBytes())
        if (auto ids = attachmentIds(*attachments, plan_->moduleName())) *attachments = *std::move(ids);
    return Record(std::move(dictionary), std::move(id), plan_->moduleName(), naming);
}

ValueMap rowOf(const Record& record, const FieldIdentifier& naming) {
    ValueMap row;
    bool isNotesModule = record.moduleName() == rawText(ModuleIdentifier::Case::notes);
    for (std::size_t index = 0; index < record.columnCount(); ++index) {
        auto& column = record.columnName(index);
        auto value = record.value(index).copy();
        if (value.isNull()) continue;
        if (auto tags = value.asObjectOf<TagList>())
            row.set(column, static_cast<std::int64_t>(tags->tags().size()));
        else if (auto ids =
                     column == naming.constant->attachments ? readAs<std::vector<std::string>>(value) : std::nullopt)
            row.set(column, storedAttachments(*ids, isNotesModule));
        else if (isListOf(&value, ValueKind::map))
            row.set(column, static_cast<std::int64_t>(value.asList()->size()));
        else
            row.set(column, std::move(value));
    }
    return row;
}

std::optional<Value> attachmentIds(const ValueView& stored, const std::string& moduleName) {
    if (auto joined = stored.asText(); joined && moduleName == rawText(ModuleIdentifier::Case::notes)) {
        if (joined->empty()) return ValueList();
        auto ids = text::split(*joined, ",");
        return ValueList(ids.begin(), ids.end());
    }
    auto bytes = stored.asBytes();
    auto list = bytes ? json::parse(*bytes) : std::nullopt;
    if (!isListOf(list ? &*list : nullptr, ValueKind::text)) return std::nullopt;
    return list;
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
        if (auto ids = readAs<std::vector<std::string>>(*value))
            wire.set(key + std::string(lookupDataSuffix), text::join(*ids, ","));
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
