#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/records/RecordPersistanceDelegate.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

class DatabaseAdapter;
class DependentRecords;
class GetFieldListDM;
class RecordIdAliases;
class TableAccess;
class TransactionPersistanceDelegate;
class TransactionPersistence;

/// The record tables. The server defines them: one table per module, with the columns that its fields name. Columns
/// that a table lacks are left out of writes, have no value in reads, and are logged once. The class keeps no state
/// between calls. Values of the server go beneath the changes that wait in the queues, in the same transaction.
/// Operations that are not given the fields of the module read them on each call. A read of one record also finds it by
/// the temporary id that it had.
class RecordInDatabase : public RecordPersistanceDelegate {
public:
    RecordInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter, std::shared_ptr<GetFieldListDM> fieldLists);
    /// Makes a store over the tables of an adapter.
    static std::shared_ptr<RecordInDatabase> make(const std::shared_ptr<DatabaseAdapter>& databaseAdapter);

    bool storeRecord(const ValueMap& wireRecord, const std::string& moduleName) override;
    bool storeRecord(const std::vector<ValueMap>& wireRecords, const std::string& moduleName) override;
    bool storeRecord(const Record& record, const std::string& moduleName) override;
    using RecordPersistanceDelegate::storePage;
    std::optional<Names> storePage(const WireRecords& wireRecords, const std::string& moduleName,
                                   PageWork alongside) override;
    bool updateRecord(const Record& record, const std::string& recordID, const std::string& moduleName) override;

    Records fetchRecords(const std::string& moduleName, const ValueMap& columnNamesAndValues,
                         const std::optional<Names>& columnsToFetch) override;
    std::optional<Record> fetchRecordsFor(const std::string& moduleName, const std::string& recordID,
                                          const Names& columnsToFetch) override;
    std::optional<Record> fetchRecord(const std::string& moduleName, const std::string& recordID) override;
    Records fetchRecords(const std::string& moduleName, const Names& recordIds,
                         const std::optional<Names>& columnsToFetch = std::nullopt) override;
    Records fetchRecords(const RecordQuery& query) override;
    Records getRecords(const ViewRecordQuery& query) override;
    std::optional<std::int64_t> countRecords(const RecordQuery& query) override;
    std::optional<std::int64_t> countRecords(const ViewRecordQuery& query) override;

    bool modifyRecord(const std::string& moduleName, const ValueMap& wireRecord) override;
    bool modifyRecord(const std::string& moduleName, const std::vector<ValueMap>& wireRecords) override;
    bool modifyRecord(const std::string& moduleName, const Record& record) override;
    bool modifyRecord(const std::string& moduleName, const std::vector<Record>& records) override;
    bool modifyPage(const WireRecords& wireRecords, const std::string& moduleName) override;

    std::optional<std::unordered_set<std::string>> presentIds(const Names& recordIds,
                                                              const std::string& moduleName) override;
    bool deleteRecord(const std::string& recordId, const std::string& moduleName) override;
    bool deleteRecords(const Names& recordIds, const std::string& moduleName) override;
    bool deleteRecords(const std::string& moduleName, const Criteria& criteria) override;

    // For callers that have the fields already. Wire dictionaries are stored unchanged, except that dates become
    // seconds and the ids of multi-select lookups get a key of their own.
    static std::string getTableName(const ModuleIdentifier& moduleId);
    bool saveNetworkRecord(const ValueMap& wireRecord, const ModuleIdentifier& moduleId, const FieldList& metadataList);
    bool saveNetworkRecordList(std::vector<ValueMap> wireRecords, const ModuleIdentifier& moduleId,
                               const FieldList& metadataList);
    /// Stores database dictionaries unchanged.
    bool saveRecordDictionary(const ValueMap& dictionary, const ModuleIdentifier& moduleId);
    bool saveRecordDictionary(const std::vector<ValueMap>& dictionaries, const ModuleIdentifier& moduleId);
    bool saveRecord(const Record& record, const ModuleIdentifier& moduleId, const FieldList& metadataList);
    bool saveRecordList(const std::vector<Record>& records, const ModuleIdentifier& moduleId,
                        const FieldList& metadataList);
    bool modifyRecord(const Record& record, const ModuleIdentifier& moduleId, const FieldList& metadataList);
    bool modifyRecordList(const std::vector<Record>& records, const ModuleIdentifier& moduleId,
                          const FieldList& metadataList);

    /// Returns the columns of a list: the named ones, or those of all the module's fields, with the display texts of
    /// lookups and the identifier. A name without a field is kept.
    static Names getColumnNameList(const std::optional<Names>& columns, const ModuleInfo& moduleInfo);
    /// Returns the rows of a module's table as records. Rows without an identifier are left out, and the stored ids of
    /// attachments become a list of texts.
    static std::vector<Record> recordsOf(const Rows& rows, const FieldList& fields);

protected:
    /// Returns whether edits of the record wait to be sent, or might: the queues may be unreadable.
    bool hasUnsentEdits(const std::string& recordId, const FieldList& fields) const;

private:
    struct Selection;

    TableAccess tableOf(const std::string& moduleName) const;
    std::optional<FieldList> fieldsOf(const std::string& moduleName) const;
    std::optional<FieldList> fieldsForValues(const std::string& moduleName,
                                             const std::optional<Names>& columns = std::nullopt) const;
    std::optional<Names> store(const RowSource& rows, const Names& ids, const DependentRecords& dependents,
                               const FieldList& fields, PageWork alongside) const;
    std::optional<Names> storeRows(const RowSource& rows, const Names& ids, const std::string& moduleName) const;
    bool updateRows(const RowSource& rows, const Names& ids, const FieldList& fields) const;
    bool storeDependentsOfPresent(DependentRecords& dependents, const Names& ids, const FieldList& fields) const;
    std::optional<std::unordered_set<std::string>> idsPresent(const Names& recordIds, const std::string& moduleName,
                                                              const FieldIdentifier& naming) const;
    std::vector<ValueMap> rowsOf(const std::vector<Record>& records, const std::string& moduleName,
                                 const FieldIdentifier& naming) const;
    bool leaveOutUnchanged(std::vector<ValueMap>& rows, const std::string& moduleName,
                           const FieldIdentifier& naming) const;
    bool modify(const std::vector<ValueMap>& rows, const std::string& moduleName, const FieldIdentifier& naming) const;
    bool update(const std::vector<ValueMap>& rows, const std::string& moduleName, const FieldIdentifier& naming,
                bool& haveIds) const;
    Records fetch(const FieldList& fields, std::optional<Criteria> criteria, Selection selection) const;
    std::optional<std::int64_t> count(const std::optional<Criteria>& criteria, const std::string& moduleName) const;

    const std::shared_ptr<DatabaseAdapter> databaseAdapter_;
    const std::shared_ptr<GetFieldListDM> fieldLists_;
    const std::shared_ptr<TransactionPersistanceDelegate> olderQueue_;
    const std::shared_ptr<TransactionPersistence> currentQueue_;
    const std::shared_ptr<RecordIdAliases> aliases_;
};

}  // namespace tarvo
