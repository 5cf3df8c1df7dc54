#include "tests/tarvobase/MetadataFixture.h"

#include <algorithm>

#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"
#include "tarvobase/value_objects/field/PicklistMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/LayoutMetadataInDatabase.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoInDatabase.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tarvobase/value_objects/module/ModulePermissionsInDatabase.h"
#include "tarvobase/value_objects/module/SettingsInDatabase.h"
#include "tests/tarvobase/MetadataTables.h"

namespace tarvo {

namespace {

std::string capitals(std::string name) {
    std::erase(name, '_');
    std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::toupper(c); });
    return name;
}

template <class Constants>
std::string tableOf() {
    return std::string(Constants().TableName);
}

}  // namespace

void MetadataTest::SetUp() {
    FoundationTest::SetUp();
    adapter_ = std::make_shared<CountingAdapter>(openDatabase());
    configuration().databaseAdapter = adapter_;
    for (auto& table : metadataTables()) adapter_->createTable(table);
    use(Naming::column);
}

void MetadataTest::use(Naming naming) {
    configuration().fieldIdentifier = naming == Naming::column ? FieldIdentifier::crmColumnNameIdentifier()
                                                               : FieldIdentifier::fieldAPINameIdentifier();
}

std::string MetadataTest::identifier(const std::string& name) const { return field("", name).fieldIdentifier(); }

FieldMetadata MetadataTest::field(const std::string& module, const std::string& name, FieldDataType type) {
    FieldMetadata field{module + name, name, module, capitals(name), "Label of " + name, type};
    field.visible = true;
    field.mode = "7";
    return field;
}

FieldMetadata MetadataTest::subform(const std::string& module, const std::string& name, Value target) {
    auto made = field(module, name, FieldDataType::subform);
    made.displayPrefs.set("subform", std::move(target));
    return made;
}

LayoutFieldData MetadataTest::place(const FieldMetadata& field, const std::string& layout, const std::string& section,
                                    int sequence, int position) {
    LayoutFieldData place{layout,           field.fieldID, field.fieldAPIName, field.columnCRMName,
                          field.moduleName, section,       section + " label"};
    place.sectionSequence = sequence;
    place.fieldPosition = position;
    return place;
}

void MetadataTest::store(const std::vector<Module>& modules) {
    ModuleInDatabase(tableOf<ModuleDatabaseConstants>(), adapter_).storeModules(modules);
}
void MetadataTest::store(const std::vector<FieldMetadata>& fields) {
    FieldMetadataInDatabase(tableOf<FieldMetadataDatabaseConstants>(), adapter_).storeFieldMetadata(fields);
}
void MetadataTest::store(const std::vector<LayoutFieldData>& places) {
    LayoutMetadataInDatabase(adapter_).storeLayoutMetadata(places);
}
void MetadataTest::store(const std::vector<Settings>& settings) {
    SettingsInDatabase(tableOf<SettingsDatabaseConstants>(), adapter_).storeSettings(settings);
}

void MetadataTest::storePicklist(const FieldMetadata& field, const std::string& layout,
                                 const std::vector<std::string>& values) {
    std::vector<PicklistMetadata> rows;
    for (auto& value : values)
        rows.push_back({value, value, field.fieldID, field.fieldAPIName, field.columnCRMName, field.moduleName, layout,
                        "", static_cast<int>(rows.size())});
    PicklistMetadataInDatabase(adapter_).storePicklistMetadata(rows);
}

void MetadataTest::storeLayout(const std::string& module, const std::string& layout, bool isDefault) {
    ModuleLayoutInfoInDatabase(tableOf<ModuleLayoutInfoDatabaseConstants>(), adapter_)
        .storeModuleLayoutInfo({module, layout, "Layout " + layout, true, isDefault});
}

void MetadataTest::storePermission(const std::string& module, const std::string& key, bool value) {
    ModulePermissionsInDatabase(adapter_).storeModulePermission({module, module + "_Api", key, value});
}

void MetadataTest::storeModule(const std::string& name, const std::vector<FieldMetadata>& fields) {
    Module module;
    module.moduleName = name;
    module.apiName = name + "_Api";
    store(std::vector{module});
    if (!fields.empty()) store(fields);
}

}  // namespace tarvo
