#pragma once

#include <string_view>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct CustomView;

/// A member without a column has an empty column name.
struct CustomViewConstants : StoredNames<CustomViewConstants, CustomView> {
    std::string_view TableName = of("CustomView", "CUSTOM_VIEWS_METADATA");
    std::string_view ViewID = of("ViewID", "view_id");
    std::string_view ViewType = of("ViewType", "view_type");
    std::string_view ViewName = of("ViewName", "view_name");
    std::string_view ViewDisplayName = of("ViewDisplayName", "view_display_name");
    std::string_view ModuleName = of("ModuleName", "module_name");
    std::string_view IsOfflineSupported = of("IsOfflineSupported", "is_offline_supported");
    std::string_view IsDefault = of("IsDefault", "is_default");
    std::string_view OfflineQuery = of("OfflineQuery", "offline_query");
    std::string_view OfflineQueryReplaceInfo = of("OfflineQueryReplaceInfo", "offline_query_replace_info");
    std::string_view LastModifiedTime = of("LastModifiedTime", "last_modified_time");
    std::string_view IsUserCustomView = of("IsUserCustomView", "is_user_customview");
    std::string_view ListFields = of("ListFields", "list_fields");
    std::string_view Mode = of("Mode", "mode");
    std::string_view SectionID = of("SectionID", "section_id");
    std::string_view DefaultSortBy = of("DefaultSortBy", "");
    std::string_view DefaultSortOrder = of("DefaultSortOrder", "");
    std::string_view SelectedColumnsQuery = of("SelectedColumnsQuery", "");
    std::string_view ViewOrder = of("ViewOrder", "view_order");
    std::string_view SectionDisplayName = of("SectionDisplayName", "section_display_name");
    std::string_view SortBy = of("SortBy", "default_sort_by");
    std::string_view SortOrder = of("SortOrder", "default_sort_order");
};
struct CustomViewDatabaseConstants : TableTwin<CustomViewConstants> {};

/// The columns of the same table for views that store the server's own criteria.
struct CustomViewWithOfflineQueryDatabaseConstants : CustomViewDatabaseConstants {
    constexpr CustomViewWithOfflineQueryDatabaseConstants() {
        OfflineQueryReplaceInfo = "fields_in_criteria";
        ListFields = "selected_columns";
        SelectedColumnsQuery = "selected_columns_query";
        DefaultSortBy = "default_sort_by";
        DefaultSortOrder = "default_sort_order";
    }
};

/// Returns the columns of the table for views that store the server's own criteria, or for those that do not.
const CustomViewDatabaseConstants& customViewDBConstants(bool hasServerCriteria);

}  // namespace tarvo
