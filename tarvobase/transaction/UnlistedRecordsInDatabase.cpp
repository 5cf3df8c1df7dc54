#include "tarvobase/transaction/UnlistedRecordsInDatabase.h"

#include <algorithm>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/value_objects/transaction/ChangeRegisterInDatabase.h"
#include "tarvobase/value_objects/transaction/NTransaction.h"
#include "tarvobase/value_objects/transaction/RecordIdAliasesInDatabase.h"
#include "tarvobase/value_objects/transaction/Transaction.h"

namespace tarvo {

namespace {

using kelva::quotedName;

/// One SELECT of the columns record and is_refused.
struct UnlistedSelect {
    std::string sql;
    ValueList parameters;

    void add(std::string_view text, ValueList values = {}) {
        sql += text;
        parameters.insert(parameters.end(), values.begin(), values.end());
    }
};

/// How one of the two queues stores its changes.
struct QueueTable {
    std::string name;
    std::string_view recordId, moduleName, kind, transactionId;
    ChangeQueue queue;
    std::vector<int> adds{}, refused{};  ///< raw values of kinds: those that add, and those whose refusals count

    std::string column(std::string_view name) const { return "queued." + std::string(name); }
    /// The numbers of the older queue are stored as texts.
    std::string isOneOf(const std::vector<int>& kinds) const {
        std::vector<std::string> numbers;
        for (auto kind : kinds) numbers.push_back(std::to_string(kind));
        return "CAST(" + column(kind) + " AS INTEGER) IN (" + text::join(numbers, ",") + ")";
    }
};

using RecordKind = RecordDependency::Kind;

bool isAmong(const std::optional<RecordKind>& kind, const std::vector<RecordKind>& kinds) {
    return kind && std::find(kinds.begin(), kinds.end(), *kind) != kinds.end();
}

QueueTable olderQueue(const UnlistedRecordsQuery& query, const Scope& scope) {
    TransactionDatabaseConstants names;
    QueueTable table{scope.tableName(names.TableName),
                     names.RecordID,
                     names.ModuleName,
                     names.OperationType,
                     names.TransactionID,
                     ChangeQueue::older,
                     {static_cast<int>(TransactionType::addRecord)}};
    if (isAmong(RecordKind::add, query.refusedKinds)) table.refused = table.adds;
    if (isAmong(RecordKind::edit, query.refusedKinds))
        table.refused.push_back(static_cast<int>(TransactionType::editRecord));
    return table;
}

QueueTable currentQueue(const UnlistedRecordsQuery& query) {
    TransactionDBMapper names;
    QueueTable table{
        std::string(names.tableName), names.recordId, names.module, names.type, names.id, ChangeQueue::current, {}};
    for (auto& each : EnumCases<NTransaction::Kind>::cases) {
        auto kind = depndencyType(each.value);
        bool isAdd = isCreateState(each.value) || each.value == NTransaction::Kind::addTextNote;
        if (isAdd) table.adds.push_back(static_cast<int>(each.value));
        if (isAmong(kind, query.refusedKinds)) table.refused.push_back(static_cast<int>(each.value));
    }
    return table;
}

ValueList modulesOf(const UnlistedRecordsQuery& query) {
    auto modules = SharedActivities::modulesIn(query.moduleName);
    return ValueList(modules.begin(), modules.end());
}

/// Selects the records whose add waits or was refused, and those of other refused changes that the query names. The
/// register is read once and not per change, since a queue may hold thousands.
UnlistedSelect waitingRecords(const UnlistedRecordsQuery& query, const QueueTable& table,
                              const std::string& organisation, bool hasRegister) {
    using Register = ChangeRegisterTable;
    UnlistedSelect select;
    auto isAdd = table.isOneOf(table.adds);
    auto number = "CAST(" + table.column(table.transactionId) + " AS TEXT)";
    auto ofQueue = " FROM " + quotedName(Register::name) + " WHERE " + Register::queue + " = ? AND ";
    std::string isRefused = "0";
    ValueList refusal, queue{std::string(rawText(table.queue))};
    if (hasRegister) {
        isRefused = "(" + table.isOneOf(table.refused) + " AND " + number + " IN (SELECT " + Register::transactionId +
                    ofQueue + Register::refusalMessage + " = ?))";
        refusal = {queue.front(), query.refusal};
    }
    select.add("SELECT " + table.column(table.recordId) + " AS record, " + isRefused + " AS is_refused FROM " +
                   quotedName(table.name) + " AS queued",
               refusal);
    auto modules = modulesOf(query);
    select.add(" WHERE " + table.column(table.moduleName) + " IN (" + placeholders(modules.size()) + ")", modules);
    select.add(" AND (" + isAdd + " OR " + isRefused + ")", refusal);
    // All organisations share the table of the current queue.
    if (hasRegister && table.queue == ChangeQueue::current)
        select.add(" AND NOT EXISTS (SELECT 1" + ofQueue + Register::transactionId + " = " + number + " AND " +
                       Register::organisation + " <> ?)",
                   {queue.front(), organisation});
    return select;
}

/// Selects the accepted records that are not in the view's map and about which the view has had no answer.
UnlistedSelect acceptedRecords(const UnlistedRecordsQuery& query, const std::string& organisation, bool hasMap) {
    using Aliases = RecordIdAliasTable;
    constexpr CVRecordMapDatabaseConstants map;
    UnlistedSelect select;
    auto modules = modulesOf(query);
    select.add(std::string("SELECT accepted.") + Aliases::realId + " AS record, 0 FROM " + quotedName(Aliases::name) +
                   " AS accepted WHERE accepted." + Aliases::number + " > ?",
               {query.lastAdded});
    select.add(std::string(" AND accepted.") + Aliases::organisation + " = ?", {organisation});
    select.add(std::string(" AND accepted.") + Aliases::moduleName + " IN (" + placeholders(modules.size()) + ")",
               modules);
    if (hasMap)
        select.add(" AND NOT EXISTS (SELECT 1 FROM " + quotedName(query.moduleName + std::string(map.tableNameSuffix)) +
                       " WHERE " + std::string(map.criteriaId) + " = ? AND " + std::string(map.recordId) +
                       " = accepted." + Aliases::realId + ")",
                   {query.viewId});
    return select;
}

}  // namespace

std::optional<UnlistedRecords> UnlistedRecordsInDatabase::getUnlistedRecords(const UnlistedRecordsQuery& query) {
    auto& database = stores_.databaseAdapter();
    if (!database) return std::nullopt;
    auto hasTable = [&](const std::string& name) { return !database->columnNames(name).empty(); };
    auto aliasColumns = database->columnNames(RecordIdAliasTable::name);
    // A table that was made before the records were numbered gets the column with the next one.
    bool hasNumbers =
        std::find(aliasColumns.begin(), aliasColumns.end(), RecordIdAliasTable::number) != aliasColumns.end();
    std::vector<UnlistedSelect> selects;
    bool hasRegister = hasTable(ChangeRegisterTable::name);
    for (auto& table : {olderQueue(query, stores_.scope), currentQueue(query)})
        if (hasTable(table.name))
            selects.push_back(waitingRecords(query, table, stores_.scope.organisation, hasRegister));
    if (hasNumbers) {
        auto map = query.moduleName + std::string(CVRecordMapDatabaseConstants::tableNameSuffix);
        selects.push_back(acceptedRecords(query, stores_.scope.organisation, hasTable(map)));
    }
    if (selects.empty()) return UnlistedRecords();
    UnlistedSelect all;
    for (auto& select : selects) all.add((all.sql.empty() ? "" : " UNION ALL ") + select.sql, select.parameters);
    auto rows = database->fetchObjects(all.sql, all.parameters);
    if (!rows) return std::nullopt;
    UnlistedRecords records;
    for (auto row : *rows) {
        auto id = row.valueOf("record").textOr("");
        if (id.empty()) continue;
        bool isRefused = row.valueOf("is_refused").asInteger().value_or(0) != 0;
        (isRefused ? records.refused : records.added).push_back(std::move(id));
    }
    return records;
}

}  // namespace tarvo
