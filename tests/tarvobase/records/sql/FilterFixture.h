#pragma once

#include <string>
#include <vector>

#include "platform/Clock.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/value_objects/field/FieldList.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tests/tarvobase/records/RecordFixture.h"

namespace tarvo {

/// A record table of leads in a real database, with the fields of the module in both namings. Its columns hold texts,
/// as the server declares them.
class FilterTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        adapter = openDatabase();
        use(FieldIdentifier::fieldAPINameIdentifier());
    }

    void use(const FieldIdentifier& naming) {
        configuration().fieldIdentifier = naming;
        fields = FieldList("Leads", metadata(), picklists, naming);
        adapter->dropTable("LeadsRecords");
        std::vector<std::string> columns;
        for (auto& field : metadata()) {
            auto& name = field.fieldIdentifier(naming);
            auto type = isDate(field.fieldType) ? " INTEGER" : " TEXT COLLATE NOCASE";
            columns.push_back('"' + name + '"' + (name == naming.constant->id ? " TEXT UNIQUE" : type));
            if (field.isLookUpField()) columns.push_back('"' + name + "_LOOKUP\" TEXT COLLATE NOCASE");
        }
        adapter->createTable("CREATE TABLE LeadsRecords (" + text::join(columns, ", ") + ")");
    }

    std::string idColumn() { return std::string(configuration().fieldIdentifier.get().constant->id); }
    /// Replaces all rows: ids "1", "2" and so on, with these values in a column.
    void store(const std::string& column, const ValueList& values) {
        adapter->deleteAllObjects("LeadsRecords");
        for (std::size_t i = 0; i < values.size(); ++i)
            adapter->insertInto("LeadsRecords", {{idColumn(), std::to_string(i + 1)}, {column, values[i]}});
    }
    /// Returns the ids of the rows that a condition selects, joined by spaces; "failed" if SQLite refuses it.
    std::string idsWhere(const std::string& condition, std::vector<SortDescriptor> order = {},
                         std::vector<std::string> columns = {}) {
        FetchQuery query("LeadsRecords");
        if (!condition.empty()) query.filter(Criteria::custom(condition));
        query.sortBy = std::move(order);
        if (query.sortBy.empty()) query.sortBy.push_back(SortDescriptor({.colName = idColumn(), .numeric = true}));
        if (!columns.empty()) columns.push_back(idColumn());
        query.columns = std::move(columns);
        auto rows = adapter->fetchObjects(query);
        if (!rows) return "failed";
        std::vector<std::string> ids;
        for (auto row : *rows) ids.emplace_back(*row.find(idColumn())->asText());
        return text::join(ids, " ");
    }

    static std::vector<FieldMetadata> metadata() {
        auto field = [](const char* api, const char* column, FieldDataType type) {
            return recordField(column, type, api);
        };
        using T = FieldDataType;
        return {field("id", "ID", T::bigInt),
                field("Company", "COMPANY", T::text),
                field("Status", "STATUS", T::picklist),
                field("Amount", "AMOUNT", T::currency),
                field("Exchange_Rate", "EXCHANGERATE", T::decimal),
                field("Converted", "CONVERTED", T::boolean),
                field("Created_Time", "CREATEDTIME", T::dateTime),
                field("Account_Name", "ACCOUNTID", T::lookup),
                field("Owner", "SMOWNERID", T::ownerlookup),
                field("First_Name", "FIRSTNAME", T::text),
                field("Last_Name", "LASTNAME", T::text),
                field("Full_Name", "FULLNAME", T::text),
                field("$status", "SE_STATUS", T::text)};
    }

    static std::vector<PicklistMetadata> picklistOf(const std::vector<std::string>& values) {
        std::vector<PicklistMetadata> rows;
        for (auto& value : values) {
            auto& row = rows.emplace_back();
            row.fieldActualValue = value, row.position = static_cast<int>(rows.size());
            row.fieldAPIName = "Status", row.crmColumnName = "STATUS", row.moduleName = "Leads";
        }
        return rows;
    }

    std::shared_ptr<KelvaDatabasePersistance> adapter;
    std::vector<PicklistMetadata> picklists;
    FieldList fields;
};

}  // namespace tarvo
