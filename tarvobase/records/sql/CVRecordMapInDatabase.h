#pragma once

#include <memory>

#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"

namespace tarvo {

/// The tables that map views to their records. The server defines them together with the record tables.
class CVRecordMapInDatabase final : public FilterRecordMapPersistanceDelegate {
public:
    explicit CVRecordMapInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter)
        : databaseAdapter_(std::move(databaseAdapter)) {}

    bool store(const std::vector<ValueMap>& records, const std::string& cvId, const std::string& moduleName) override;
    bool store(const std::vector<Record>& records, const std::string& cvId, const std::string& moduleName) override;
    bool store(const std::vector<std::string>& ids, const std::string& cvId, const std::string& moduleName) override;
    std::string getTableName(const std::string& moduleName) override;
    bool delete_(const std::string& cvId, const std::vector<std::string>& recordIds,
                 const std::string& moduleName) override;
    bool delete_(const std::string& cvId, const std::string& moduleName) override;
    bool deleteFromAllViews(const std::vector<std::string>& recordIds, const std::string& moduleName) override;
    Criteria getFilterMappingCriteria(const std::string& cvId, const std::string& moduleName) override;
    Criteria getRowMappingCriteria(const std::string& cvId, const std::string& moduleName) override;
    bool hasMoreThan(std::int64_t count, const std::string& cvId, const std::string& moduleName) override;
    std::optional<std::int64_t> count(const std::string& cvId, const std::string& moduleName) override;

private:
    TableAccess table(const std::string& moduleName) { return {databaseAdapter_, getTableName(moduleName)}; }

    std::shared_ptr<DatabaseAdapter> databaseAdapter_;
};

}  // namespace tarvo
