#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/GetLayoutInfoDM.h"
#include "tarvobase/metadata/GetModuleInfoDataManager.h"

namespace tarvo {

/// Reads modules as `GetModuleInfoDataManager` does, with their layouts as ordered fields. Blocks its caller; may be
/// called from any thread.
class GetLayoutModuleInfoDM final : public platform::Object {
public:
    using Info = LayoutModuleInfo<OrderedLayoutFieldList>;
    /// Holds one entry per requested name: `notFound` if it is not a module, or has no fields or no layouts.
    using Infos = std::map<std::string, Result<Info, MetadataError>>;

    GetLayoutModuleInfoDM(std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM,
                          std::shared_ptr<GetLayoutInfoDM<OrderedLayoutFieldList>> getLayoutInfoDM)
        : getModuleInfoDM(std::move(getModuleInfoDM)), getLayoutInfoDM(std::move(getLayoutInfoDM)) {}
    /// Uses the database that is open at this moment.
    static std::shared_ptr<GetLayoutModuleInfoDM> make();

    const std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM;
    const std::shared_ptr<GetLayoutInfoDM<OrderedLayoutFieldList>> getLayoutInfoDM;

    /// A mode leaves out of the layouts the fields that it does not show.
    Infos getModuleInfosByModuleNames(const std::vector<std::string>& moduleNames,
                                      std::optional<DisplayMode> mode) const {
        return withLayouts(getModuleInfoDM->getModuleInfosByModuleNames(moduleNames), mode);
    }
    Infos getModuleInfosByModuleApiNames(const std::vector<std::string>& moduleApiNames,
                                         std::optional<DisplayMode> mode) const {
        return withLayouts(getModuleInfoDM->getModuleInfosByModuleApiNames(moduleApiNames), mode);
    }

private:
    Infos withLayouts(GetModuleInfoDataManager::ModuleInfos infos, std::optional<DisplayMode> mode) const;
};

}  // namespace tarvo
