#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

inline const FieldIdentifier& columnNaming() { return FieldIdentifier::crmColumnNameIdentifier(); }
inline const FieldIdentifier& apiNames() { return FieldIdentifier::fieldAPINameIdentifier(); }

/// The tables of metadata in a real database, and fields to store in them.
class MetadataModelTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        createTables(metadataTables());
        fields = std::make_shared<FieldMetadataInDatabase>("MODULE_SPECIFIC_METADATA", database);
    }
    static FieldMetadata named(const std::string& module, const std::string& column, const std::string& apiName,
                               FieldDataType type = FieldDataType::text) {
        return {module + column, apiName, module, column, "label of " + apiName, type};
    }
    static std::vector<std::string> columnsOf(const std::vector<FieldMetadata>& list) {
        std::vector<std::string> names;
        for (auto& field : list) names.push_back(field.columnCRMName);
        return names;
    }

    std::shared_ptr<FieldMetadataInDatabase> fields;
};

}  // namespace tarvo
