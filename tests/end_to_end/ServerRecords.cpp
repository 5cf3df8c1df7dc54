#include "tests/end_to_end/ServerRecords.h"

#include <map>
#include <set>

#include "platform/dates/WireDates.h"

namespace tarvo::tests {

namespace {

using Row = EncryptedFile::Row;

ValueList itemsOf(const Value& value) { return value.asList() ? *value.asList() : ValueList(); }

/// A field of a module, as the local metadata describe it.
struct LocalField {
    std::string apiName, column, type;
    /// The table of the rows below a record; empty for other fields.
    std::string rows = {};
};

/// Compares the tables of records with what the server holds.
class ServerRecords {
public:
    ServerRecords(const EndToEnd& world, EncryptedFile& file) : world_(world), file_(file) {
        for (auto& row : file_.select("SELECT module_name, api_name FROM MODULE_DETAILS"))
            names_[row["api_name"]] = row["module_name"];
        for (auto& row : file_.select("SELECT * FROM MODULE_SPECIFIC_METADATA"))
            fields_[row["module_name"]].push_back(
                {row["field_api_name"], row["crm_col_name"], row["field_type"], tableOfRows(row)});
        for (auto& row : file_.select("SELECT * FROM Tags_Records"))
            tags_[row["record_id"]].insert(row["tag_id"] + " " + row["tag_name"]);
    }

    void expectSame(Held held, const std::vector<std::string>& modules) {
        for (auto& [apiName, module] : names_) {
            if (!modules.empty() && !text::contains(modules, module)) continue;
            auto answer = world_.controlled("/control/records?module=" + module);
            // Modules whose rows lie below records have no records of their own.
            if (!member(answer, "records").asList()) continue;
            SCOPED_TRACE(module);
            auto local = rowsOf(module + "Records");
            std::size_t found = 0;
            for (auto& record : itemsOf(member(answer, "records"))) {
                auto id = member(record, "id").textOr("");
                bool isHere = local.contains(id);
                EXPECT_TRUE(isHere || held == Held::some) << id << " is not here";
                if (isHere) expectRecord(module, record, local[id]);
                found += isHere;
            }
            EXPECT_EQ(local.size(), found) << "here is more than the server has";
        }
    }

private:
    std::string tableOfRows(Row& field) {
        if (field["field_type"] == "event_participant") return names_["Participants"] + "Records";
        auto subform = itemsOf(member(json::parse(field["additional_info"]).value_or(Value()), "subform"));
        return subform.size() == 2 ? names_[subform[1].textOr("")] + "Records" : "";
    }

    /// Returns the rows of a table by their id.
    std::map<std::string, Row>& rowsOf(const std::string& table) {
        auto [rows, isNew] = tables_.try_emplace(table);
        if (isNew)
            for (auto& row : file_.select("SELECT * FROM \"" + table + "\"")) {
                auto id = row["ID"];
                EXPECT_TRUE(rows->second.emplace(id, std::move(row)).second) << id << " twice";
            }
        return rows->second;
    }

    void expectRecord(const std::string& module, const Value& record, Row& local) {
        auto id = local["ID"];
        SCOPED_TRACE(id);
        expectFields(module, record, local);
        std::set<std::string> tags;
        for (auto& tag : itemsOf(member(record, "Tag")))
            tags.insert(member(tag, "id").textOr("") + " " + member(tag, "name").textOr(""));
        // A tag of an activity is kept once, for the activity of its kind.
        EXPECT_EQ(tags_[id], tags);
    }

    void expectFields(const std::string& module, const Value& record, Row& local) {
        bool isActivity = module == "Activities", isCheckIn = member(record, "$isCheckIn") == Value("true");
        for (auto& field : fields_[module]) {
            auto value = member(record, field.apiName);
            // Kinds of activities share columns. The title of a check-in holds its place.
            bool isComparable = local.contains(field.column) && field.apiName != "record_id" &&
                                !(isActivity && value.isNull()) && !(isCheckIn && field.apiName == "Note_Title");
            if (!isComparable) continue;
            EXPECT_EQ(local[field.column], localForm(value, field)) << field.apiName;
            // The rows below an activity come with the module of its kind.
            if (!field.rows.empty() && !isActivity) expectRows(local["ID"], field, value);
        }
    }

    void expectRows(const std::string& record, const LocalField& field, const Value& rows) {
        auto& local = rowsOf(field.rows);
        auto module = field.rows.substr(0, field.rows.size() - std::string_view("Records").size());
        for (auto& row : itemsOf(rows)) {
            auto id = member(row, "id").textOr("");
            SCOPED_TRACE(field.apiName + " " + id);
            auto found = local.find(id);
            EXPECT_TRUE(found != local.end()) << "is not here";
            if (found == local.end()) continue;
            EXPECT_EQ(found->second["RECORD_ID"], record);
            expectFields(module, row, found->second);
        }
    }

    // Rows are counted, lists are joined, times are seconds.
    static std::string localForm(const Value& value, const LocalField& field) {
        bool hasRows = !field.rows.empty() || (field.apiName == "Tag" && value.asList());
        if (hasRows && !value.isNull()) return std::to_string(itemsOf(value).size());
        if (value.asList()) {
            std::vector<std::string> texts;
            for (auto& item : *value.asList())
                texts.push_back(item.asMap() ? member(item, "id").textOr("") : item.textOr(""));
            return text::join(texts, ",");
        }
        auto text = value.textOr("");
        if (text.empty() || (field.type != "date" && field.type != "datetime")) return text;
        auto seconds = platform::wire::readDateTime(field.type == "date" ? text + "T00:00:00Z" : text);
        return seconds ? std::to_string(*seconds) : text;
    }

    const EndToEnd& world_;
    EncryptedFile& file_;
    std::map<std::string, std::string> names_;  // by API name
    std::map<std::string, std::vector<LocalField>> fields_;
    std::map<std::string, std::set<std::string>> tags_;  // by record
    std::map<std::string, std::map<std::string, Row>> tables_;
};

}  // namespace

void expectServerRecords(const EndToEnd& world, EncryptedFile& file, Held held,
                         const std::vector<std::string>& modules) {
    ServerRecords(world, file).expectSame(held, modules);
}

}  // namespace tarvo::tests
