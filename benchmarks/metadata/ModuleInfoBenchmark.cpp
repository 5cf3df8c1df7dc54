#include <array>

#include "benchmarks/Support.h"
#include "benchmarks/kelva/HandWritten.h"
#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/metadata/GetModuleInfoDataManager.h"
#include "tarvobase/value_objects/field/FieldMetadataInDatabase.h"
#include "tarvobase/value_objects/field/PicklistMetadataInDatabase.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tarvobase/value_objects/module/ModulePermissionsInDatabase.h"
#include "tarvobase/value_objects/module/SettingsInDatabase.h"

// Reads the infos of an account's modules without memory stores. The floor reads the same rows with hand-written code.
namespace tarvo::benchmarks {

namespace {

const std::string key(32, 'k'), salt(16, 's');
constexpr int moduleCount = 40, fieldCount = 100;

constexpr std::array<const char*, 5> tables = {
    "CREATE TABLE MODULE_DETAILS (id, module_name UNIQUE, singular_name, plural_name, api_name, position, "
    "generated_type, table_creation_query)",
    "CREATE TABLE PERMISSIONS (module_name, module_api_name, permission_key, permission_value)",
    "CREATE TABLE MODULE_SPECIFIC_METADATA (_id INTEGER PRIMARY KEY AUTOINCREMENT, field_id, field_api_name, "
    "module_name, crm_col_name, field_label, "
    "field_type, max_length, is_read_only, is_custom_field, is_unique, is_quick_create, is_primary_key, "
    "is_mproxy_metadata, lookup_module_api, related_list_id, visible, mode, additional_info)",
    "CREATE TABLE PICKLIST_METADATA (field_actual_value, field_display_value, field_id, field_api_name, crm_col_name, "
    "module_name, layout_id, field_map, position)",
    "CREATE TABLE APP_SETTINGS (module, settings_key, default_settings, custom_settings, is_default)"};
constexpr std::array<const char*, 5> tableNames = {"MODULE_DETAILS", "PERMISSIONS", "MODULE_SPECIFIC_METADATA",
                                                   "PICKLIST_METADATA", "APP_SETTINGS"};

std::string moduleName(int number) { return "CustomModule" + std::to_string(number); }

std::vector<Module> modules() {
    std::vector<Module> all;
    for (int i = 0; i < moduleCount; ++i) {
        Module module;
        module.moduleName = module.singularName = module.pluralName = module.apiName = moduleName(i);
        module.position = i;
        all.push_back(std::move(module));
    }
    return all;
}

/// Returns fields of which every tenth has choices.
bool hasPicklist(int field) { return field % 10 == 0; }

std::vector<FieldMetadata> fields() {
    std::vector<FieldMetadata> all;
    for (int module = 0; module < moduleCount; ++module)
        for (int number = 0; number < fieldCount; ++number) {
            FieldMetadata field;
            field.moduleName = moduleName(module);
            field.fieldID = std::to_string(4'000'000'000LL + module * 1000 + number);
            field.fieldAPIName = "Field_Of_The_Module_" + std::to_string(number);
            field.columnCRMName = "FIELDOFTHEMODULE" + std::to_string(number);
            field.fieldLabel = "Field of the module " + std::to_string(number);
            field.fieldType = hasPicklist(number) ? FieldDataType::picklist : FieldDataType::text;
            field.maxLength = 120;
            field.mode = "7";
            if (number % 20 == 1) field.displayPrefs = {{"decimal_place", 2}};
            all.push_back(std::move(field));
        }
    return all;
}

std::vector<PicklistMetadata> picklists(const std::vector<FieldMetadata>& fields) {
    std::vector<PicklistMetadata> all;
    for (auto& field : fields) {
        if (field.fieldType != FieldDataType::picklist) continue;
        for (int value = 0; value < 8; ++value) {
            PicklistMetadata row;
            row.fieldActualValue = row.fieldOptionalValue = "Choice " + std::to_string(value);
            row.fieldID = field.fieldID;
            row.fieldAPIName = field.fieldAPIName;
            row.crmColumnName = field.columnCRMName;
            row.moduleName = field.moduleName;
            row.layoutID = "1";
            row.position = value;
            all.push_back(std::move(row));
        }
    }
    return all;
}

std::vector<ModulePermission> permissions() {
    std::vector<ModulePermission> all;
    for (int i = 0; i < moduleCount; ++i)
        for (auto& key : EnumCases<PermissionKeys>::cases)
            all.push_back({moduleName(i), moduleName(i), std::string(key.rawText), true});
    return all;
}

std::vector<Settings> settings() {
    std::vector<Settings> all;
    for (int i = 0; i < moduleCount; ++i)
        for (auto key : {SettingName::display, SettingName::search, SettingName::primarySort, SettingName::groupBy})
            all.push_back({moduleName(i), key, "FIELDOFTHEMODULE1,asc", "FIELDOFTHEMODULE1,asc", true});
    return all;
}

struct Sides {
    Folder folder;
    std::shared_ptr<KelvaDatabasePersistance> adapter =
        std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(folder.path + "/ours.db"));
    kelva::benchmarks::HandWritten hand{folder.path + "/hand.db", "x'" + text::hex(key) + text::hex(salt) + "'"};

    Sides() {
        platform::setLogSink([](std::string_view) {});
        if (!adapter->registerDB("a passphrase").ok()) std::abort();
        CommonConfigration::sharedInstance().databaseAdapter = adapter;
        CommonConfigration::sharedInstance().fieldIdentifier = FieldIdentifier::crmColumnNameIdentifier();
        for (auto table : tables) {
            adapter->createTable(table);
            hand.run(table);
        }
        fill();
        for (auto table : tableNames) copy(table);
    }
    ~Sides() {
        CommonConfigration::sharedInstance().databaseAdapter = nullptr;
        adapter->deregisterDB();
    }

private:
    void fill() {
        ModuleInDatabase("MODULE_DETAILS", adapter).storeModules(modules());
        FieldMetadataInDatabase("MODULE_SPECIFIC_METADATA", adapter).storeFieldMetadata(fields());
        PicklistMetadataInDatabase(adapter).storePicklistMetadata(picklists(fields()));
        ModulePermissionsInDatabase(adapter).storeModulePermissions(permissions());
        SettingsInDatabase("APP_SETTINGS", adapter).storeSettings(settings());
    }
    void copy(const std::string& table) {
        auto rows = *adapter->fetchAllObjects(table);
        Table texts;
        for (auto row : rows) {
            texts.emplace_back();
            for (std::size_t i = 0; i < rows.columns().size(); ++i)
                texts.back().push_back(row.cell(i).copy().toText().value_or(""));
        }
        hand.insert(table, rows.columns().names(), texts);
    }
};

void moduleInfos(benchmark::State& state) {
    Sides sides;
    auto manager = GetModuleInfoDMA::getModuleInfoDM(sides.adapter, nullptr);
    std::vector<std::string> names;
    for (auto& module : modules()) names.push_back(module.moduleName);
    Comparison comparison(state);
    std::size_t found = 0;
    for (auto _ : state)
        comparison.round(
            [&] {
                auto infos = manager->getModuleInfosByModuleNames(names);
                found = infos.at(moduleName(moduleCount - 1))->metadata.orderedFields().count();
                benchmark::DoNotOptimize(infos);
            },
            [&] {
                for (auto table : tableNames)
                    benchmark::DoNotOptimize(sides.hand.fetch((std::string("SELECT * FROM ") + table).c_str()));
            });
    comparison.finish(moduleCount * fieldCount);
    if (found != fieldCount) state.SkipWithError("fields are missing");
}

BENCHMARK(moduleInfos)->UseManualTime()->Unit(benchmark::kMillisecond);

}  // namespace

}  // namespace tarvo::benchmarks
