#include "sandbox/data/ModuleSettings.h"

namespace tarvo::sandbox {
namespace {

struct Column {
    std::string_view column, apiName;
};

/// Which columns a module's list shows, searches and is sorted by.
struct ListSettings {
    std::string_view module;
    std::vector<Column> display;
    std::vector<Column> search;
    Column groupBy, primary, secondary;
};

constexpr Column noColumn{"", ""};
constexpr Column modified{"MODIFIEDTIME", "Modified_Time"};
constexpr Column owner{"SMOWNERID", "Owner"};
constexpr Column email{"EMAIL", "Email"};
constexpr Column phone{"PHONE", "Phone"};
constexpr Column fullName{"FULLNAME", "Full_Name"};
constexpr Column lastName{"LASTNAME", "Last_Name"};
constexpr Column accountName{"ACCOUNTNAME", "Account_Name"};
constexpr Column dealName{"POTENTIALNAME", "Deal_Name"};
constexpr Column stage{"STAGE", "Stage"};
constexpr Column subject{"SUBJECT", "Subject"};
constexpr Column name{"NAME", "Name"};

const std::vector<ListSettings>& listSettings() {
    static const std::vector<ListSettings> all = {
        {"Leads",
         {fullName, email, phone, {"COMPANY", "Company"}},
         {fullName, email, phone},
         {"LEADSOURCE", "Lead_Source"},
         lastName,
         modified},
        {"Contacts", {fullName, accountName, email, phone}, {fullName, email, phone}, noColumn, lastName, noColumn},
        {"Accounts", {accountName, phone, owner}, {accountName, phone}, noColumn, accountName, noColumn},
        {"Deals",
         {dealName, stage, {"AMOUNT", "Amount"}, {"CLOSINGDATE", "Closing_Date"}},
         {dealName},
         stage,
         {"CLOSINGDATE", "Closing_Date"},
         dealName},
        {"Tasks",
         {subject, {"DUEDATE", "Due_Date"}, {"STATUS", "Status"}},
         {subject},
         noColumn,
         {"DUEDATE", "Due_Date"},
         noColumn},
        {"Events",
         {{"SUBJECT", "Event_Title"}, {"STARTDATETIME", "Start_Date_Time"}},
         {{"SUBJECT", "Event_Title"}},
         noColumn,
         {"STARTDATETIME", "Start_Date_Time"},
         noColumn},
        {"Calls",
         {subject, {"CALLSTARTTIME", "Call_Start_Time"}},
         {subject},
         noColumn,
         {"CALLSTARTTIME", "Call_Start_Time"},
         noColumn},
        {"Products",
         {{"PRODUCTNAME", "Product_Name"}, {"UNITPRICE", "Unit_Price"}},
         {{"PRODUCTNAME", "Product_Name"}},
         noColumn,
         noColumn,
         noColumn},
        {"Quotes", {subject, accountName}, {subject}, noColumn, modified, noColumn},
        {"Cases", {subject, {"STATUS", "Status"}}, {subject}, {"STATUS", "Status"}, modified, noColumn},
        {"Solutions",
         {{"SOLUTIONTITLE", "Solution_Title"}},
         {{"SOLUTIONTITLE", "Solution_Title"}},
         noColumn,
         modified,
         noColumn},
        {"CustomModule1", {name, owner}, {name}, noColumn, name, noColumn},
        {"CustomModule2", {name, owner}, {name}, noColumn, name, noColumn},
    };
    return all;
}

std::string_view text(const Column& column, Naming naming) {
    return naming == Naming::column ? column.column : column.apiName;
}

ValueList texts(const std::vector<Column>& columns, Naming naming) {
    ValueList list;
    for (const auto& column : columns) list.emplace_back(text(column, naming));
    return list;
}

// Pairs of a column and a direction; an empty column means that the level is not set.
ValueList sortBlock(const ListSettings& settings, Naming naming) {
    ValueList list;
    for (const auto& column : {settings.groupBy, settings.primary, settings.secondary}) {
        list.emplace_back(text(column, naming));
        list.emplace_back(column.column == modified.column ? "desc" : "asc");
    }
    return list;
}

Value moduleRow(const ListSettings& settings, Naming naming) {
    ValueList row{settings.module,
                  "true",
                  "2000",
                  texts(settings.display, naming),
                  texts(settings.search, naming),
                  sortBlock(settings, naming)};
    if (settings.module == "Accounts") row.emplace_back("100");
    return row;
}

}  // namespace

ValueList makeSettings(const DataSet& data, Naming naming) {
    ValueList modules;
    ValueList supported;
    for (const auto& settings : listSettings()) modules.push_back(moduleRow(settings, naming));
    for (const auto& module : data.modules)
        if (module.hasOwnLists) supported.emplace_back(module.name);
    return {"4",
            "default",
            "System",
            "14",
            "25",
            "km",
            "direct",
            "ask",
            "default",
            "default",
            "Monday",
            "true",
            "true",
            "true",
            "First Name,Last Name",
            "default",
            std::move(modules),
            std::move(supported),
            ValueList{"Leads", "Contacts"},
            ValueList{"Accounts", "Deals", "Products", "Quotes", "Cases", "Solutions", "Campaigns", "CustomModule1"}};
}

}  // namespace tarvo::sandbox
