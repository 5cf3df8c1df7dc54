#pragma once

#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/records/sql/RecordInDatabase.h"
#include "tarvobase/records/wire/RecordParser.h"
#include "tarvobase/records/wire/WireRecords.h"
#include "tests/tarvobase/MetadataFixture.h"

namespace tarvo {

/// An answer with a page of records.
inline platform::Data answerOf(const std::string& records) {
    return platform::Data(R"({"response":{"result":[{"info":{"module":"Leads"},"data":)" + records + "}]}}");
}
inline std::vector<ValueMap> dictionariesOf(const std::string& records) {
    return RecordParser<>().parse(answerOf(records)).value().result[0].value().data.value();
}
inline WireRecords wireOf(const std::string& records) {
    return WireRecordsParser::parse(answerOf(records)).value().result[0].value().data.value();
}

/// Returns the ids of records, joined by spaces; "failed" for a read that failed.
inline std::string idsOf(const RecordPersistanceDelegate::Records& records) {
    if (!records) return "failed";
    std::vector<std::string> ids;
    for (auto& record : *records) ids.push_back(record.recordId());
    return text::join(ids, " ");
}

/// Record tables in the account's database, with the metadata of their modules.
class RecordTableTest : public MetadataTest {
protected:
    /// Stores fields, the id first, and creates the module's table with their columns except for a field "Gone". `rule`
    /// is appended to the table's definition.
    void makeModule(const std::string& module, std::vector<FieldMetadata> fields, const std::string& rule = "",
                    const std::string& idType = "TEXT") {
        fields.insert(fields.begin(), field(module, "id"));
        storeModule(module, fields);
        std::vector<std::string> columns;
        for (auto& each : fields) {
            auto name = each.fieldIdentifier();
            if (each.fieldAPIName == "Gone") continue;
            columns.push_back("\"" + name + "\"" + (columns.empty() ? " " + idType + " NOT NULL UNIQUE" : ""));
            if (each.isLookUpField()) columns.push_back("\"" + name + "_LOOKUP\"");
        }
        adapter().createTable("CREATE TABLE \"" + module + "Records\" (" + text::join(columns, ", ") + rule + ")");
        records = RecordInDatabase::make(configuration().databaseAdapter.get());
    }
    /// Makes a module Leads with fields of these names and types.
    void makeLeads(const std::vector<std::pair<std::string, FieldDataType>>& names, const std::string& rule = "",
                   const std::string& idType = "TEXT") {
        std::vector<FieldMetadata> fields;
        for (auto& [name, type] : names) fields.push_back(field("Leads", name, type));
        makeModule("Leads", fields, rule, idType);
    }
    /// Returns the cells of some columns as JSON, in the order of the rows: cells joined by ",", rows by ";".
    std::string cells(const std::string& table, const std::vector<std::string>& columns) {
        auto rows = adapter().fetchObjects("SELECT " + text::join(columns, ", ") + " FROM " + table, std::nullopt);
        if (!rows) return "failed";
        std::vector<std::string> lines;
        for (auto row : *rows) {
            std::vector<std::string> line;
            for (std::size_t i = 0; i < columns.size(); ++i)
                line.push_back(json::write(row.cell(i).copy()).value_or("?"));
            lines.push_back(text::join(line, ","));
        }
        return text::join(lines, ";");
    }
    std::string idColumn() const { return identifier("id"); }
    /// Returns the columns for which a lead has a value.
    ValueMap row(const std::string& id) {
        auto record = records->fetchRecord("Leads", id);
        return record ? record->getDictionary() : ValueMap{{"no record", true}};
    }

    /// Stores rows of leads as they stand.
    void fillLeads(const std::vector<ValueMap>& rows) {
        records->saveRecordDictionary(rows, ModuleIdentifier::Case::leads);
    }
    /// Returns the ids of the leads whose column has this value.
    std::string where(const std::string& column, const Value& value) {
        return idsOf(records->fetchRecords("Leads", ValueMap{{column, value}}, std::nullopt));
    }

    std::shared_ptr<RecordInDatabase> records;
};

}  // namespace tarvo
