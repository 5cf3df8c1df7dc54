#pragma once

#include <string>

#include "tarvobase/storage/StoredNames.h"
#include "tarvobase/value_objects/field/SortField.h"

namespace tarvo {

struct RelatedList;

struct ModuleRelatedListConstants : StoredNames<ModuleRelatedListConstants, RelatedList> {
    std::string_view TableName = of("MODULE_RELATED_LIST");
    std::string_view ModuleName = of("ModuleName", "module_name");
    std::string_view RelatedModuleName = of("RelatedModuleName", "related_module_name");
    std::string_view DislayName = of("DislayName", "display_name");
    std::string_view ListID = of("ListID", "list_id");
    std::string_view IsDefault = of("IsDefault", "is_default");
    std::string_view RelatedOrder = of("RelatedOrder", "related_order");
    std::string_view LookupColumn = of("LookupColumn", "lookup_column");
    std::string_view ListName = of("ListName", "list_name");
    std::string_view RelatedListAPIName = of("RelatedListAPIName", "related_list_api_name");
};
struct ModuleRelatedListDatabaseConstants : TableTwin<ModuleRelatedListConstants> {};

/// A list of records of one module that belong to a record of another module.
struct RelatedList {
    std::string moduleName;         ///< the parent's module
    std::string relatedModuleName;  ///< the server's name; records are read from `_relatedModuleName`
    std::string dislayName;
    std::string listID;
    bool isDefault = false;  ///< a standard list of the server
    int relatedOrder = 0;    ///< place in the parent's detail view
    /// The column of the related module that points to the parent. The server does not send it; it is filled in after
    /// the download of metadata and is empty until then.
    std::string lookupColumn;
    std::string listName;
    std::string relatedListAPIName;

    bool isInvitedEvents() const;
    bool isInvitees() const;
    bool isContactRole() const;
    /// Returns "Events" for the meetings that a lead or contact is invited to, and `relatedModuleName` otherwise.
    std::string _relatedModuleName() const;
    /// Sorts by the time of the last change, newest first; by API name, and by the name in the naming in force.
    SortField defaultSortFieldApi() const;
    SortField defaultSortField() const;

    static constexpr auto fields() {
        using V = RelatedList;
        using Names = ModuleRelatedListConstants;
        return describe(field("moduleName", &V::moduleName, &Names::ModuleName),
                        field("relatedModuleName", &V::relatedModuleName, &Names::RelatedModuleName).at(0),
                        field("dislayName", &V::dislayName, &Names::DislayName).at(1),
                        field("listID", &V::listID, &Names::ListID).at(2),
                        field("isDefault", &V::isDefault, &Names::IsDefault).at(6),
                        field("relatedOrder", &V::relatedOrder, &Names::RelatedOrder).at(5),
                        field("lookupColumn", &V::lookupColumn, &Names::LookupColumn),
                        field("listName", &V::listName, &Names::ListName).at(3),
                        field("relatedListAPIName", &V::relatedListAPIName, &Names::RelatedListAPIName).at(4));
    }
    friend bool operator==(const RelatedList&, const RelatedList&) = default;
};

}  // namespace tarvo
