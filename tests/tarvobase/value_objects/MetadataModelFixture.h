#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"
#include "tests/tarvobase/Fixture.h"
#include "tests/tarvobase/MetadataTables.h"

namespace tarvo {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

inline const FieldIdentifier& columnNaming() { return FieldIdentifier::crmColumnNameIdentifier(); }
inline const FieldIdentifier& apiNames() { return FieldIdentifier::fieldAPINameIdentifier(); }

/// The tables of metadata in a real database, and fields to store in them.
class MetadataModelTest : public FoundationTest {
protected:
    void openTables() {
        adapter = openDatabase();
        for (auto& table : metadataTables()) adapter->createTable(table);
        fields = std::make_shared<FieldMetadataInDatabase>("MODULE_SPECIFIC_METADATA", adapter);
    }
    static FieldMetadata named(const std::string& module, const std::string& column, const std::string& apiName,
                               FieldDataType type = FieldDataType::text) {
        return {.fieldID = module + column,
                .fieldAPIName = apiName,
                .moduleName = module,
                .columnCRMName = column,
                .fieldLabel = "label of " + apiName,
                .fieldType = type};
    }
    static std::vector<std::string> columnsOf(const std::vector<FieldMetadata>& list) {
        std::vector<std::string> names;
        for (auto& field : list) names.push_back(field.columnCRMName);
        return names;
    }
    long linesWith(std::string_view piece) const {
        auto lines = logged();
        return std::count_if(lines.begin(), lines.end(),
                             [&](auto& line) { return line.find(piece) != std::string::npos; });
    }

    std::shared_ptr<KelvaDatabasePersistance> adapter;
    std::shared_ptr<FieldMetadataInDatabase> fields;
};

}  // namespace tarvo
