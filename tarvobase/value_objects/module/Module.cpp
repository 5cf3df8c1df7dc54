#include "tarvobase/value_objects/module/Module.h"

#include "tarvobase/configuration/Variant.h"
#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

namespace {

template <class Source>
Module moduleOf(const Source& source, const ModuleConstants& names) {
    auto module = StoredForm<Module>::read(source, names);
    if (!variant::hasModuleIDs()) {
        module.id = module.moduleName;
    } else if (auto id = lookUp(source, names.ID)) {
        module.id = MemberCodec<std::string>::read(*id, names.form).value_or("");
    }
    return module;
}

}  // namespace

ValueMap ModuleConstants::getDictionary(const Module& module) const {
    auto map = StoredForm<Module>::toMap(module, *this);
    if (variant::hasModuleIDs()) map.set(ID, module.id);
    if (module.type == ModuleType::none) map.remove(generatedType);
    return map;
}
Module ModuleConstants::getValue(const ValueMap& map) const { return moduleOf(map, *this); }
Module ModuleConstants::getValue(const Row& row) const { return moduleOf(row, *this); }

}  // namespace tarvo
