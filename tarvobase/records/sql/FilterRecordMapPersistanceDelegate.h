#pragma once

#include <cstdint>
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
    virtual void store(const std::vector<std::string>& ids, const std::string& cvId, const std::string& moduleName) = 0;
    virtual std::string getTableName(const std::string& moduleName) = 0;
    virtual void delete_(const std::string& cvId, const std::vector<std::string>& recordIds,
                         const std::string& moduleName) = 0;
    /// Forgets all records of a view.
    virtual void delete_(const std::string& cvId, const std::string& moduleName) = 0;
    /// The condition on a record table that a record belongs to the view. SQLite reads the view's records from the map
    /// and looks each up in the record table: the quick way for few records.
    virtual Criteria getFilterMappingCriteria(const std::string& cvId, const std::string& moduleName) = 0;
    /// The same condition, asked of one row of the record table after the other: the quick way for many records, since
    /// SQLite may then walk the table in the order that is wanted.
    virtual Criteria getRowMappingCriteria(const std::string& cvId, const std::string& moduleName) = 0;
    /// Whether the view has more records than this many. False when the database does not answer.
    virtual bool hasMoreThan(std::int64_t count, const std::string& cvId, const std::string& moduleName) = 0;
};

}  // namespace tarvo
