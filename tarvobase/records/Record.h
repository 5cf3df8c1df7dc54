#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/Rows.h"
#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/records/RecordUtil.h"

namespace tarvo {

struct User;

/// A record of any module: named columns with values, of which one is the identifier. It knows nothing of the module's
/// fields. A value: copies are independent, and cheap until one of them changes. A record that was read from a table
/// looks into the block of its fetch until its first change; holding one record therefore holds its page.
///
/// Law: the value of the identifier column is always the text `recordId()`. A column may be there without a value
/// (`hasColumn` says true, the value is null). The columns keep the order in which they came, which has no meaning.
class Record {
public:
    /// Name and place of each column among the values.
    using ColumnMap = std::vector<std::pair<std::string, std::size_t>>;
    using Names = std::vector<std::string>;

    /// A record without columns but the identifier, by the naming in force.
    Record(std::string recordId, std::string moduleName);
    Record(std::string recordId, const ModuleIdentifier& moduleId);
    /// Names with the values at their places; the identifier's value is replaced by the id, or added behind the others.
    /// A place beyond the values is a column without a value; values that no name points to are left out. A name that
    /// comes twice is the caller's error: the later value counts.
    Record(const ColumnMap& columns, const ValueList& values, std::string recordId, std::string moduleName);
    Record(const ColumnMap& columns, const ValueList& values, std::string recordId, const ModuleIdentifier& moduleId);
    /// The same with the names in the order of the values; without values every column is there without one.
    Record(const Names& columns, const std::optional<ValueList>& values, std::string recordId, std::string moduleName);
    Record(const Names& columns, const std::optional<ValueList>& values, std::string recordId,
           const ModuleIdentifier& moduleId);
    /// A database dictionary as a record. The second form tells the naming that the dictionary was made with.
    Record(ValueMap dictionary, std::string recordId, std::string moduleName);
    Record(ValueMap dictionary, std::string recordId, std::string moduleName, const FieldIdentifier& naming);

    /// Records whose columns tell their id. Nothing, and a line in the log, when the identifier column is missing or
    /// holds no text.
    static std::optional<Record> fromColumns(const ColumnMap& columns, const ValueList& values, std::string moduleName);
    static std::optional<Record> fromColumns(const ColumnMap& columns, const ValueList& values,
                                             const ModuleIdentifier& moduleId);
    static std::optional<Record> fromColumns(const Names& columns, const std::optional<ValueList>& values,
                                             std::string moduleName);
    static std::optional<Record> fromColumns(const Names& columns, const std::optional<ValueList>& values,
                                             const ModuleIdentifier& moduleId);
    static std::optional<Record> fromDictionary(ValueMap dictionary, std::string moduleName,
                                                const FieldIdentifier& naming);
    /// One row of a fetch. The record looks into the row's block. The server owns the column types: an id that comes
    /// back as a whole number is the text of it.
    static std::optional<Record> fromRow(Row row, std::string moduleName, const FieldIdentifier& naming);
    /// All rows of a fetch, those without an identifier left out.
    static std::vector<Record> fromRows(const Rows& rows, const std::string& moduleName, const FieldIdentifier& naming);

    /// A record with a fresh id from `CommonConfigration.recordIDGenerator`. Calling these without one is a programming
    /// error; the record then carries an id of `Util::getNewRecordId`, so that it meets no other record.
    static Record getNewRecord(std::string moduleName);
    static Record getNewRecord(const ModuleIdentifier& moduleId);
    static Record getNewRecord(const Names& columns, const std::optional<ValueList>& values, std::string moduleName);
    static Record getNewRecord(const Names& columns, const std::optional<ValueList>& values,
                               const ModuleIdentifier& moduleId);

    const std::string& recordId() const { return recordId_; }
    /// Sets the id and the identifier column together.
    void setRecordId(std::string recordId);
    const std::string& moduleName() const { return moduleName_; }
    /// Whether the id is "NEW_" and nine digits.
    bool isTempRecord() const { return RecordUtil::isNewRecord(recordId_); }

    /// The value of a column; null when there is no such column or it has no value. Valid until the record changes or
    /// goes.
    ValueView operator[](std::string_view column) const;
    /// The same as a value of its own.
    Value valueOf(std::string_view column) const { return (*this)[column].copy(); }
    /// Sets a column, which is added when it is new; null takes the value away and leaves the column. The identifier
    /// column takes a text alone, which becomes the id; anything else is logged and changes nothing.
    void set(std::string_view column, Value value);

    bool hasColumn(std::string_view column) const;
    /// The text of a column; empty when it has none.
    std::string getString(std::string_view for_) const;

    std::size_t columnCount() const;
    /// Names and values by place; the places of the names never change.
    const std::string& columnName(std::size_t index) const;
    ValueView value(std::size_t index) const;
    std::size_t identifierIndex() const { return identifierIndex_; }
    const std::string& identifierColumn() const { return columnName(identifierIndex_); }
    Names columnNames() const;

    /// All columns that have a value. The tags become maps with "id", "name" and "moduleName".
    ValueMap getDictionary() const;
    /// The named columns that have a value, as they are.
    ValueMap getDictionary(const Names& columns) const;

    /// Sets lookups of users with the companions that show the name.
    void populateUserLookup(const Names& for_, const User& user);

    /// Same module, id and columns with equal values.
    friend bool operator==(const Record& a, const Record& b);

private:
    Record(Row row, std::size_t identifierIndex, std::string recordId, std::string moduleName);
    Record(ValueMap values, std::string_view identifierColumn, std::string recordId, std::string moduleName);
    static std::optional<Record> fromValues(ValueMap values, std::string moduleName, std::string_view identifier,
                                            std::string_view message);
    bool looksIntoBlock() const { return own_.isNull(); }
    ValueMap& ownValues();

    std::string recordId_;
    std::string moduleName_;
    std::size_t identifierIndex_ = 0;
    Row row_;    // the block's row, until the first change
    Value own_;  // a map from then on, shared between copies until one of them changes
};

}  // namespace tarvo
