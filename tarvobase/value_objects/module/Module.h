#pragma once

#include <array>
#include <string>

#include "tarvobase/storage/StoredNames.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

struct Module;

struct ModuleConstants : NamesInForm {
    std::string_view TableName = of("Modules", "MODULE_DETAILS");
    std::string_view ID = of("ID", "id");
    std::string_view ModuleName = of("moduleName", "module_name");
    std::string_view SingularName = of("singularName", "singular_name");
    std::string_view PluralName = of("pluralName", "plural_name");
    std::string_view APIName = of("apiName", "api_name");
    std::string_view Position = of("position");
    std::string_view generatedType = of("type", "generated_type");
    std::string_view TableCreationQuery = of("tableCreationQuery", "table_creation_query");

    ValueMap getDictionary(const Module& module) const;
    Module getValue(const ValueMap& map) const;
    Module getValue(const Row& row) const;
};
struct ModuleDatabaseConstants : TableTwin<ModuleConstants> {};

/// How a module came to exist on the server.
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

    using InMemoryKeys = ModuleConstants;
    static constexpr auto fields() {
        using V = Module;
        using Names = ModuleConstants;
        return describe(
            field("id", &V::id), field("moduleName", &V::moduleName, &Names::ModuleName),
            field("singularName", &V::singularName, &Names::SingularName),
            field("pluralName", &V::pluralName, &Names::PluralName), field("apiName", &V::apiName, &Names::APIName),
            field("position", &V::position, &Names::Position), field("type", &V::type, &Names::generatedType),
            field("tableCreationQuery", &V::tableCreationQuery, &Names::TableCreationQuery).tableOnly());
    }
    friend bool operator==(const Module&, const Module&) = default;
};

}  // namespace tarvo
