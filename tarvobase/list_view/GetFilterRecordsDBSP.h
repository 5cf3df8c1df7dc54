#pragma once

#include <optional>
#include <vector>

#include "tarvobase/database_layer/Criteria.h"
#include "tarvobase/list_view/GetListFilterRecordsParams.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

struct ModuleInfo;

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

}  // namespace tarvo
