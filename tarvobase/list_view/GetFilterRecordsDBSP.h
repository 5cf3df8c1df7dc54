#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/database_layer/Criteria.h"
#include "tarvobase/list_view/GetListFilterRecordsParams.h"
#include "tarvobase/records/Record.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

struct CustomView;
struct ModuleInfo;

/// What one read of a view's stored records asks for. The references must outlive the call.
struct FilterRecordsQuery {
    const FilterProtocol& filter;
    const ModuleInfo& moduleInfo;
    const GetListFilterRecordsParams& request;
    std::optional<Criteria> unsyncedCriteria{};       ///< selects records that belong to the view besides its map
    std::optional<std::vector<Criteria>> criteria{};  ///< further conditions
    /// The view whose own condition selects the records while its map is empty; null if nothing else selects them.
    const CustomView* conditionOfEmptyMap = nullptr;
};

/// Reads the stored records of a view in the view's order: the records that the server gave for it or, while there are
/// none, those that meet the view's own condition. Blocks its caller; may be called from any thread.
class GetFilterRecordsDBSP : public virtual platform::Object {
public:
    /// Returns nullopt if the database cannot be read.
    virtual std::optional<std::vector<Record>> getRecords(const FilterRecordsQuery& query) = 0;
    /// Returns the last of the view's stored records with all its columns, or nullopt if there is none.
    virtual std::optional<Record> getLastRecord(const FilterProtocol& filter, const ModuleInfo& moduleInfo) = 0;
    /// Returns those of the candidates that come after every other record of the view's map, or nullopt if the database
    /// cannot be read. Records with edits that wait to be sent do not count as others: they stand where the user has
    /// put them, which the server does not know.
    virtual std::optional<std::vector<std::string>> getIdsAtEnd(const FilterProtocol& filter,
                                                                const ModuleInfo& moduleInfo,
                                                                const std::set<std::string>& candidates) = 0;
};

}  // namespace tarvo
