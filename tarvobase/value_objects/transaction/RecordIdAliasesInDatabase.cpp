#include "tarvobase/value_objects/transaction/RecordIdAliasesInDatabase.h"

#include "platform/Text.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

namespace aliasColumns {
constexpr const char *temporaryId = RecordIdAliasTable::temporaryId, *moduleName = RecordIdAliasTable::moduleName,
                     *realId = RecordIdAliasTable::realId, *organisation = RecordIdAliasTable::organisation,
                     *number = RecordIdAliasTable::number;
}

EnsuredTable::Declaration aliasTable() {
    using namespace aliasColumns;
    return {.columns = {{temporaryId, "TEXT"},
                        {moduleName, "TEXT"},
                        {realId, "TEXT"},
                        {organisation, "TEXT"},
                        {number, "INTEGER"}},
            .keys = std::string("UNIQUE (") + temporaryId + ", " + moduleName + "), UNIQUE (" + number + ")"};
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

RecordIdAliasesInDatabase::RecordIdAliasesInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                                     std::string organisation)
    : table_(std::move(databaseAdapter), RecordIdAliasTable::name, aliasTable()),
      organisation_(std::move(organisation)) {}

bool RecordIdAliasesInDatabase::store(const RecordIdAlias& alias) {
    using namespace aliasColumns;
    auto columns =
        text::join({temporaryId, aliasColumns::moduleName, aliasColumns::realId, organisation, number}, ", ");
    return table_.execute(RawQuery("INSERT OR REPLACE INTO " + table_.name() + " (" + columns +
                                       ") VALUES (?,?,?,?,(SELECT COALESCE(MAX(" + number + "), 0) + 1 FROM " +
                                       table_.name() + "))",
                                   {alias.temporaryId, alias.moduleName, alias.realId, organisation_}));
}

std::int64_t RecordIdAliasesInDatabase::lastNumber() {
    FetchQuery query(table_.name());
    query.columns = {std::string("MAX(") + aliasColumns::number + ") AS last"};
    auto rows = table_.fetch(query);
    return rows && !rows->empty() ? rows->front().valueOf("last").asInteger().value_or(0) : 0;
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
    return table_.update({{aliasColumns::temporaryId, Value()}}, isAlias(moduleName, temporaryId));
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
