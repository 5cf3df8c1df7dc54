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

/// The records that stand in a list of another, as wire dictionaries.
struct NestedRecords {
    std::string parentId;
    std::vector<ValueMap> records;
};

/// Keeps the rows that hang on records in step: participants, product and price lines, comments, attachments of notes,
/// rows of subforms, tags. Rows that the server no longer sends stay; of the tags those of the named records go first.
class DependentRecords {
public:
    /// The lists under a name of the wire, one for each record that has such a list, the empty ones included.
    using Lists = std::function<std::vector<NestedRecords>(std::string_view wireName)>;

    /// Both must outlive the object.
    DependentRecords(const std::shared_ptr<DatabaseAdapter>& databaseAdapter, const GetFieldListDM& fieldLists)
        : databaseAdapter_(databaseAdapter), fieldLists_(fieldLists) {}

    /// Stores what hangs on records of the module that the fields are of.
    void store(const FieldList& fields, const Lists& lists) const;

private:
    void storeRows(const std::vector<NestedRecords>& lists, const std::string& moduleName, bool withParent) const;
    void storeSubforms(const FieldList& fields, std::string_view exceptWireName, const Lists& lists) const;
    void storeTags(const std::vector<NestedRecords>& lists, const std::string& moduleName) const;

    const std::shared_ptr<DatabaseAdapter>& databaseAdapter_;
    const GetFieldListDM& fieldLists_;
};

}  // namespace tarvo
