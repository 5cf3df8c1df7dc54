#pragma once

#include <span>
#include <string_view>
#include <vector>

namespace tarvo::sandbox {

/// Describes one field in the tables of the data set; everything else about it follows (see Metadata.cpp).
struct FieldRow {
    std::string_view apiName;
    /// The name of its type on the wire.
    std::string_view type;
    /// Its section in the layouts; empty for a field that is not in any.
    std::string_view section;
    /// A set of letters: ! mandatory, r read-only, c custom, u unique, q in quick create, s left out of sort lists, h
    /// hidden, k the record's key, m without a display mode.
    std::string_view marks = "";
    /// API name of the module that a lookup or a subform points to, or the name of a picklist.
    std::string_view target = "";
    /// The CRM column where it is not the API name in capitals without separators.
    std::string_view column = "";
};

struct PicklistRow {
    std::string_view picklist;
    std::string_view value;
    std::string_view label;
    /// A text that belongs to the value: the kind of a deal's stage, or the values of another field that it allows.
    std::string_view map = "";
};

/// Describes a list of records of one module that the detail page of another shows.
struct RelatedListRow {
    std::string_view module;
    std::string_view relatedModule;
    std::string_view label;
    std::string_view listName;
    std::string_view apiName;
    /// API name of the lookup in the related module that points back; empty when the link is kept elsewhere.
    std::string_view lookup = "";
};

/// Returns the fields of a module by its name, including those that every module has; empty for an unknown module.
std::vector<FieldRow> fieldRows(std::string_view module);
std::span<const PicklistRow> picklistRows();
std::span<const RelatedListRow> relatedListRows();
/// Returns the modules whose rows lie under records of this one.
std::span<const std::string_view> dependentModules(std::string_view module);

}  // namespace tarvo::sandbox
