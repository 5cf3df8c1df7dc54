#pragma once

#include <string>
#include <vector>

namespace tarvo {

/// Returns the SQL of an account's own tables, as a server sends it.
inline std::vector<std::string> accountTables() {
    return {
        "CREATE TABLE IF NOT EXISTS MODULE_DETAILS (id TEXT, module_name TEXT, singular_name TEXT, plural_name TEXT, "
        "api_name TEXT, position TEXT, generated_type TEXT, UNIQUE (module_name))",
        "CREATE TABLE IF NOT EXISTS ACTIVE_USERS (user_id TEXT, user_first_name TEXT, user_last_name TEXT, user_name "
        "TEXT, "
        "user_brenuid TEXT, user_email TEXT, user_status TEXT, user_role TEXT, user_confirm TEXT, user_profile TEXT, "
        "user_profile_id TEXT, is_logged_in_user TEXT, date_format TEXT, time_format TEXT, time_zone TEXT, name_format "
        "TEXT, UNIQUE (user_id))",
        "CREATE TABLE IF NOT EXISTS APP_SETTINGS (module TEXT, settings_key TEXT, default_settings TEXT, "
        "custom_settings "
        "TEXT, is_default TEXT, UNIQUE (module, settings_key))",
        "CREATE TABLE IF NOT EXISTS COMPANY_DETAILS (key TEXT, value TEXT, UNIQUE (key))",
        "CREATE TABLE IF NOT EXISTS ORGANISATIONS (org_id TEXT, org_name TEXT, is_app_default TEXT, is_web_default "
        "TEXT, "
        "UNIQUE (org_id))",
        "CREATE TABLE IF NOT EXISTS Tags_Info (tag_id TEXT, tag_name TEXT, module_name TEXT, UNIQUE (tag_id))",
        "CREATE TABLE IF NOT EXISTS Tags_Records (tag_id TEXT, tag_name TEXT, module_name TEXT, record_id TEXT, UNIQUE "
        "(tag_id, record_id))",
    };
}

}  // namespace tarvo
