#pragma once

#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/SortField.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// A list of records of one module that belong to a record of another.
struct RelatedList {
    std::string moduleName;         ///< the parent's module
    std::string relatedModuleName;  ///< as the server names it; `_relatedModuleName` is what to read from
    std::string dislayName;
    std::string listID;
    bool isDefault = false;  ///< a standard list of the server
    int relatedOrder = 0;    ///< place in the parent's detail
    /// The column of the related module that points to the parent. The server does not send it: it is filled in after
    /// the download of metadata, and empty until then.
    std::string lookupColumn;
    std::string listName;
    std::string relatedListAPIName;

    bool isInvitedEvents() const;
    bool isInvitees() const;
    bool isContactRole() const;
    /// "Events" for the meetings that a lead or contact is invited to, else `relatedModuleName`.
    std::string _relatedModuleName() const;
    /// Newest change first, by API name and by the naming in force.
    SortField defaultSortFieldApi() const;
    SortField defaultSortField() const;

    static constexpr auto fields() {
        return describe(field("moduleName", &RelatedList::moduleName),
                        field("relatedModuleName", &RelatedList::relatedModuleName),
                        field("dislayName", &RelatedList::dislayName), field("listID", &RelatedList::listID),
                        field("isDefault", &RelatedList::isDefault), field("relatedOrder", &RelatedList::relatedOrder),
                        field("lookupColumn", &RelatedList::lookupColumn), field("listName", &RelatedList::listName),
                        field("relatedListAPIName", &RelatedList::relatedListAPIName));
    }
    friend bool operator==(const RelatedList&, const RelatedList&) = default;
};

struct ModuleRelatedListConstants {
    std::string_view TableName = "MODULE_RELATED_LIST";
    std::string_view ModuleName = "ModuleName";
    std::string_view RelatedModuleName = "RelatedModuleName";
    std::string_view DislayName = "DislayName";
    std::string_view ListID = "ListID";
    std::string_view IsDefault = "IsDefault";
    std::string_view RelatedOrder = "RelatedOrder";
    std::string_view LookupColumn = "LookupColumn";
    std::string_view ListName = "ListName";
    std::string_view RelatedListAPIName = "RelatedListAPIName";

    ValueMap getDictionary(const RelatedList& list) const;
    RelatedList getValue(const ValueMap& map) const;
};

struct ModuleRelatedListDatabaseConstants : ModuleRelatedListConstants {
    constexpr ModuleRelatedListDatabaseConstants() {
        ModuleName = "module_name";
        RelatedModuleName = "related_module_name";
        DislayName = "display_name";
        ListID = "list_id";
        IsDefault = "is_default";
        RelatedOrder = "related_order";
        LookupColumn = "lookup_column";
        ListName = "list_name";
        RelatedListAPIName = "related_list_api_name";
    }
    ValueMap getDictionary(const RelatedList& list) const;
    RelatedList getValue(const Row& row) const;
};

}  // namespace tarvo
