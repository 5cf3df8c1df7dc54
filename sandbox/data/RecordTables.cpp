#include "sandbox/data/RecordTables.h"

#include <algorithm>
#include <set>

#include "platform/Text.h"

namespace tarvo::sandbox {
namespace {

const std::string& nameOf(const FieldData& field, Naming naming) {
    return naming == Naming::column ? field.column : field.apiName;
}

// Only names that need quotes get them, since clients search for the clause of the tag column in this form.
std::string quoted(const std::string& name) {
    auto plain = [](unsigned char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_';
    };
    return std::all_of(name.begin(), name.end(), plain) ? name : "\"" + name + "\"";
}

// Times are numbers of seconds, the attachments of a note bytes, all else is text.
std::string typeOf(const FieldData& field) {
    if (field.isKey) return "TEXT UNIQUE";
    if (field.type == "date" || field.type == "datetime") return "INTEGER";
    if (field.apiName == "$attachments") return "BLOB";
    return "TEXT COLLATE NOCASE";
}

bool hasDisplayText(const FieldData& field) { return field.isLookup() || field.apiName == "Layout"; }

/// Joins columns and leaves out those that the table has already, as SQLite compares names.
class ColumnList {
public:
    void add(const std::string& name, const std::string& type) {
        if (names_.insert(text::asciiLowercase(name)).second) append(name, type);
    }
    void append(const std::string& name, const std::string& type) { text_ += " , " + quoted(name) + " " + type; }
    const std::string& text() const { return text_; }

private:
    std::set<std::string> names_;
    std::string text_;
};

// A person takes part in many meetings, so the key of such a row is the pair.
std::string furtherKeys(std::string_view module, Naming naming) {
    if (module != "EventInvitees") return "";
    return naming == Naming::column ? " , UNIQUE (RECORD_ID, PARTICIPANT)" : " , UNIQUE (record_id, participant)";
}

std::string recordsTable(std::string_view module, const ModuleMetadata& metadata, Naming naming) {
    ColumnList columns;
    for (const auto& field : metadata.fields) {
        const auto& name = nameOf(field, naming);
        columns.add(name, typeOf(field));
        if (hasDisplayText(field)) columns.add(name + "_LOOKUP", "TEXT COLLATE NOCASE");
    }
    // The columns of three modules make up this table, and each brought its tags along: clients drop the repeated ones.
    if (module == "Activities" && naming == Naming::api)
        for (int i = 0; i < 2; ++i) columns.append("Tag", "TEXT COLLATE NOCASE");
    return "CREATE TABLE IF NOT EXISTS " + std::string(module) + "Records (_id INTEGER PRIMARY KEY AUTOINCREMENT" +
           columns.text() + furtherKeys(module, naming) + ")";
}

}  // namespace

RecordTables recordTables(std::string_view module, const ModuleMetadata& metadata, Naming naming) {
    auto map = [&](std::string_view suffix, std::string_view content) {
        return "CREATE TABLE IF NOT EXISTS " + std::string(module) + std::string(suffix) + " (" + std::string(content) +
               ")";
    };
    return {
        recordsTable(module, metadata, naming),
        map("_CUSTOM_VIEW_RECORDS", "cv_id TEXT, record TEXT, module_name TEXT, UNIQUE (cv_id, record)"),
        map("_RELATED_RECORDS",
            "relatedRecordId TEXT, relatedListId TEXT, recordId TEXT, UNIQUE (recordId, relatedListId, "
            "relatedRecordId)"),
        map("_LOOKUP_RECORDS", "filter_id TEXT, recordId TEXT, isSearch BLOB, UNIQUE (filter_id, recordId, isSearch)")};
}

}  // namespace tarvo::sandbox
