#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

class DatabaseAdapter;
class GetFieldListDM;

/// The records in a list of another record, as wire dictionaries.
struct NestedRecords {
    std::string parentId;
    std::vector<ValueMap> records;
};

/// Stores the rows that belong to records: participants, product and price lines, comments, attachments of notes, rows
/// of subforms, and tags. Rows that the server no longer sends are kept, except for tags, which are replaced per
/// record.
class DependentRecords {
public:
    /// Returns the lists under a wire name: one per record that has such a list, empty ones included.
    using Lists = std::function<std::vector<NestedRecords>(std::string_view wireName)>;

    /// Both must outlive the object.
    DependentRecords(const std::shared_ptr<DatabaseAdapter>& databaseAdapter, const GetFieldListDM& fieldLists)
        : databaseAdapter_(databaseAdapter), fieldLists_(fieldLists) {}

    /// Stores the dependent rows of records of the module to which `fields` belongs.
    void store(const FieldList& fields, const Lists& lists) const;

private:
    void storeRows(const std::vector<NestedRecords>& lists, const std::string& moduleName, bool withParent) const;
    void storeSubforms(const FieldList& fields, std::string_view exceptWireName, const Lists& lists) const;
    void storeTags(const std::vector<NestedRecords>& lists, const std::string& moduleName) const;

    const std::shared_ptr<DatabaseAdapter>& databaseAdapter_;
    const GetFieldListDM& fieldLists_;
};

}  // namespace tarvo
