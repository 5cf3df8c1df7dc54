#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/database_layer/Criteria.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/records/wire/WireRecords.h"
#include "tarvobase/value_objects/field/Sort.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/view/ColumnFilter.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

struct ModuleInfo;

/// Which records of a module's table: everything that is told must hold. What is absent asks for nothing.
struct RecordQuery {
    Module module;
    std::optional<CustomView> customView{};
    std::optional<ValueMap> columnNamesAndValues{};                        ///< a list value: any of its items
    std::optional<std::map<std::string, std::string>> equalColumnNames{};  ///< columns that are equal to columns
    std::optional<std::vector<ColumnFilter>> filters{};
    std::optional<std::string> customQuery{};                  ///< a condition in SQL
    std::optional<std::vector<std::string>> columnsToFetch{};  ///< by identifier; absent: all
    std::optional<std::vector<Sort<std::string>>> columnsToSortWith{};
    std::optional<std::int64_t> from{};  ///< rows to pass over; without a limit it reads to the end
    std::optional<std::int64_t> limit{};
};

/// The same over metadata that the caller has already. The two references must outlive the call.
struct ViewRecordQuery {
    const CustomView& customView;
    const ModuleInfo& moduleInfo;
    std::optional<std::vector<std::string>> columns{};
    std::optional<std::vector<ColumnFilter>> filters{};
    std::optional<std::vector<SortField>> sortBy{};
    std::optional<std::int64_t> from{};
    std::optional<std::int64_t> limit{};
};

/// The store of the records of all modules. Every operation blocks its caller; from any thread. Nothing throws: a read
/// is absent when the module has no fields or the database refuses, a write then does nothing, which is logged without
/// values. Wire dictionaries are what `ModuleParser` gives.
class RecordPersistanceDelegate : public virtual platform::Object {
public:
    using Records = std::optional<std::vector<Record>>;
    using Names = std::vector<std::string>;

    /// Stores records as the server sent them, with the rows that hang on them (participants, product lines, price
    /// lines, comments, attachments, tags). A record with a known id is replaced as a whole: columns that it does not
    /// bring become null. One record that the table refuses never costs the others.
    virtual void storeRecord(const ValueMap& wireRecord, const std::string& moduleName) = 0;
    virtual void storeRecord(const std::vector<ValueMap>& wireRecords, const std::string& moduleName) = 0;
    /// A page of an answer. Gives the ids that are stored now, in the order of the page; records without a usable id
    /// are left out.
    virtual Names storeRecord(const WireRecords& wireRecords, const std::string& moduleName) = 0;
    virtual void storeRecord(const Record& record, const std::string& moduleName) = 0;
    /// Writes the record over the row of another id, which is how a temporary id gives way to the server's.
    virtual void updateRecord(const Record& record, const std::string& recordID, const std::string& moduleName) = 0;

    virtual Records fetchRecords(const std::string& moduleName, const ValueMap& columnNamesAndValues,
                                 const std::optional<Names>& columnsToFetch) = 0;
    virtual std::optional<Record> fetchRecordsFor(const std::string& moduleName, const std::string& recordID,
                                                  const Names& columnsToFetch) = 0;
    /// With all columns.
    virtual std::optional<Record> fetchRecord(const std::string& moduleName, const std::string& recordID) = 0;
    /// In no promised order; ids without a row are passed over.
    virtual Records fetchRecords(const std::string& moduleName, const Names& recordIds,
                                 const std::optional<Names>& columnsToFetch = std::nullopt) = 0;
    virtual Records fetchRecords(const RecordQuery& query) = 0;
    virtual Records getRecords(const ViewRecordQuery& query) = 0;
    /// `columnsToFetch`, the order, `from` and `limit` count for nothing.
    virtual std::optional<std::int64_t> countRecords(const RecordQuery& query) = 0;
    virtual std::optional<std::int64_t> countRecords(const ViewRecordQuery& query) = 0;

    /// Writes what the record brings and leaves its other columns alone. Without an id as text nothing is written.
    virtual void modifyRecord(const std::string& moduleName, const ValueMap& wireRecord) = 0;
    virtual void modifyRecord(const std::string& moduleName, const std::vector<ValueMap>& wireRecords) = 0;
    virtual void modifyRecord(const std::string& moduleName, const Record& record) = 0;
    virtual void modifyRecord(const std::string& moduleName, const std::vector<Record>& records) = 0;

    /// The rows that hang on a record stay.
    virtual void deleteRecord(const std::string& recordId, const std::string& moduleName) = 0;
    virtual void deleteRecords(const Names& recordIds, const std::string& moduleName) = 0;
    virtual void deleteRecords(const std::string& moduleName, const Criteria& criteria) = 0;
};

}  // namespace tarvo
