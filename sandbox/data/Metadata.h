#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"
#include "sandbox/data/Generator.h"

namespace tarvo::sandbox {

struct ModuleData;

struct PicklistValue {
    std::string value;
    std::string label;
    std::string map;
};

struct FieldData {
    std::string id;
    std::string apiName;
    std::string column;
    std::string label;
    std::string type;
    int maxLength = 0;
    bool isReadOnly = false;
    bool isCustom = false;
    bool isUnique = false;
    bool isQuickCreate = false;
    bool isKey = false;
    bool isMandatory = false;
    /// Whether lists of fields to sort by leave it out.
    bool isUnsorted = false;
    bool isVisible = true;
    /// The API name of the module that a lookup or subform points to; "se_module" when each record names its own.
    std::string target;
    std::string relatedListId;
    /// A number of bits: 1 display, 2 edit, 4 create; may be empty.
    std::string mode;
    /// Its section in the layouts; empty when the field is not in any.
    std::string section;
    /// A map, or for lookups a list.
    Value preferences;
    std::vector<PicklistValue> picklist;

    bool isLookup() const { return type == "lookup" || type == "userlookup" || type == "ownerlookup"; }
};

struct LayoutData {
    std::string id;
    std::string name;
    bool isAccessible;
    bool isDefault;
    /// Names of the sections in their order.
    std::vector<std::string> sections;
};

struct RelatedListData {
    std::string id;
    std::string relatedModule;
    std::string label;
    std::string name;
    std::string apiName;
    /// API name of the lookup in the related module; empty when the link is kept elsewhere.
    std::string lookup;
};

/// Describes the fields, layouts and lists of one module.
struct ModuleMetadata {
    std::vector<FieldData> fields;
    std::vector<LayoutData> layouts;
    std::vector<RelatedListData> relatedLists;
    /// Names of the modules whose rows lie under records of this one.
    std::vector<std::string> dependents;
};

/// Metadata by module name.
using MetadataByModule = std::map<std::string, ModuleMetadata, std::less<>>;
MetadataByModule makeMetadata(const std::vector<ModuleData>& modules, IdSequence& ids);

}  // namespace tarvo::sandbox
