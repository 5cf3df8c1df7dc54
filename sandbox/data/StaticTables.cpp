#include "sandbox/data/StaticTables.h"

#include <algorithm>
#include <span>

#include "platform/Text.h"

namespace tarvo::sandbox {
namespace {

enum class Kept { once, perOrganisation };

// A column without a type is TEXT: clients store numbers and booleans of these tables as text. INTEGER and REAL stand
// where a client binds numbers, BLOB where it stores bytes or text as it comes.
struct Table {
    std::string_view name;
    std::string_view columns;
    /// Further clauses, the keys that a replacing insert goes by.
    std::string_view keys;
    Kept kept = Kept::once;
};

constexpr Table tables[] = {
    // Modules and their metadata
    {"MODULE_DETAILS", "id, module_name, singular_name, plural_name, api_name, position, generated_type",
     "UNIQUE (module_name)", Kept::perOrganisation},
    {"PERMISSIONS", "module_name, module_api_name, permission_key, permission_value",
     "UNIQUE (module_name, permission_key)"},
    {"MODULE_LAYOUT_INFO", "module_name, layout_id, layout_name, is_accessible, is_default",
     "UNIQUE (module_name, layout_id)"},
    {"MODULE_RELATED_LIST",
     "module_name, related_module_name, display_name, list_id, is_default, related_order, lookup_column, list_name, "
     "related_list_api_name",
     "UNIQUE (module_name, list_id)"},
    {"MODULE_SPECIFIC_METADATA",
     "_id INTEGER PRIMARY KEY AUTOINCREMENT, field_id, field_api_name, module_name, crm_col_name, field_label, "
     "field_type, max_length, is_read_only, "
     "is_custom_field, "
     "is_unique, is_quick_create, is_primary_key, is_mproxy_metadata, lookup_module_api, related_list_id, visible, "
     "mode, "
     "additional_info",
     "UNIQUE (module_name, field_id)"},
    {"LAYOUT_SPECIFIC_METADATA",
     "layout_id, field_id, field_api_name, crm_col_name, module_name, section_name, section_dv, section_sequence, "
     "mandatory, "
     "default_value, position, is_subform_section, layout_additional_info",
     "UNIQUE (module_name, layout_id, field_id)"},
    {"PICKLIST_METADATA",
     "field_actual_value, field_display_value, field_id, field_api_name, crm_col_name, module_name, layout_id, "
     "field_map, position",
     "UNIQUE (module_name, layout_id, field_id, field_actual_value)"},
    {"Tags_Info", "tag_id, tag_name, module_name", "UNIQUE (tag_id)"},
    {"Tags_Records", "tag_id, tag_name, module_name, record_id", "UNIQUE (tag_id, record_id)"},
    {"CUSTOM_VIEWS_METADATA",
     "view_id, view_type, view_name, view_display_name, module_name, is_offline_supported, is_default, offline_query, "
     "offline_query_replace_info, last_modified_time, is_user_customview, list_fields, mode, section_id, view_order, "
     "section_display_name, default_sort_by, default_sort_order, fields_in_criteria, selected_columns, "
     "selected_columns_query",
     "UNIQUE (module_name, view_id)"},
    // The account and its organisation
    {"APP_SETTINGS", "module, settings_key, default_settings, custom_settings, is_default",
     "UNIQUE (module, settings_key)"},
    {"ACTIVE_USERS",
     "user_id, user_first_name, user_last_name, user_name, user_brenuid, user_email, user_status, user_role, "
     "user_confirm, "
     "user_profile, user_profile_id, is_logged_in_user, date_format, time_format, time_zone, name_format",
     "UNIQUE (user_id)", Kept::perOrganisation},
    {"COMPANY_DETAILS", "key, value", "UNIQUE (key)"},
    {"ORGANISATIONS", "org_id, org_name, is_app_default, is_web_default", "UNIQUE (org_id)"},
    {"CURRENCY_METADATA",
     "order_no, exchange_rate REAL, thousand_seperator, is_base, iso_code, currency_id, is_prefix_symbol, "
     "currency_symbol, "
     "is_active, decimal_places, currency_name, decimal_seperator",
     "UNIQUE (currency_id)"},
    {"DEALS_PIPELINE", "pipeline_id, actual_value, display_value", "UNIQUE (pipeline_id)"},
    // Two kinds of rows share this table: the stages of a pipeline, and the plain list of stages.
    {"DEALS_STAGES",
     "stage_id, pipeline_id, actual_value, display_value, sequence_number, id, name, display_label, forecast_type",
     "UNIQUE (pipeline_id, stage_id), UNIQUE (id)"},
    {"DEALS_STAGE_HISTORY",
     "Stage, id, Close_Date INTEGER, duration_days INTEGER, Amount INTEGER, Last_Modified_Time INTEGER, modified_by",
     "UNIQUE (id, Stage, Last_Modified_Time)"},
    // What hangs on records
    {"RELATED_RECORDS", "record_id, related_record_id, related_list_id, module_name, related_module_name",
     "UNIQUE (record_id, related_record_id, related_list_id)"},
    {"TIMELINE_RECORDS",
     "action_type, parent_module, parent_recordid, owner_id, owner_name, automation_rule, automation_rule_id, "
     "automation_rule_type, module_name, record_id, record_content, time INTEGER, field_history, page_number",
     "UNIQUE (parent_recordid, record_id, action_type, time)"},
    {"DASHBOARDS_LIST", "dashboard_id, dashboard_name, is_default", "UNIQUE (dashboard_id)"},
    {"DASHBOARDS_COMPONENT",
     "component_id, dashboard_id, component_name, component_type, sequence_no INTEGER, is_default, data, series_count "
     "INTEGER",
     "UNIQUE (dashboard_id, component_id)"},
    {"BLUEPRINT_TRANSITION_DETAILS", "record_id, module_name, transition_id, transition_name, transition_data BLOB",
     "UNIQUE (record_id, transition_id)", Kept::perOrganisation},
    // Mails
    {"RELATED_EMAILS",
     "record_id, option_id, option_name, module_name, message_id, from_address, to_address, cc_address, bcc_address, "
     "reply_to_address, subject, mail_content, sent_time INTEGER, mail_index, source, owner_id, owner_name, "
     "conversation, "
     "attachments BLOB, is_editable, mail_format, filter_id, status BLOB",
     "UNIQUE (record_id, option_id, option_name, message_id)", Kept::perOrganisation},
    {"RELATED_EMAILS_DETAILS", "record_id, message_id, mail_content, sent_time INTEGER, subject, editable, mail_format",
     "UNIQUE (record_id, message_id)", Kept::perOrganisation},
    {"RELATED_EMAILS_INLINE_MAPPING", "record_id, message_id, item_id, item_name, file_name",
     "UNIQUE (record_id, message_id, item_id)", Kept::perOrganisation},
    {"RELATED_EMAILS_FILTERS", "record_id, module_name, filter_id, filter_name, is_default",
     "UNIQUE (record_id, filter_id)", Kept::perOrganisation},
    {"EMAILS_SHARED_USERS",
     "record_id, parent_module, option_module INTEGER, option_id, option_name, is_selected, section_name",
     "UNIQUE (record_id, parent_module, option_module, option_id)"},
    {"FROM_EMAIL_ADDRESSES", "mail, name", "UNIQUE (mail)", Kept::perOrganisation},
    {"EMAIL_TEMPLATES", "template_id, template_name, module_name, folder_name, subject, last_modified_time",
     "UNIQUE (template_id)", Kept::perOrganisation},
    {"EMAIL_TEMPLATE_DETAILS", "template_id, template_name, subject, content, attachments BLOB", "UNIQUE (template_id)",
     Kept::perOrganisation},
    // Queues of changes. The row id of the current queue is its order.
    {"TRANSACTIONS_NEW",
     "txn_id INTEGER PRIMARY KEY, record_id, module_name, txn_type INTEGER, payload, error_response, status INTEGER, "
     "merge_count INTEGER, sync_attempt INTEGER",
     ""},
    {"TRANSACTIONS_DEPENDENCY", "txn_id INTEGER, dependent_txn INTEGER, type INTEGER",
     "UNIQUE (txn_id, dependent_txn, type)"},
    {"RECORD_DEPENDENCIES", "record_id, txn_id INTEGER, dependency_type INTEGER", "UNIQUE (record_id, txn_id)"},
    {"TRANSACTIONS_RECORD", "record_id, module_name, device_data, server_data", "UNIQUE (record_id, module_name)"},
    {"TRANSACTIONS",
     "transaction_id, record_id, module_name, operation_type INTEGER, data_json BLOB, uri_data BLOB, error_message, "
     "parent_record_id, parent_record_module, transaction_time INTEGER, server_response, extras",
     "UNIQUE (transaction_id)", Kept::perOrganisation},
    {"TRANSACTIONS_RECORDS", "record_id, device_data BLOB, server_data BLOB", "UNIQUE (record_id)"},
    {"TRANSACTIONS_MAP",
     "transaction_id, record_id, lookup_id, lookup_label, lookup_column, lookup_api_name, table_name_column, "
     "modified_time",
     "UNIQUE (transaction_id, record_id, lookup_column)", Kept::perOrganisation},
};

// JOBS is the only static table whose columns follow the naming. The id column lets search tables point at it.
constexpr Table jobsByColumn = {"APPROVAL_PROCESS_RECORDS",
                                "ID UNIQUE, record_id, module_name, record_name, initiated_time INTEGER, type, "
                                "display_name, MODULE, module_api_name, "
                                "record_owner_id, record_owner, record_owner_email, approvalprocessname, "
                                "approvalprocessid, ISAPPROVED, APPROVAL_ACTIONS, "
                                "IN_PROCESS, ACTION, COMMENTS, USER",
                                "UNIQUE (record_id, type, approvalprocessid)", Kept::perOrganisation};
constexpr Table jobsByApiName = {"APPROVAL_PROCESS_RECORDS",
                                 "id UNIQUE, recordId, moduleName, recordName, initiatedTime INTEGER, ruleType, "
                                 "moduleDisplayName, module, moduleAPI, "
                                 "recordOwnerId, recordOwnerName, recordOwnerEmailId, recordRuleName, "
                                 "recordApprovalOrTransitionID, $approved, $approval, "
                                 "$process_flow, action, comments, user",
                                 "UNIQUE (recordId, ruleType, recordApprovalOrTransitionID)", Kept::perOrganisation};

// "txn_id INTEGER" becomes "\"txn_id\" INTEGER", a bare name gets TEXT.
std::string columnClause(std::string_view column) {
    auto blank = column.find(' ');
    auto name = "\"" + std::string(column.substr(0, blank)) + "\"";
    if (blank == std::string_view::npos) return name + " TEXT";
    auto rest = std::string(column.substr(blank + 1));
    return name + (rest == "UNIQUE" ? " TEXT UNIQUE" : " " + rest);
}

std::string statement(const Table& table, std::string_view suffix) {
    std::vector<std::string> clauses;
    for (const auto& column : text::split(table.columns, ", ")) clauses.push_back(columnClause(column));
    if (!table.keys.empty()) clauses.emplace_back(table.keys);
    return "CREATE TABLE IF NOT EXISTS " + std::string(table.name) + std::string(suffix) + " (" +
           text::join(clauses, ", ") + ")";
}

bool isPlainIdentifier(std::string_view text) {
    auto plain = [](unsigned char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    return !text.empty() && text.size() <= 64 && std::all_of(text.begin(), text.end(), plain);
}

}  // namespace

std::vector<std::string> staticTables(Naming naming, std::string_view organisation) {
    std::vector<Table> all(std::begin(tables), std::end(tables));
    all.push_back(naming == Naming::column ? jobsByColumn : jobsByApiName);
    std::vector<std::string> statements;
    for (const auto& table : all) statements.push_back(statement(table, ""));
    if (!isPlainIdentifier(organisation)) return statements;
    for (const auto& table : all)
        if (table.kept == Kept::perOrganisation)
            statements.push_back(statement(table, "_" + std::string(organisation)));
    return statements;
}

}  // namespace tarvo::sandbox
