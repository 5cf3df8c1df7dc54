#pragma once

#include "tarvobase/configuration/Scope.h"
#include "tarvobase/storage/InMemoryDatabaseAdapter.h"

namespace tarvo {

/// The tables in memory of the process. All objects of this class share them, and nothing is written to the disk. An
/// owner's tables live as long as the process, and are there again when the owner becomes current again.
class InMemoryStorage final : public InMemoryDatabaseAdapter {
public:
    /// Works on the tables of the account that is current at each call.
    InMemoryStorage() = default;
    /// Works on the tables of one account in one organisation, as long as the scope is current.
    explicit InMemoryStorage(Scope scope) : scope_(std::move(scope)) {}

    std::string owner() const override;
    std::string account() const override { return scope_ ? scope_->account : Scope::current().account; }
    bool isOwnerCurrent() const override { return !scope_ || scope_->isCurrent(); }
    void insertInto(const std::string& tableName, Object object) override;
    void insertInto(const std::string& tableName, const Objects& objects) override;
    void update(const std::string& tableName, Object object, const ColumnValues& columnValues) override;
    std::optional<Objects> fetchObjects(const std::string& tableName, const ColumnValues& columnValues,
                                        std::int64_t limit) override;
    std::optional<Objects> fetchAllObjects(const std::string& fromTable, std::int64_t limit) override;
    std::optional<Objects> fetchObjects(const std::string& tableName, const ColumnValues& columnValues) override;
    std::optional<Objects> fetchAllObjects(const std::string& tableName) override;
    void deleteObjects(const std::string& tableName, const ColumnValues& columnValues) override;
    void deleteAllObjects(const std::string& tableName) override;
    void change(const std::string& tableName, const std::string& owner,
                platform::FunctionRef<void(std::optional<Objects>& table)> change) override;

private:
    const std::optional<Scope> scope_;
};

}  // namespace tarvo
