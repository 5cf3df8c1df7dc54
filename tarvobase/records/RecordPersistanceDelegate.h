#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/FunctionRef.h"
#include "platform/Object.h"
#include "tarvobase/database_layer/Criteria.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/field/Sort.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/view/ColumnFilter.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

struct ModuleInfo;
struct WireRecords;

/// Selects records of a module's table. All given conditions must hold; an absent one does not restrict the result.
struct RecordQuery {
    Module module;
    std::optional<CustomView> customView{};
    std::optional<ValueMap> columnNamesAndValues{};                        ///< a list matches any of its items
    std::optional<std::map<std::string, std::string>> equalColumnNames{};  ///< pairs of columns with equal values
    std::optional<std::vector<ColumnFilter>> filters{};
    std::optional<std::string> customQuery{};                  ///< a condition in SQL
    std::optional<std::vector<std::string>> columnsToFetch{};  ///< by identifier; all if absent
    std::optional<std::vector<Sort<std::string>>> columnsToSortWith{};
    std::optional<std::int64_t> from{};  ///< rows to skip; without a limit the read goes to the end
    std::optional<std::int64_t> limit{};
};

/// Selects records by a view and metadata that the caller has already. The two references must outlive the call.
struct ViewRecordQuery {
    const CustomView& customView;
    const ModuleInfo& moduleInfo;
    std::optional<std::vector<std::string>> columns{};
    std::optional<std::vector<ColumnFilter>> filters{};
    std::optional<std::vector<SortField>> sortBy{};
    std::optional<std::int64_t> from{};
    std::optional<std::int64_t> limit{};
};

/// The store of the records of all modules. Operations block their caller and may be called from any thread. They do
/// not throw. If the module has no fields or the database refuses, a read returns nullopt, and a write stores nothing
/// and returns false; this is logged without values. Each write is one transaction over all tables that it touches, or
/// a part of the transaction around it. Wire dictionaries are those of `ModuleParser`.
class RecordPersistanceDelegate : public virtual platform::Object {
public:
    using Records = std::optional<std::vector<Record>>;
    using Names = std::vector<std::string>;

    /// Stores records as the server sent them, with their dependent rows (participants, product lines, price lines,
    /// comments, attachments, tags). A record with a known id is replaced as a whole: columns that it does not bring
    /// become null. A record without a usable id, or one that the table refuses, does not prevent
    /// the others from being stored; the call then returns false.
    virtual bool storeRecord(const ValueMap& wireRecord, const std::string& moduleName) = 0;
    virtual bool storeRecord(const std::vector<ValueMap>& wireRecords, const std::string& moduleName) = 0;
    virtual bool storeRecord(const Record& record, const std::string& moduleName) = 0;

    /// A part of the transaction of `storePage` that the caller adds, such as the rows of a view's map. It receives the
    /// ids of the records that were stored, in the order of the page. If it returns false, or a write in it fails, the
    /// whole page is undone.
    using PageWork = platform::FunctionRef<bool(const Names& storedIds)>;
    /// Stores a page of an answer as `storeRecord` stores dictionaries, and runs `alongside` in the same transaction.
    /// Returns the ids of the stored records, in the order of the page, or nullopt if nothing was committed. Records
    /// without a usable id, and those that the table refuses, are left out.
    virtual std::optional<Names> storePage(const WireRecords& wireRecords, const std::string& moduleName,
                                           PageWork alongside) = 0;
    std::optional<Names> storePage(const WireRecords& wireRecords, const std::string& moduleName) {
        return storePage(wireRecords, moduleName, [](const Names&) { return true; });
    }

    /// Writes the record over the row of another id. This is how the server's id replaces a temporary one.
    virtual bool updateRecord(const Record& record, const std::string& recordID, const std::string& moduleName) = 0;

    virtual Records fetchRecords(const std::string& moduleName, const ValueMap& columnNamesAndValues,
                                 const std::optional<Names>& columnsToFetch) = 0;
    virtual std::optional<Record> fetchRecordsFor(const std::string& moduleName, const std::string& recordID,
                                                  const Names& columnsToFetch) = 0;
    /// Returns the record with all columns.
    virtual std::optional<Record> fetchRecord(const std::string& moduleName, const std::string& recordID) = 0;
    /// Returns the records in no particular order. Ids without a row are skipped.
    virtual Records fetchRecords(const std::string& moduleName, const Names& recordIds,
                                 const std::optional<Names>& columnsToFetch = std::nullopt) = 0;
    virtual Records fetchRecords(const RecordQuery& query) = 0;
    virtual Records getRecords(const ViewRecordQuery& query) = 0;
    /// Counts records. `columnsToFetch`, the order, `from` and `limit` are ignored.
    virtual std::optional<std::int64_t> countRecords(const RecordQuery& query) = 0;
    virtual std::optional<std::int64_t> countRecords(const ViewRecordQuery& query) = 0;

    /// Writes the columns that each record brings and leaves the others alone. A column of a `Record` without a value
    /// becomes null. A record whose id is not a text is skipped, and the call then returns false.
    virtual bool modifyRecord(const std::string& moduleName, const ValueMap& wireRecord) = 0;
    virtual bool modifyRecord(const std::string& moduleName, const std::vector<ValueMap>& wireRecords) = 0;
    virtual bool modifyRecord(const std::string& moduleName, const Record& record) = 0;
    virtual bool modifyRecord(const std::string& moduleName, const std::vector<Record>& records) = 0;

    /// Does the same with a page of an answer, as one transaction, and stores the dependent rows and tags of those of
    /// its records that are here. Records that are not here stay away. A record without a usable id, or one that the
    /// table refuses, is left out. Returns false if nothing was committed.
    virtual bool modifyPage(const WireRecords& wireRecords, const std::string& moduleName) = 0;

    /// Returns those of the ids that have a row here, or nullopt if the database cannot be read.
    virtual std::optional<std::unordered_set<std::string>> presentIds(const Names& recordIds,
                                                                      const std::string& moduleName) = 0;

    /// Deletes a record and keeps its dependent rows.
    virtual bool deleteRecord(const std::string& recordId, const std::string& moduleName) = 0;
    virtual bool deleteRecords(const Names& recordIds, const std::string& moduleName) = 0;
    virtual bool deleteRecords(const std::string& moduleName, const Criteria& criteria) = 0;
};

}  // namespace tarvo
