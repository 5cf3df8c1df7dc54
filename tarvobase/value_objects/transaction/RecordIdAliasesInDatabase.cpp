#include "tarvobase/value_objects/transaction/RecordIdAliasesInDatabase.h"

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

namespace aliasColumns {
constexpr const char *temporaryId = "temporary_id", *moduleName = "module_name", *realId = "real_id";
}

EnsuredTable::Declaration aliasTable() {
    using namespace aliasColumns;
    return {.columns = {{temporaryId, "TEXT"}, {moduleName, "TEXT"}, {realId, "TEXT"}},
            .keys = std::string("UNIQUE (") + temporaryId + ", " + moduleName + ")"};
}

Criteria isAlias(const std::string& moduleName, const std::string& temporaryId) {
    return Criteria::and_(
        {columnIs(aliasColumns::temporaryId, temporaryId), columnIs(aliasColumns::moduleName, moduleName)});
}

}  // namespace

std::string RecordIdAliases::currentId(const std::string& moduleName, const std::string& recordId) {
    if (!isTemporaryRecordId(recordId)) return recordId;
    auto alias = realId(moduleName, recordId);
    return alias && alias.value() ? *alias.value() : recordId;
}

RecordIdAliasesInDatabase::RecordIdAliasesInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : table_(std::move(databaseAdapter), "TARVO_RECORD_IDS", aliasTable()) {}

bool RecordIdAliasesInDatabase::store(const RecordIdAlias& alias) {
    return table_.execute(InsertQuery(table_.name(), {{aliasColumns::temporaryId, alias.temporaryId},
                                                      {aliasColumns::moduleName, alias.moduleName},
                                                      {aliasColumns::realId, alias.realId}}));
}

RecordIdAliases::Found RecordIdAliasesInDatabase::realId(const std::string& moduleName,
                                                         const std::string& temporaryId) {
    auto aliases = aliasesWhere(isAlias(moduleName, temporaryId));
    if (!aliases) return ParserError::noData();
    return aliases->empty() ? std::nullopt : std::optional(aliases->front().realId);
}

std::optional<std::vector<RecordIdAlias>> RecordIdAliasesInDatabase::aliasesOf(
    const std::vector<std::string>& temporaryIds) {
    return aliasesWhere(columnIn(aliasColumns::temporaryId, temporaryIds));
}

bool RecordIdAliasesInDatabase::forget(const std::string& moduleName, const std::string& temporaryId) {
    return table_.remove(isAlias(moduleName, temporaryId));
}

std::optional<std::vector<RecordIdAlias>> RecordIdAliasesInDatabase::aliasesWhere(Criteria criteria) const {
    auto rows = table_.fetch(std::move(criteria));
    if (!rows) return std::nullopt;
    std::vector<RecordIdAlias> aliases;
    for (auto row : *rows) {
        auto text = [&](const char* column) { return row.valueOf(column).textOr(""); };
        aliases.push_back(
            {text(aliasColumns::temporaryId), text(aliasColumns::moduleName), text(aliasColumns::realId)});
    }
    return aliases;
}

}  // namespace tarvo
