#include "tarvobase/value_objects/Module.h"

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

const auto moduleForm = form<Module, ModuleConstants>(
    member(&Module::moduleName, &ModuleConstants::ModuleName),
    member(&Module::singularName, &ModuleConstants::SingularName),
    member(&Module::pluralName, &ModuleConstants::PluralName), member(&Module::apiName, &ModuleConstants::APIName),
    member(&Module::position, &ModuleConstants::Position),
    member(&Module::type, &ModuleConstants::generatedType, ModuleType::none),
    member(&Module::tableCreationQuery, &ModuleConstants::TableCreationQuery, {}, Written::tableOnly));

bool isModuleIDSupported() { return CommonConfigration::sharedInstance().isModuleIDSupported.get(); }

}  // namespace

ValueMap ModuleConstants::toMap(const Module& module, Form form) const {
    auto map = moduleForm.toMap(module, *this, form);
    if (isModuleIDSupported()) map.set(ID, module.id);
    if (module.type == ModuleType::none) map.remove(generatedType);
    return map;
}

template <class Source>
Module ModuleConstants::fromMap(const Source& source, Form form) const {
    auto module = moduleForm.read(source, *this, form);
    auto id = isModuleIDSupported() ? lookUp(source, ID) : std::nullopt;
    module.id =
        isModuleIDSupported() ? (id ? MemberCodec<std::string>::read(*id, form).value_or("") : "") : module.moduleName;
    return module;
}

template Module ModuleConstants::fromMap(const ValueMap& source, Form form) const;
template Module ModuleConstants::fromMap(const Row& source, Form form) const;

InMemoryPropertyValue propertyForKey(const Module& module, std::string_view key) {
    return propertyOf(moduleForm, module, key, ModuleConstants());
}

}  // namespace tarvo
