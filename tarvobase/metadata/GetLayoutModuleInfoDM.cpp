#include "tarvobase/metadata/GetLayoutModuleInfoDM.h"

#include "tarvobase/configuration/Scope.h"

namespace tarvo {

std::shared_ptr<GetLayoutModuleInfoDM> GetLayoutModuleInfoDM::make() {
    return std::make_shared<GetLayoutModuleInfoDM>(
        GetModuleInfoAssembler::getModuleInfoDM(),
        GetLayoutInfoDMA::getOrderedLayoutInfoDM(Scope::current().databaseAdapter));
}

GetLayoutModuleInfoDM::Infos GetLayoutModuleInfoDM::withLayouts(GetModuleInfoDataManager::ModuleInfos infos,
                                                                std::optional<DisplayMode> mode) const {
    ModuleFieldsMap moduleFields;
    for (auto& [name, info] : infos)
        if (info) moduleFields.emplace(info->moduleName(), info->metadata);
    auto layouts = getLayoutInfoDM->getLayoutInfo(moduleFields, mode);

    Infos whole;
    for (auto& [name, info] : infos) {
        auto layoutInfo = info ? &layouts.at(info->moduleName()) : nullptr;
        if (!layoutInfo || !*layoutInfo) {
            whole.emplace(name, MetadataError::notFound);
            continue;
        }
        Info joined;
        static_cast<ModuleInfo&>(joined) = std::move(info).value();
        joined.layoutInfo = std::move(*layoutInfo).value();
        whole.emplace(name, std::move(joined));
    }
    return whole;
}

}  // namespace tarvo
