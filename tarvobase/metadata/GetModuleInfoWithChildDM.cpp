#include "tarvobase/metadata/GetModuleInfoWithChildDM.h"

#include "platform/Text.h"

namespace tarvo {

std::optional<std::vector<std::string>> childApiNames(const FieldList& fields) {
    auto subforms = fields.getFields(FieldDataType::subform);
    if (subforms.empty()) return std::nullopt;
    std::vector<std::string> names;
    for (auto field : subforms) {
        auto info = field->getSubformModuleInfo();
        if (info && !text::contains(names, info->apiName)) names.push_back(info->apiName);
    }
    return names;
}

GetModuleInfoWithChildDM::Infos GetModuleInfoWithChildDM::getModuleInfos(
    const std::vector<std::string>& moduleNames) const {
    return withChildren<ModuleInfoWithChild>(getModuleInfoDM->getModuleInfosByModuleNames(moduleNames),
                                             [&](const std::vector<std::string>& apiNames) {
                                                 return getModuleInfoDM->getModuleInfosByModuleApiNames(apiNames);
                                             });
}

GetLayoutModuleInfoWithChildDM::Infos GetLayoutModuleInfoWithChildDM::getModuleInfos(
    const std::vector<std::string>& moduleNames, std::optional<DisplayMode> mode) const {
    return withChildren<Info>(getLayoutModuleInfoDM->getModuleInfosByModuleNames(moduleNames, mode),
                              [&](const std::vector<std::string>& apiNames) {
                                  return getLayoutModuleInfoDM->getModuleInfosByModuleApiNames(apiNames, mode);
                              });
}

std::shared_ptr<GetModuleInfoWithChildDM> GetModuleInfoWithChildDMA::getModuleInfoWithChildDM(
    std::shared_ptr<DatabaseAdapter> databaseAdapter,
    std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter) {
    return std::make_shared<GetModuleInfoWithChildDM>(
        GetModuleInfoDMA::getModuleInfoDM(std::move(databaseAdapter), std::move(inMemoryDatabaseAdapter)));
}

std::shared_ptr<GetModuleInfoWithChildDM> GetModuleInfoWithChildAssembler::getModuleInfoWithChildDM() {
    return std::make_shared<GetModuleInfoWithChildDM>(GetModuleInfoAssembler::getModuleInfoDM());
}

}  // namespace tarvo
