#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace tarvo::sandbox {

/// One field as the data set is written down; the rest follows from it (see Metadata.cpp).
struct FieldRow {
    std::string_view apiName;
    /// Type text of the wire.
    std::string_view type;
    /// Section of the layouts; empty for a field that stands in none.
    std::string_view section;
    /// Letters: ! mandatory, r read-only, c custom, u unique, q in quick create, s left out of sort lists, h hidden,
    /// k the record's key, m without a display mode.
    std::string_view marks = "";
    /// API name of the module that a lookup or a subform points to, or the name of a picklist.
    std::string_view target = "";
    /// CRM column when it is not the API name in capitals without separators.
    std::string_view column = "";
};

struct PicklistRow {
    std::string_view picklist;
    std::string_view value;
    std::string_view label;
    /// Text that goes with the value: the kind of a deal's stage, or the values of another field that it allows.
    std::string_view map = "";
};

/// A list of records of one module that the detail of another shows.
struct RelatedListRow {
    std::string_view module;
    std::string_view relatedModule;
    std::string_view label;
    std::string_view listName;
    std::string_view apiName;
    /// API name of the lookup in the related module that points back; empty when the link is kept elsewhere.
    std::string_view lookup = "";
};

/// The fields of a module by its name, those that every module has included; empty for an unknown module.
std::vector<FieldRow> fieldRows(std::string_view module);
std::span<const PicklistRow> picklistRows();
std::span<const RelatedListRow> relatedListRows();
/// The modules whose rows lie under records of this one.
std::span<const std::string_view> dependentModules(std::string_view module);

}  // namespace tarvo::sandbox
