#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/list_view/GetListFilterRecordsParams.h"
#include "tarvobase/records/sql/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/sql/SortDescriptorUtil.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

/// What one read of a view's stored records asks for. The references must outlive the call.
struct FilterRecordsQuery {
    const FilterProtocol& filter;
    const ModuleInfo& moduleInfo;
    const GetListFilterRecordsParams& request;
    std::optional<Criteria> unsyncedCriteria{};       ///< selects records that belong to the view besides its map
    std::optional<std::vector<Criteria>> criteria{};  ///< further conditions
};

/// Reads the stored records that the server gave for a view, in the view's order. Blocks its caller; may be called from
/// any thread.
class GetFilterRecordsDBSP : public virtual platform::Object {
public:
    /// Returns nullopt if the database cannot be read.
    virtual std::optional<std::vector<Record>> getRecords(const FilterRecordsQuery& query) = 0;
    /// Returns the last of the view's stored records with all its columns, or nullopt if there is none.
    virtual std::optional<Record> getLastRecord(const FilterProtocol& filter, const ModuleInfo& moduleInfo) = 0;
};

class GetCVRecordsDBS final : public RecordInDatabase, public GetFilterRecordsDBSP {
public:
    GetCVRecordsDBS(std::shared_ptr<DatabaseAdapter> databaseAdapter,
                    std::shared_ptr<FilterRecordMapPersistanceDelegate> filterRecordMapPersistance);

    using RecordInDatabase::getRecords;
    std::optional<std::vector<Record>> getRecords(const FilterRecordsQuery& query) override;
    std::optional<Record> getLastRecord(const FilterProtocol& filter, const ModuleInfo& moduleInfo) override;

    /// Returns the order of a view, and the columns that have to be selected for it.
    using CVSort = SortDescriptorUtil::SortList;
    CVSort getCVSortDescriptor(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const;

private:
    struct Found {
        std::optional<std::vector<Record>> records;
        bool isLong = false;  // read by walking the table in the order
    };
    CVSort sortOf(const std::vector<SortField>& sortFields, const ModuleInfo& moduleInfo) const;
    std::vector<SortField> sortFieldsOf(const FilterProtocol& filter, const ModuleInfo& moduleInfo) const;
    Found fetch(const FilterRecordsQuery& query, const CVSort& sort) const;

    const std::shared_ptr<DatabaseAdapter> databaseAdapter_;
    const std::shared_ptr<FilterRecordMapPersistanceDelegate> filterRecordMapPersistance_;
};

}  // namespace tarvo
