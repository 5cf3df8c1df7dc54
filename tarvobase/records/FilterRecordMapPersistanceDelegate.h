#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/database_layer/Criteria.h"

namespace tarvo {

class Record;

/// Columns of the tables that hold which records a view has, one table a module.
struct CVRecordMapDatabaseConstants {
    static constexpr std::string_view tableNameSuffix = "_CUSTOM_VIEW_RECORDS";
    std::string_view criteriaId = "cv_id";
    std::string_view recordId = "record";
    std::string_view moduleName = "module_name";
};

/// The store of the records that the server gave for views. From any thread.
class FilterRecordMapPersistanceDelegate : public virtual platform::Object {
public:
    /// Adds records to a view; those without an id are left out.
    virtual void store(const std::vector<ValueMap>& records, const std::string& cvId,
                       const std::string& moduleName) = 0;
    virtual void store(const std::vector<Record>& records, const std::string& cvId, const std::string& moduleName) = 0;
    virtual std::string getTableName(const std::string& moduleName) = 0;
    virtual void delete_(const std::string& cvId, const std::vector<std::string>& recordIds,
                         const std::string& moduleName) = 0;
    /// Forgets all records of a view.
    virtual void delete_(const std::string& cvId, const std::string& moduleName) = 0;
    /// The condition on a record table that a record belongs to the view.
    virtual Criteria getFilterMappingCriteria(const std::string& cvId, const std::string& moduleName) = 0;
};

}  // namespace tarvo
