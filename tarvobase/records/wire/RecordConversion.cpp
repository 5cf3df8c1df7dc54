#include "tarvobase/records/wire/RecordConversion.h"

#include <unordered_map>

#include "platform/Json.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/Variant.h"
#include "tarvobase/network_layer/TypedReads.h"
#include "tarvobase/records/wire/ModuleParser.h"
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

std::string joinedTexts(const ValueList& texts) {
    return text::join(readAs<std::vector<std::string>>(texts).value(), ",");
}

/// Returns a value in the form of the wire path: booleans are the server's texts, lists of texts are joined, and lists
/// of records become their number. Columns hold texts, in which a boolean would become "1".
Value storedForm(Value value) {
    if (auto boolean = value.asBool()) return *boolean ? "true" : "false";
    if (auto tags = value.asObjectOf<TagList>()) return static_cast<std::int64_t>(tags->tags().size());
    if (isListOf(&value, ValueKind::text)) return joinedTexts(*value.asList());
    if (isListOf(&value, ValueKind::map)) return static_cast<std::int64_t>(value.asList()->size());
    return value;
}

/// Returns the ids of a list of texts or of maps with an "id".
std::optional<std::vector<std::string>> idsOfAttachments(const ValueList& list) {
    std::vector<std::string> ids;
    for (auto& item : list) {
        auto map = item.asMap();
        auto id = map ? map->find("id") : &item;
        if (id && id->asText())
            ids.push_back(*id->asText());
        else if (!map)
            return std::nullopt;
    }
    return ids;
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

    void value(std::size_t column, const ValueView& view) {
        set(column, form_ == Form::table ? storedForm(view.copy()) : view.copy());
    }
    void other(std::size_t column, std::size_t slot) {
        bool isJoined = form_ == Form::table && source_.isTexts(slot);
        set(column, isJoined ? storedForm(*source_.value(slot)) : *source_.value(slot));
    }
    void rows(std::size_t column, std::size_t slot) {
        form_ == Form::table ? set(column, countOf(slot)) : other(column, slot);
    }
    void noRecords(std::size_t column) { set(column, form_ == Form::table ? Value(0) : Value(ValueList())); }
    bool attachments(std::size_t column, std::size_t slot) {
        auto ids = idsOfAttachments(*source_.value(slot)->asList());
        if (ids) set(column, storedAttachments(*ids, form_ == Form::table && plan_.isNotesModule()));
        return ids.has_value();
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

/// Returns the seconds in a column. A column of type TEXT returns them as a text.
std::optional<std::int64_t> secondsOf(const ValueView& stored) {
    auto text = stored.asText();
    return text ? text::toInteger(*text) : stored.asInteger();
}

Value textOfMoment(const ValueView& stored, const DateFormatter& formatter) {
    auto seconds = secondsOf(stored);
    return seconds ? Value(formatter.string(*seconds)) : Value();
}

/// Returns tags in the form in which the server sends them.
Value wireTags(const TagList& list) {
    ValueList tags;
    for (auto& tag : list.tags()) tags.push_back(ValueMap{{"id", tag.id}, {"name", tag.name}});
    return tags;
}

/// Returns a boolean. Besides the server's texts, 1 and "1" are true, which is how a column holds a bound boolean.
Value wireBoolean(const ValueView& stored) {
    if (auto text = stored.asText()) return *text == "true" || *text == "1";
    if (auto boolean = stored.asBool()) return *boolean;
    if (auto number = stored.asInteger(); number == 0 || number == 1) return *number == 1;
    platform::log(platform::LogLevel::warning, "records", "invalid bool");
    return {};
}

/// Returns whether the lists of a column are records, so that an empty one means none of them and not an empty text.
bool holdsRecords(const std::string& column, const FieldIdentifier& naming, const FieldList* fields) {
    auto& names = *naming.constant;
    for (std::string_view name : {std::string_view(names.tag), std::string_view(names.Events.participants),
                                  std::string_view(names.PriceBooks.pricingDetails), std::string_view(names.comments),
                                  std::string_view(names.productDetails), std::string_view(names.Notes.attachments)})
        if (column == name) return true;
    auto field = fields ? fields->getField(column) : nullptr;
    return field && (isSubform(field->fieldType) || field->fieldType == FieldDataType::eventParticipant);
}

/// What is known of the module whose rows are made.
struct RowContext {
    const FieldIdentifier& naming;
    const FieldList* fields;
    bool isNotesModule;
};

Value storedCell(const std::string& column, Value value, const RowContext& context) {
    auto list = value.asList();
    if (list && column == context.naming.constant->attachments) {
        if (auto ids = idsOfAttachments(*list)) return storedAttachments(*ids, context.isNotesModule);
    } else if (list && list->empty()) {
        return holdsRecords(column, context.naming, context.fields) ? Value(0) : Value("");
    }
    return storedForm(std::move(value));
}

}  // namespace

Value wireValue(FieldDataType type, const ValueView& stored) {
    if (auto tags = stored.nested() ? stored.nested()->asObjectOf<TagList>() : nullptr) return wireTags(*tags);
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

Value sentValue(FieldDataType type, const ValueView& stored) {
    auto value = stored.isNull() ? Value() : wireValue(type, stored);
    return value.isNull() ? stored.copy() : value;
}

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

bool hasEmptyList(const Record& record) {
    for (std::size_t index = 0; index < record.columnCount(); ++index)
        if (auto nested = record.value(index).nested(); nested && nested->asList() && nested->asList()->empty())
            return true;
    return false;
}

ValueMap rowOf(const Record& record, const FieldIdentifier& naming, const FieldList* fields) {
    ValueMap row;
    bool isNotesModule = record.moduleName() == rawText(ModuleIdentifier::Case::notes);
    for (std::size_t index = 0; index < record.columnCount(); ++index) {
        auto& column = record.columnName(index);
        auto value = record.value(index).copy();
        if (value.isNull()) continue;
        row.set(column, storedCell(column, std::move(value), {naming, fields, isNotesModule}));
    }
    return row;
}

ValueMap rowOf(const ValueMap& dictionary, const FieldList& fields) {
    bool isNotesModule = fields.moduleName() == rawText(ModuleIdentifier::Case::notes);
    ValueMap row;
    for (auto& entry : dictionary)
        row.set(entry.name,
                storedCell(std::string(entry.name), entry.value, {fields.naming(), &fields, isNotesModule}));
    return row;
}

std::vector<ValueMap> underColumns(const std::vector<ValueMap>& wire, const FieldList& fields) {
    auto modify = variant::rewritesSystemProperties();
    std::unordered_map<std::string, std::string> columns;
    auto add = [&](const FieldMetadata& field) {
        auto key = ModuleParser::systemKey(field.fieldAPIName, modify);
        for (auto suffix : {std::string_view(), lookupSuffix, firstNameSuffix, lastNameSuffix})
            columns.try_emplace(std::string(key).append(suffix),
                                std::string(fields.identifierOf(field)).append(suffix));
    };
    for (auto field : fields.allFields()) add(*field);
    for (auto& field : fields.fieldsOfSharedColumns()) add(field);
    std::vector<ValueMap> renamed(wire.size());
    for (std::size_t i = 0; i < wire.size(); ++i)
        for (auto& entry : wire[i]) {
            auto column = columns.find(std::string(entry.name));
            renamed[i].set(column == columns.end() ? entry.name : column->second, entry.value);
        }
    return renamed;
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
