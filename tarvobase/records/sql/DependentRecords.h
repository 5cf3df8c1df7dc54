#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "platform/Value.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

class DatabaseAdapter;
class GetFieldListDM;

/// The records in a list of another record, as wire dictionaries.
struct NestedRecords {
    std::string parentId;
    std::vector<ValueMap> records;
};

/// The rows that belong to records of one module: participants, product and price lines, comments, attachments of
/// notes, rows of subforms, and tags. Rows that the server no longer sends are kept, except for tags, which are
/// replaced per record.
class DependentRecords {
public:
    /// Returns the lists under a wire name: one per record that has such a list, empty ones included.
    using Lists = std::function<std::vector<NestedRecords>(std::string_view wireName)>;

    /// Converts the rows of records of the module to which `fields` belongs. Rows of tables that the database does not
    /// have are left out.
    DependentRecords(std::shared_ptr<DatabaseAdapter> databaseAdapter, const GetFieldListDM& fieldLists,
                     const FieldList& fields, const Lists& lists);

    /// Returns whether the records have no lists at all.
    bool isEmpty() const { return tables_.empty() && tags_.empty(); }
    /// Leaves out the rows of other records than these.
    void keepOnly(const std::unordered_set<std::string>& recordIds);
    /// Stores the rows, inside the transaction that stores the records. Returns false if the database failed.
    bool store() const;

    /// Returns whether a field of a module holds rows of another table. A record that was read back has their number in
    /// its place.
    static bool isListOfRows(std::string_view moduleName, const FieldMetadata& field);
    /// The column of a dependent row that holds the id of its parent record.
    static constexpr std::string_view parentColumn = "record_id";
    /// Returns the tables that hold rows of records of this module under the parent's id, and exist.
    static std::vector<std::string> tablesWithParent(const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                                                     const FieldList& fields);

    /// Creates the index without which storing tags scans those of all records before. Call it when the tables have
    /// been made; without the table of tags it does nothing.
    static bool createIndexes(DatabaseAdapter& databaseAdapter);

private:
    struct Table {
        std::string name;
        std::vector<ValueMap> rows;
        std::vector<std::string> parentIds;  ///< of the rows
    };
    void addRows(const GetFieldListDM& fieldLists, const std::vector<NestedRecords>& lists,
                 const std::string& moduleName, bool withParent);
    void addSubforms(const GetFieldListDM& fieldLists, const FieldList& fields, std::string_view exceptWireName,
                     const Lists& lists);
    bool storeTags() const;

    std::shared_ptr<DatabaseAdapter> databaseAdapter_;
    std::string moduleName_;
    std::vector<Table> tables_;
    std::vector<NestedRecords> tags_;
};

}  // namespace tarvo
