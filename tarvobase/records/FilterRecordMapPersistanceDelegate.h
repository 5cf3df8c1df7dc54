#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/database_layer/Criteria.h"

namespace tarvo {

class Record;

/// Columns of the tables that map views to their records. There is one table per module.
struct CVRecordMapDatabaseConstants {
    static constexpr std::string_view tableNameSuffix = "_CUSTOM_VIEW_RECORDS";
    std::string_view criteriaId = "cv_id";
    std::string_view recordId = "record";
    std::string_view moduleName = "module_name";
};

/// Stores which records the server returned for views. May be called from any thread. Writes return whether they were
/// stored.
class FilterRecordMapPersistanceDelegate : public virtual platform::Object {
public:
    /// Adds records to a view. Records without an id are left out.
    virtual bool store(const std::vector<ValueMap>& records, const std::string& cvId,
                       const std::string& moduleName) = 0;
    virtual bool store(const std::vector<Record>& records, const std::string& cvId, const std::string& moduleName) = 0;
    virtual bool store(const std::vector<std::string>& ids, const std::string& cvId, const std::string& moduleName) = 0;
    virtual std::string getTableName(const std::string& moduleName) = 0;
    virtual bool delete_(const std::string& cvId, const std::vector<std::string>& recordIds,
                         const std::string& moduleName) = 0;
    /// Removes all records of a view from the map.
    virtual bool delete_(const std::string& cvId, const std::string& moduleName) = 0;
    /// Removes records from all views of their module. A module without a map has nothing to remove.
    virtual bool deleteFromAllViews(const std::vector<std::string>& recordIds, const std::string& moduleName) = 0;
    /// Returns the condition on a record table that a record belongs to the view. SQLite reads the view's records from
    /// the map and looks each one up in the record table, which is quick for few records.
    virtual Criteria getFilterMappingCriteria(const std::string& cvId, const std::string& moduleName) = 0;
    /// Returns the same condition in a form that SQLite checks row by row. This is quick for many records, since SQLite
    /// may then walk the record table in the requested order.
    virtual Criteria getRowMappingCriteria(const std::string& cvId, const std::string& moduleName) = 0;
    /// Returns whether the view has more than `count` records. Returns false if the database cannot be read.
    virtual bool hasMoreThan(std::int64_t count, const std::string& cvId, const std::string& moduleName) = 0;
    /// Returns how many records the view has, or nullopt if the database cannot be read.
    virtual std::optional<std::int64_t> count(const std::string& cvId, const std::string& moduleName) = 0;
};

}  // namespace tarvo
