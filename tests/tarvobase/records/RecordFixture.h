#pragma once

#include "platform/Clock.h"
#include "platform/Json.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {

inline Value fromJson(const std::string& text) {
    auto value = json::parse(text);
    EXPECT_TRUE(value) << text;
    return value.value_or(Value());
}

/// Makes a field with the API name "Api_COLUMN", or with the given one.
inline FieldMetadata recordField(const std::string& column, FieldDataType type, const std::string& api = "") {
    FieldMetadata field;
    field.columnCRMName = column;
    field.fieldAPIName = api.empty() ? "Api_" + column : api;
    field.fieldType = type;
    return field;
}

class RecordTest : public FoundationTest {
protected:
    enum class Mode { column, api };
    void use(Mode mode) {
        configuration().fieldIdentifier = mode == Mode::column ? FieldIdentifier::crmColumnNameIdentifier()
                                                               : FieldIdentifier::fieldAPINameIdentifier();
    }
    /// Makes a field list that begins with the field of the id.
    static FieldList fieldsOf(const std::string& module, std::vector<FieldMetadata> fields) {
        fields.insert(fields.begin(), recordField("ID", FieldDataType::text, "id"));
        return FieldList(module, std::move(fields), {});
    }
    /// Parses one record in the server's form.
    static ValueMap parsed(const std::string& record, const std::string& module = "Leads") {
        auto list = fromJson("[" + record + "]");
        auto parsed = ModuleParser::parseRecord(*list.asList(), module);
        return parsed.records.size() == 1 ? parsed.records.front() : ValueMap{{"no record", true}};
    }
};

}  // namespace tarvo
