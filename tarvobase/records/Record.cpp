#include "tarvobase/records/Record.h"

#include <algorithm>

#include "platform/Log.h"
#include "platform/ProgrammingError.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/Variant.h"
#include "tarvobase/utils/Util.h"
#include "tarvobase/value_objects/account/User.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tarvobase/value_objects/tag/TagList.h"

namespace tarvo {

namespace {

constexpr std::string_view recordNotFound = "Record ID not found";
constexpr std::string_view notFoundOrNoMatch = "Record ID not found or column and values do not match";

ValueMap valuesOf(const Record::Names& columns, const std::optional<ValueList>& values) {
    ValueMap map;
    map.reserve(columns.size() + 1);
    for (std::size_t place = 0; place < columns.size(); ++place) {
        if (map.contains(columns[place]))
            platform::reportProgrammingError("a column comes twice in a record: " + columns[place]);
        map.set(columns[place], values && place < values->size() ? (*values)[place] : Value());
    }
    return map;
}

ValueMap valuesOf(Record::ColumnMap columns, const ValueList& values) {
    std::stable_sort(columns.begin(), columns.end(), [](auto& a, auto& b) { return a.second < b.second; });
    Record::Names names;
    ValueList inPlace;
    for (auto& [name, place] : columns) {
        names.push_back(std::move(name));
        inPlace.push_back(place < values.size() ? values[place] : Value());
    }
    return valuesOf(names, inPlace);
}

std::size_t positionOf(const ValueMap& values, std::string_view column) {
    auto found = std::find_if(values.begin(), values.end(), [&](auto& entry) { return entry.name == column; });
    return static_cast<std::size_t>(found - values.begin());
}

std::string freshId() {
    if (auto generator = variant::recordIDGenerator()) return generator->getNewRecordId();
    platform::reportProgrammingError("a new record was asked for before recordIDGenerator was set");
    return Util::getNewRecordId();
}

Value tagMaps(const TagList& list) {
    ValueList maps;
    for (auto& tag : list.tags())
        maps.push_back(ValueMap{{"id", tag.id}, {"name", tag.name}, {"moduleName", tag.moduleName}});
    return maps;
}

}  // namespace

Record::Record(ValueMap values, std::string_view identifierColumn, std::string recordId, std::string moduleName)
    : recordId_(std::move(recordId)), moduleName_(std::move(moduleName)) {
    values.set(identifierColumn, recordId_);
    identifierIndex_ = positionOf(values, identifierColumn);
    own_ = std::move(values);
}

Record::Record(Row row, std::size_t identifierIndex, std::string recordId, std::string moduleName)
    : recordId_(std::move(recordId)),
      moduleName_(std::move(moduleName)),
      identifierIndex_(identifierIndex),
      row_(std::move(row)) {}

Record::Record(std::string recordId, std::string moduleName)
    : Record(ValueMap(), std::move(recordId), std::move(moduleName)) {}
Record::Record(std::string recordId, const ModuleIdentifier& moduleId)
    : Record(std::move(recordId), moduleId.rawValue()) {}
Record::Record(const ColumnMap& columns, const ValueList& values, std::string recordId, std::string moduleName)
    : Record(valuesOf(columns, values), std::move(recordId), std::move(moduleName)) {}
Record::Record(const ColumnMap& columns, const ValueList& values, std::string recordId,
               const ModuleIdentifier& moduleId)
    : Record(columns, values, std::move(recordId), moduleId.rawValue()) {}
Record::Record(const Names& columns, const std::optional<ValueList>& values, std::string recordId,
               std::string moduleName)
    : Record(valuesOf(columns, values), std::move(recordId), std::move(moduleName)) {}
Record::Record(const Names& columns, const std::optional<ValueList>& values, std::string recordId,
               const ModuleIdentifier& moduleId)
    : Record(columns, values, std::move(recordId), moduleId.rawValue()) {}
Record::Record(ValueMap dictionary, std::string recordId, std::string moduleName)
    : Record(std::move(dictionary), std::move(recordId), std::move(moduleName), namingInForce()) {}
Record::Record(ValueMap dictionary, std::string recordId, std::string moduleName, const FieldIdentifier& naming)
    // The name is copied, because arguments are evaluated in no particular order.
    : Record(std::move(dictionary), RecordUtil::getIdentifierFieldName(moduleName, naming), std::move(recordId),
             std::string(moduleName)) {}

std::optional<Record> Record::fromValues(ValueMap values, std::string moduleName, std::string_view identifier,
                                         std::string_view message) {
    auto id = values.find(identifier);
    if (!id || !id->asText()) {
        platform::log(platform::LogLevel::warning, "records", std::string(message));
        return std::nullopt;
    }
    auto recordId = *id->asText();
    return Record(std::move(values), identifier, std::move(recordId), std::move(moduleName));
}

std::optional<Record> Record::fromColumns(const ColumnMap& columns, const ValueList& values, std::string moduleName) {
    auto identifier = RecordUtil::getIdentifierFieldName(moduleName);
    return fromValues(valuesOf(columns, values), std::move(moduleName), identifier, notFoundOrNoMatch);
}
std::optional<Record> Record::fromColumns(const ColumnMap& columns, const ValueList& values,
                                          const ModuleIdentifier& moduleId) {
    return fromColumns(columns, values, moduleId.rawValue());
}
std::optional<Record> Record::fromColumns(const Names& columns, const std::optional<ValueList>& values,
                                          std::string moduleName) {
    auto identifier = RecordUtil::getIdentifierFieldName(moduleName);
    return fromValues(valuesOf(columns, values), std::move(moduleName), identifier, recordNotFound);
}
std::optional<Record> Record::fromColumns(const Names& columns, const std::optional<ValueList>& values,
                                          const ModuleIdentifier& moduleId) {
    return fromColumns(columns, values, moduleId.rawValue());
}
std::optional<Record> Record::fromDictionary(ValueMap dictionary, std::string moduleName,
                                             const FieldIdentifier& naming) {
    auto identifier = RecordUtil::getIdentifierFieldName(moduleName, naming);
    return fromValues(std::move(dictionary), std::move(moduleName), identifier, notFoundOrNoMatch);
}

std::optional<Record> Record::fromRow(Row row, std::string moduleName, const FieldIdentifier& naming) {
    auto identifier = row.columns().find(RecordUtil::getIdentifierFieldName(moduleName, naming));
    auto id = identifier ? row.cell(*identifier) : ValueView();
    if (auto text = id.asText()) {
        std::string recordId(*text);
        return Record(std::move(row), *identifier, std::move(recordId), std::move(moduleName));
    }
    if (auto number = id.asInteger())
        return Record(row.toMap(), std::to_string(*number), std::move(moduleName), naming);
    platform::log(platform::LogLevel::warning, "records", std::string(notFoundOrNoMatch));
    return std::nullopt;
}

std::vector<Record> Record::fromRows(const Rows& rows, const std::string& moduleName, const FieldIdentifier& naming) {
    std::vector<Record> records;
    records.reserve(rows.size());
    for (auto row : rows)
        if (auto record = fromRow(std::move(row), moduleName, naming)) records.push_back(*std::move(record));
    return records;
}

Record Record::getNewRecord(std::string moduleName) { return Record(freshId(), std::move(moduleName)); }
Record Record::getNewRecord(const ModuleIdentifier& moduleId) { return getNewRecord(moduleId.rawValue()); }
Record Record::getNewRecord(const Names& columns, const std::optional<ValueList>& values, std::string moduleName) {
    return Record(columns, values, freshId(), std::move(moduleName));
}
Record Record::getNewRecord(const Names& columns, const std::optional<ValueList>& values,
                            const ModuleIdentifier& moduleId) {
    return getNewRecord(columns, values, moduleId.rawValue());
}

// A name that stands twice in a row is one column of the map, so places may move.
ValueMap& Record::ownValues() {
    if (looksIntoBlock()) {
        auto identifier = identifierColumn();
        own_ = row_.toMap();
        identifierIndex_ = positionOf(*own_.asMap(), identifier);
        row_ = Row();
    }
    return *own_.mutableMap();
}

void Record::setRecordId(std::string recordId) {
    ownValues().set(std::string(identifierColumn()), recordId);
    recordId_ = std::move(recordId);
}

ValueView Record::operator[](std::string_view column) const {
    if (looksIntoBlock()) return row_.find(column).value_or(ValueView());
    auto value = own_.asMap()->find(column);
    return value ? ValueView(*value) : ValueView();
}

void Record::set(std::string_view column, Value value) {
    auto held = row_;  // keeps the block alive, in which the name may lie
    if (column != identifierColumn()) return ownValues().set(column, std::move(value));
    if (auto text = value.asText()) return setRecordId(*text);
    platform::log(platform::LogLevel::warning, "records", "Invalid Record ID");
}

bool Record::hasColumn(std::string_view column) const {
    return looksIntoBlock() ? row_.contains(column) : own_.asMap()->contains(column);
}

std::string Record::getString(std::string_view for_) const { return std::string((*this)[for_].asText().value_or("")); }

std::size_t Record::columnCount() const { return looksIntoBlock() ? row_.columns().size() : own_.asMap()->size(); }

const std::string& Record::columnName(std::size_t index) const {
    return looksIntoBlock() ? row_.columns().names()[index] : own_.asMap()->begin()[static_cast<long>(index)].name;
}

ValueView Record::value(std::size_t index) const {
    return looksIntoBlock() ? row_.cell(index) : ValueView(own_.asMap()->begin()[static_cast<long>(index)].value);
}

Record::Names Record::columnNames() const {
    Names names;
    names.reserve(columnCount());
    for (std::size_t index = 0; index < columnCount(); ++index) names.push_back(columnName(index));
    return names;
}

ValueMap Record::getDictionary() const {
    ValueMap dictionary;
    dictionary.reserve(columnCount());
    for (std::size_t index = 0; index < columnCount(); ++index) {
        auto view = value(index);
        if (view.isNull()) continue;
        auto tags = view.nested() ? view.nested()->asObjectOf<TagList>() : nullptr;
        dictionary.set(columnName(index), tags ? tagMaps(*tags) : view.copy());
    }
    return dictionary;
}

ValueMap Record::getDictionary(const Names& columns) const {
    ValueMap dictionary;
    for (auto& column : columns)
        if (auto view = (*this)[column]; !view.isNull()) dictionary.set(column, view.copy());
    return dictionary;
}

void Record::populateUserLookup(const Names& for_, const User& user) {
    for (auto& column : for_) {
        set(column, user.id);
        set(getLookupColumn(column), user.name);
        set(column + std::string(firstNameSuffix), user.firstName);
        set(column + std::string(lastNameSuffix), user.lastName);
    }
}

bool operator==(const Record& a, const Record& b) {
    if (a.recordId_ != b.recordId_ || a.moduleName_ != b.moduleName_ || a.columnCount() != b.columnCount())
        return false;
    for (std::size_t index = 0; index < a.columnCount(); ++index) {
        auto& name = a.columnName(index);
        if (!b.hasColumn(name) || a.valueOf(name) != b.valueOf(name)) return false;
    }
    return true;
}

}  // namespace tarvo
