#pragma once

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/transaction/RecordIdAliases.h"

namespace tarvo {

/// The real ids in the account's database.
class RecordIdAliasesInDatabase final : public RecordIdAliases {
public:
    /// The adapter may be null.
    explicit RecordIdAliasesInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter);

    bool store(const RecordIdAlias& alias) override;
    Found realId(const std::string& moduleName, const std::string& temporaryId) override;
    std::optional<std::vector<RecordIdAlias>> aliasesOf(const std::vector<std::string>& temporaryIds) override;
    bool forget(const std::string& moduleName, const std::string& temporaryId) override;

private:
    std::optional<std::vector<RecordIdAlias>> aliasesWhere(Criteria criteria) const;

    EnsuredTable table_;
};

}  // namespace tarvo
