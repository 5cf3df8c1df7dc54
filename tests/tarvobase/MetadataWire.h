#pragma once

#include <string>
#include <vector>

#include "platform/Json.h"
#include "platform/Text.h"

/// Metadata answers as the server sends them, for tests that change one part of them.
namespace tarvo::wire {

enum Section { relatedLists, layouts, layoutFields, picklists, columns, fields, dependentFields, unused, relatedSort };

/// Returns the texts between the bars.
inline ValueList row(const std::string& texts) {
    auto parts = text::split(texts, "|");
    return {parts.begin(), parts.end()};
}

inline ValueList relatedListRow(const std::string& id, const std::string& module = "Contacts") {
    return row(module + "|People|" + id + "|List of " + module + "|" + module + "_of|3|true");
}
inline ValueList layoutRow(const std::string& module, const std::string& id) {
    return row(module + "|" + id + "|Standard|true|false");
}
inline ValueList layoutFieldRow(const std::string& module, const std::string& field) {
    auto columns = row("L1|" + field + "|Api_" + field + "|COL_" + field + "|" + module +
                       "|Basic|Basic Information|2|true|none|7|true");
    columns.push_back(ValueMap{{"maximum_rows", 25}});
    return columns;
}
inline ValueList picklistRow(const std::string& module, const std::string& value) {
    return row(value + "|" + value + " shown|F1|Api_F1|COL_F1|" + module + "|L1|map|4");
}
inline ValueList fieldRow(const std::string& module, const std::string& field, const std::string& type = "text") {
    auto columns = row(field + "|Api_" + field + "|" + module + "|COL_" + field + "|Label|" + type +
                       "|255|false|true|false|true|false|false|||true|5");
    columns.push_back(ValueMap{{"decimal_place", "2"}});
    return columns;
}
/// Returns a lookup with its target module and the related list that it fills.
inline ValueList lookupRow(const std::string& module, const std::string& field, const std::string& target,
                           const std::string& relatedListID) {
    auto row = fieldRow(module, field, "lookup");
    row[13] = target;
    row[14] = relatedListID;
    return row;
}

/// Returns sections with two rows each. The dependent fields belong to the module "Below".
inline ValueList sections(const std::string& module) {
    return {ValueList{relatedListRow(module + "1"), relatedListRow(module + "2", "Tasks")},
            ValueList{layoutRow(module, "L1"), layoutRow(module, "L2")},
            ValueList{layoutFieldRow(module, "F1"), layoutFieldRow(module, "F2")},
            ValueList{picklistRow(module, "A"), picklistRow(module, "B")},
            ValueList{ValueList{"Last_Name", "Email"}, ValueList{"Phone"}},
            ValueList{fieldRow(module, "F1"), fieldRow(module, "F2", "picklist")},
            ValueList{fieldRow("Below", module + "B1"), fieldRow("Below", module + "B2")},
            ValueList{},
            ValueList{"Created_Time", "asc"}};
}

inline ValueMap info(const std::string& module) {
    return {{"module", module}, {"servertime", 1700000000000}, {"responsetime", 1700000000001}, {"nodata", false}};
}
inline ValueMap entry(ValueMap info, ValueList sections) {
    return {{"info", std::move(info)}, {"data", std::move(sections)}};
}
inline ValueMap entry(const std::string& module) { return entry(info(module), sections(module)); }
/// Returns an entry whose info has the statements of the tables of a module.
inline ValueMap entryWithTables(const std::string& module, ValueMap tables) {
    auto about = info(module);
    about.set("tables", ValueList{std::move(tables)});
    return entry(std::move(about), sections(module));
}

inline std::string body(ValueList entries) {
    return json::write(ValueMap{{"response", ValueMap{{"result", std::move(entries)}}}}).value();
}

}  // namespace tarvo::wire
