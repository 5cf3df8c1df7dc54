#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/RecordIdAliases.h"

namespace tarvo {

/// The table of the real ids, with the columns that statements over several tables name.
struct RecordIdAliasTable {
    static constexpr const char *name = "TARVO_RECORD_IDS", *moduleName = "module_name", *realId = "real_id",
                                *organisation = "organisation", *number = "number", *temporaryId = "temporary_id";
};

/// The real ids in the account's database. All organisations share the table.
class RecordIdAliasesInDatabase final : public RecordIdAliases {
public:
    /// The adapter may be null.
    RecordIdAliasesInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter, std::string organisation);

    bool store(const RecordIdAlias& alias) override;
    Found realId(const std::string& moduleName, const std::string& temporaryId) override;
    std::optional<std::vector<RecordIdAlias>> aliasesOf(const std::vector<std::string>& temporaryIds) override;
    bool forget(const std::string& moduleName, const std::string& temporaryId) override;
    std::int64_t lastNumber() override;

private:
    std::optional<std::vector<RecordIdAlias>> aliasesWhere(Criteria criteria) const;

    EnsuredTable table_;
    const std::string organisation_;
};

}  // namespace tarvo
