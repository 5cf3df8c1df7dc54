#pragma once

#include <string_view>

#include "platform/Rows.h"

namespace tarvo {

struct CustomView;

/// Plain keys of a custom view.
struct CustomViewConstants {
    std::string_view TableName = "CustomView";
    std::string_view ViewID = "ViewID";
    std::string_view ViewType = "ViewType";
    std::string_view ViewName = "ViewName";
    std::string_view ViewDisplayName = "ViewDisplayName";
    std::string_view ModuleName = "ModuleName";
    std::string_view IsOfflineSupported = "IsOfflineSupported";
    std::string_view IsDefault = "IsDefault";
    std::string_view OfflineQuery = "OfflineQuery";
    std::string_view OfflineQueryReplaceInfo = "OfflineQueryReplaceInfo";
    std::string_view LastModifiedTime = "LastModifiedTime";
    std::string_view IsUserCustomView = "IsUserCustomView";
    std::string_view ListFields = "ListFields";
    std::string_view Mode = "Mode";
    std::string_view SectionID = "SectionID";
    std::string_view DefaultSortBy = "DefaultSortBy";
    std::string_view DefaultSortOrder = "DefaultSortOrder";
    std::string_view SelectedColumnsQuery = "SelectedColumnsQuery";
    std::string_view ViewOrder = "ViewOrder";
    std::string_view SectionDisplayName = "SectionDisplayName";
    std::string_view SortBy = "SortBy";
    std::string_view SortOrder = "SortOrder";

    ValueMap getDictionary(const CustomView& customView) const;
    CustomView getValue(const ValueMap& map) const;
};

/// Columns of the table of custom views. A member without a column has the empty name.
struct CustomViewDatabaseConstants : CustomViewConstants {
    constexpr CustomViewDatabaseConstants() {
        TableName = "CUSTOM_VIEWS_METADATA";
        ViewID = "view_id";
        ViewType = "view_type";
        ViewName = "view_name";
        ViewDisplayName = "view_display_name";
        ModuleName = "module_name";
        IsOfflineSupported = "is_offline_supported";
        IsDefault = "is_default";
        OfflineQuery = "offline_query";
        OfflineQueryReplaceInfo = "offline_query_replace_info";
        LastModifiedTime = "last_modified_time";
        IsUserCustomView = "is_user_customview";
        ListFields = "list_fields";
        Mode = "mode";
        SectionID = "section_id";
        DefaultSortBy = "";
        DefaultSortOrder = "";
        SelectedColumnsQuery = "";
        ViewOrder = "view_order";
        SectionDisplayName = "section_display_name";
        SortBy = "default_sort_by";
        SortOrder = "default_sort_order";
    }
    ValueMap getDictionary(const CustomView& customView) const;
    CustomView getValue(const Row& row) const;
};

/// The same table where views keep the server's own criteria.
struct CustomViewWithOfflineQueryDatabaseConstants : CustomViewDatabaseConstants {
    constexpr CustomViewWithOfflineQueryDatabaseConstants() {
        OfflineQueryReplaceInfo = "fields_in_criteria";
        ListFields = "selected_columns";
        SelectedColumnsQuery = "selected_columns_query";
        DefaultSortBy = "default_sort_by";
        DefaultSortOrder = "default_sort_order";
    }
};

}  // namespace tarvo
