#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "platform/Log.h"
#include "tarvobase/metadata/GetLayoutFieldListDM.h"
#include "tarvobase/value_objects/layout/Layout.h"
#include "tarvobase/value_objects/layout/ModuleLayoutInfoPersistanceDelegate.h"

namespace tarvo {

/// Reads the layouts of modules with their names, in the shape `T`. Blocks its caller; may be called from any thread.
template <class T>
class GetLayoutInfoDM final : public platform::Object {
public:
    using LayoutInfoResult = Result<LayoutInfo<T>, MetadataError>;

    GetLayoutInfoDM(std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> moduleLayoutInfoDAO,
                    std::shared_ptr<GetLayoutFieldListDM<T>> getLayoutFieldListDM)
        : moduleLayoutInfoDAO(std::move(moduleLayoutInfoDAO)), getLayoutFieldListDM(std::move(getLayoutFieldListDM)) {}

    const std::shared_ptr<ModuleLayoutInfoPersistanceDelegate> moduleLayoutInfoDAO;
    const std::shared_ptr<GetLayoutFieldListDM<T>> getLayoutFieldListDM;

    /// Returns `notFound` for a module without layouts that can be shown. A mode leaves out the fields that it does not
    /// show.
    LayoutInfoResult getLayoutInfo(const std::string& moduleName, const FieldList& fieldList,
                                   std::optional<DisplayMode> mode) const {
        return std::move(getLayoutInfo({{moduleName, fieldList}}, mode).at(moduleName));
    }

    /// Returns one entry per module of the map. Layouts come in the order in which their names are stored; a layout
    /// without fields is logged and left out.
    std::map<std::string, LayoutInfoResult> getLayoutInfo(const ModuleFieldsMap& moduleFields,
                                                          std::optional<DisplayMode> mode) const {
        auto lists = getLayoutFieldListDM->getLayoutList(moduleFields, mode);
        std::vector<std::string> moduleNames;
        for (auto& [name, list] : lists) moduleNames.push_back(name);
        auto named =
            moduleNames.empty() ? std::nullopt : moduleLayoutInfoDAO->getModuleLayoutInfoByModuleNames(moduleNames);
        std::map<std::string, LayoutInfoResult> infos;
        for (auto& [name, list] : lists) {
            auto layouts = named ? named->find(name) : NamedLayouts::iterator();
            if (!list || !named || layouts == named->end())
                infos.emplace(name, MetadataError::notFound);
            else
                infos.emplace(name, joined(layouts->second, std::move(list).value()));
        }
        return infos;
    }

private:
    using NamedLayouts = std::unordered_map<std::string, ModuleLayoutInfoPersistanceDelegate::Layouts>;

    static LayoutInfo<T> joined(const ModuleLayoutInfoPersistanceDelegate::Layouts& layouts,
                                std::map<std::string, T> lists) {
        LayoutInfo<T> info;
        for (auto& layout : layouts) {
            auto list = lists.extract(layout.layoutID);
            if (list)
                info.orderedLayouts.set(layout.layoutID, Layout<T>(layout, std::move(list.mapped())));
            else
                platform::log(platform::LogLevel::warning, "metadata",
                              "metadadata not found for layout with id `" + layout.layoutID);
        }
        return info;
    }
};

/// Builds a `GetLayoutInfoDM` over the tables of an adapter.
struct GetLayoutInfoDMA {
    static std::shared_ptr<GetLayoutInfoDM<OrderedLayoutFieldList>> getOrderedLayoutInfoDM(
        std::shared_ptr<DatabaseAdapter> databaseAdapter);
};

}  // namespace tarvo
