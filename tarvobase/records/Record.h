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

/// A record of any module: named columns with values, one of which is the identifier. It does not know the module's
/// fields. It is a value: copies are independent, and cheap until one of them changes. A record that was read from a
/// table looks into the block of its fetch until its first change, so keeping one record keeps its whole page alive.
///
/// Invariant: the value of the identifier column is always the text `recordId()`. A column may exist without a value
/// (`hasColumn` returns true, the value is null). The columns keep the order in which they came, which has no meaning.
class Record {
public:
    /// The name of each column and its place among the values.
    using ColumnMap = std::vector<std::pair<std::string, std::size_t>>;
    using Names = std::vector<std::string>;

    /// Makes a record whose only column is the identifier, in the naming in force.
    Record(std::string recordId, std::string moduleName);
    Record(std::string recordId, const ModuleIdentifier& moduleId);
    /// Takes names and the places of their values. The id replaces the identifier's value, or is added after the other
    /// columns. A place beyond the values gives a column without a value; values that no name points to are left out. A
    /// name that is given twice is a programming error: the later value counts.
    Record(const ColumnMap& columns, const ValueList& values, std::string recordId, std::string moduleName);
    Record(const ColumnMap& columns, const ValueList& values, std::string recordId, const ModuleIdentifier& moduleId);
    /// The same with the names in the order of the values. Without values, every column exists without one.
    Record(const Names& columns, const std::optional<ValueList>& values, std::string recordId, std::string moduleName);
    Record(const Names& columns, const std::optional<ValueList>& values, std::string recordId,
           const ModuleIdentifier& moduleId);
    /// Makes a record of a database dictionary. `naming` is the naming that the dictionary was made with, the one in
    /// force if it is not given.
    Record(ValueMap dictionary, std::string recordId, std::string moduleName);
    Record(ValueMap dictionary, std::string recordId, std::string moduleName, const FieldIdentifier& naming);

    /// Makes a record whose id stands in its identifier column. Returns nullopt, and logs a line, if that column is
    /// missing or does not hold a text.
    static std::optional<Record> fromColumns(const ColumnMap& columns, const ValueList& values, std::string moduleName);
    static std::optional<Record> fromColumns(const ColumnMap& columns, const ValueList& values,
                                             const ModuleIdentifier& moduleId);
    static std::optional<Record> fromColumns(const Names& columns, const std::optional<ValueList>& values,
                                             std::string moduleName);
    static std::optional<Record> fromColumns(const Names& columns, const std::optional<ValueList>& values,
                                             const ModuleIdentifier& moduleId);
    static std::optional<Record> fromDictionary(ValueMap dictionary, std::string moduleName,
                                                const FieldIdentifier& naming);
    /// Makes a record that looks into the block of a fetched row. The server owns the column types: an id that comes
    /// back as a whole number becomes its text.
    static std::optional<Record> fromRow(Row row, std::string moduleName, const FieldIdentifier& naming);
    /// Makes records of all rows of a fetch and leaves out rows without an identifier.
    static std::vector<Record> fromRows(const Rows& rows, const std::string& moduleName, const FieldIdentifier& naming);

    /// Makes a record with a fresh id from `CommonConfigration.recordIDGenerator`. Without a generator this is a
    /// programming error; the record then gets an id from `Util::getNewRecordId`, so that it collides with no other.
    static Record getNewRecord(std::string moduleName);
    static Record getNewRecord(const ModuleIdentifier& moduleId);
    static Record getNewRecord(const Names& columns, const std::optional<ValueList>& values, std::string moduleName);
    static Record getNewRecord(const Names& columns, const std::optional<ValueList>& values,
                               const ModuleIdentifier& moduleId);

    const std::string& recordId() const { return recordId_; }
    /// Sets the id and the identifier column together.
    void setRecordId(std::string recordId);
    const std::string& moduleName() const { return moduleName_; }
    /// Returns whether the id is "NEW_" and nine digits.
    bool isTempRecord() const { return RecordUtil::isNewRecord(recordId_); }

    /// Returns the value of a column; null if there is no such column or it has no value. The view is valid until the
    /// record changes or is destroyed.
    ValueView operator[](std::string_view column) const;
    /// Returns a copy of the column's value.
    Value valueOf(std::string_view column) const { return (*this)[column].copy(); }
    /// Sets a column, and adds it if it is new. Null removes the value and keeps the column. The identifier column
    /// accepts only a text, which becomes the id; anything else is logged and changes nothing.
    void set(std::string_view column, Value value);

    bool hasColumn(std::string_view column) const;
    /// Returns the text of a column, or an empty text if it has none.
    std::string getString(std::string_view for_) const;

    std::size_t columnCount() const;
    /// Names and values by place. The places of the names never change.
    const std::string& columnName(std::size_t index) const;
    ValueView value(std::size_t index) const;
    std::size_t identifierIndex() const { return identifierIndex_; }
    const std::string& identifierColumn() const { return columnName(identifierIndex_); }
    Names columnNames() const;

    /// Returns all columns that have a value. Tags become maps with "id", "name" and "moduleName".
    ValueMap getDictionary() const;
    /// Returns the named columns that have a value, unchanged.
    ValueMap getDictionary(const Names& columns) const;

    /// Sets user lookups together with the companion columns that hold the name.
    void populateUserLookup(const Names& for_, const User& user);

    /// Equal records have the same module, id and columns, with equal values.
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
