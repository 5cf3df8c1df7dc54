#pragma once

#include "tarvobase/storage/InMemoryDatabaseAdapter.h"

namespace tarvo {

/// The tables in memory of the process. All objects of this class share them; nothing is written to the disk. An
/// account's tables live as long as the process and are found again when the account comes back.
class InMemoryStorage final : public InMemoryDatabaseAdapter {
public:
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
    void change(const std::string& tableName, const std::string& account,
                platform::FunctionRef<void(std::optional<Objects>& table)> change) override;
};

}  // namespace tarvo
