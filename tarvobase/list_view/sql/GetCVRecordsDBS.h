#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "tarvobase/list_view/GetFilterRecordsDBSP.h"
#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/sql/SortDescriptorUtil.h"

namespace tarvo {

class GetCVRecordsDBS final : public RecordInDatabase, public GetFilterRecordsDBSP {
public:
    GetCVRecordsDBS(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                    std::shared_ptr<FilterRecordMapPersistanceDelegate> filterRecordMapPersistance);

    using RecordInDatabase::getRecords;
    std::optional<std::vector<Record>> getRecords(const FilterRecordsQuery& query) override;
    std::optional<Record> getLastRecord(const FilterProtocol& filter, const ModuleInfo& moduleInfo) override;
    std::optional<std::vector<std::string>> getIdsAtEnd(const FilterProtocol& filter, const ModuleInfo& moduleInfo,
                                                        const std::set<std::string>& candidates) override;

    /// Returns the order of a view, and the columns that have to be selected for it.
    using CVSort = SortDescriptorUtil::SortList;
    CVSort getCVSortDescriptor(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const;

private:
    struct Found {
        std::optional<std::vector<Record>> records;
        bool isLong = false;  // read by walking the table in the order
    };
    CVSort reversedSortOf(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const;
    CVSort sortOf(const std::vector<SortField>& sortFields, const ModuleInfo& moduleInfo) const;
    std::vector<SortField> sortFieldsOf(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const;
    Found fetch(const FilterRecordsQuery& query, const CVSort& sort) const;
    bool isLong(const FilterRecordsQuery& query) const;
    std::optional<Criteria> criteriaOf(const FilterRecordsQuery& query, bool isLong) const;

    const std::shared_ptr<DatabaseAdapter> databaseAdapter_;
    const std::shared_ptr<FilterRecordMapPersistanceDelegate> filterRecordMapPersistance_;
};

}  // namespace tarvo
