#pragma once

#include <string>
#include <vector>

namespace tarvo {

/// Returns the SQL of the tables for metadata, as a server sends it. Columns without a type hold texts.
inline std::vector<std::string> metadataTables() {
    return {
        "CREATE TABLE MODULE_DETAILS (id, module_name UNIQUE, singular_name, plural_name, api_name, position, "
        "generated_type, table_creation_query)",
        "CREATE TABLE MODULE_RELATED_LIST (module_name, related_module_name, display_name, list_id, is_default, "
        "related_order, lookup_column, list_name, related_list_api_name, UNIQUE (module_name, list_id))",
        "CREATE TABLE MODULE_LAYOUT_INFO (module_name, layout_id, layout_name, is_accessible, is_default, "
        "UNIQUE (module_name, layout_id))",
        "CREATE TABLE LAYOUT_SPECIFIC_METADATA (layout_id, field_id, field_api_name, crm_col_name, module_name, "
        "section_name, section_dv, section_sequence, mandatory, default_value, position, is_subform_section, "
        "layout_additional_info, UNIQUE (module_name, layout_id, field_id))",
        "CREATE TABLE PICKLIST_METADATA (field_actual_value, field_display_value, field_id, field_api_name, "
        "crm_col_name, module_name, layout_id, field_map, position, "
        "UNIQUE (module_name, layout_id, field_id, field_actual_value))",
        "CREATE TABLE MODULE_SPECIFIC_METADATA (_id INTEGER PRIMARY KEY AUTOINCREMENT, field_id, field_api_name, "
        "module_name, crm_col_name, field_label, field_type, max_length, is_read_only, is_custom_field, is_unique, "
        "is_quick_create, is_primary_key, is_mproxy_metadata, lookup_module_api, related_list_id, visible, mode, "
        "additional_info, UNIQUE (module_name, field_id))",
        "CREATE TABLE APP_SETTINGS (module, settings_key, default_settings, custom_settings, is_default, "
        "UNIQUE (module, settings_key))",
        "CREATE TABLE ACTIVE_USERS (user_id UNIQUE, user_first_name, user_last_name, user_name, user_brenuid, "
        "user_email, user_status, user_role, user_confirm, user_profile, user_profile_id, is_logged_in_user, "
        "date_format, time_format, time_zone, name_format)",
        "CREATE TABLE PERMISSIONS (module_name, module_api_name, permission_key, permission_value, "
        "UNIQUE (module_name, permission_key))",
    };
}

inline std::string customViewTable() {
    return "CREATE TABLE CUSTOM_VIEWS_METADATA (view_id, view_type, view_name, view_display_name, module_name, "
           "is_offline_supported, is_default, offline_query, offline_query_replace_info, last_modified_time, "
           "is_user_customview, list_fields, mode, section_id, view_order, section_display_name, default_sort_by, "
           "default_sort_order, fields_in_criteria, selected_columns, selected_columns_query, "
           "UNIQUE (module_name, view_id))";
}

}  // namespace tarvo
