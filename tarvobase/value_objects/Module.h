#pragma once

#include <array>
#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/ModuleIdentifier.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// How the server came to a module.
enum class ModuleType { custom, subform, picklisttracker, widget, web, linking, default_, mobileApp, none };

template <>
struct EnumCases<ModuleType> {
    static constexpr EnumCase<ModuleType> cases[] = {{ModuleType::custom, "custom"},
                                                     {ModuleType::subform, "subform"},
                                                     {ModuleType::picklisttracker, "picklisttracker"},
                                                     {ModuleType::widget, "widget"},
                                                     {ModuleType::web, "web"},
                                                     {ModuleType::linking, "linking"},
                                                     {ModuleType::default_, "default"},
                                                     {ModuleType::mobileApp, "mobileApp"},
                                                     {ModuleType::none, "none"}};
};

inline constexpr std::array supportedLinkingModule = {ModuleType::custom, ModuleType::subform,
                                                      ModuleType::picklisttracker};

/// One record type of the CRM.
struct Module {
    std::string id;  ///< the server's id, or the module's name where modules have no ids
    std::string moduleName;
    std::string singularName;
    std::string pluralName;
    std::string apiName;
    int position = 0;
    ModuleType type = ModuleType::none;
    std::string tableCreationQuery;  ///< SQL of the record tables; empty until metadata has arrived

    ModuleIdentifier identifier() const { return ModuleIdentifier::fromModuleName(moduleName); }

    static constexpr auto fields() {
        return describe(field("id", &Module::id), field("moduleName", &Module::moduleName),
                        field("singularName", &Module::singularName), field("pluralName", &Module::pluralName),
                        field("apiName", &Module::apiName), field("position", &Module::position),
                        field("type", &Module::type), field("tableCreationQuery", &Module::tableCreationQuery));
    }
    friend bool operator==(const Module&, const Module&) = default;
};

struct ModuleConstants {
    std::string_view TableName = "Modules";
    std::string_view ID = "ID";
    std::string_view ModuleName = "moduleName";
    std::string_view SingularName = "singularName";
    std::string_view PluralName = "pluralName";
    std::string_view APIName = "apiName";
    std::string_view Position = "position";
    std::string_view generatedType = "type";
    std::string_view TableCreationQuery = "tableCreationQuery";

    ValueMap getDictionary(const Module& module) const { return toMap(module, Form::plain); }
    Module getModule(const ValueMap& map) const { return fromMap(map, Form::plain); }

protected:
    ValueMap toMap(const Module& module, Form form) const;
    template <class Source>
    Module fromMap(const Source& source, Form form) const;
};

struct ModuleDatabaseConstants : ModuleConstants {
    constexpr ModuleDatabaseConstants() {
        TableName = "MODULE_DETAILS";
        ID = "id";
        ModuleName = "module_name";
        SingularName = "singular_name";
        PluralName = "plural_name";
        APIName = "api_name";
        Position = "position";
        generatedType = "generated_type";
        TableCreationQuery = "table_creation_query";
    }
    ValueMap getDictionary(const Module& module) const { return toMap(module, Form::table); }
    Module getModule(const Row& row) const { return fromMap(row, Form::table); }
};

/// A member by its plain key, for filters in memory.
InMemoryPropertyValue propertyForKey(const Module& module, std::string_view key);

}  // namespace tarvo
