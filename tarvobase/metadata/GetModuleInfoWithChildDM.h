#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tarvobase/metadata/GetLayoutModuleInfoDM.h"

namespace tarvo {

/// Returns the API names of the modules behind the subform fields, each once. A field that does not name its module is
/// skipped. Returns nullopt if there are no subform fields.
std::optional<std::vector<std::string>> childApiNames(const FieldList& fields);

/// Joins each info with the infos of its subforms' modules. The children of all infos are read at once:
/// `ask(apiNames)` returns them by API name. A child that is not found is left out.
template <class WithChild, class Info, class Ask>
std::map<std::string, Result<WithChild, MetadataError>> withChildren(
    std::map<std::string, Result<Info, MetadataError>> infos, Ask ask) {
    std::vector<std::string> asked;
    for (auto& [name, info] : infos)
        if (auto children = info ? childApiNames(info->metadata) : std::nullopt)
            asked.insert(asked.end(), children->begin(), children->end());
    std::map<std::string, Result<Info, MetadataError>> answers;
    if (!asked.empty()) answers = ask(asked);

    auto join = [&](Info&& info) {
        WithChild whole;
        static_cast<Info&>(whole) = std::move(info);
        auto apiNames = childApiNames(whole.metadata);
        if (!apiNames) return whole;
        std::vector<Info> children;
        for (auto& apiName : *apiNames)
            if (auto child = answers.find(apiName); child != answers.end() && child->second)
                children.push_back(*child->second);
        whole.childModules.emplace(std::move(children));
        return whole;
    };
    std::map<std::string, Result<WithChild, MetadataError>> joined;
    for (auto& [name, info] : infos) joined.emplace(name, std::move(info).map(join));
    return joined;
}

/// Reads modules with the modules of their subforms. Blocks its caller; may be called from any thread.
class GetModuleInfoWithChildDM final : public platform::Object {
public:
    /// Holds one entry per requested name: `notFound` if it is not a module or has no fields.
    using Infos = std::map<std::string, Result<ModuleInfoWithChild, MetadataError>>;

    explicit GetModuleInfoWithChildDM(std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM)
        : getModuleInfoDM(std::move(getModuleInfoDM)) {}

    const std::shared_ptr<GetModuleInfoDataManager> getModuleInfoDM;

    Infos getModuleInfos(const std::vector<std::string>& moduleNames) const;
};

/// Reads modules with the modules of their subforms and with layouts. Blocks its caller; may be called from any thread.
class GetLayoutModuleInfoWithChildDM final : public platform::Object {
public:
    using Info = LayoutModuleInfoWithChild<OrderedLayoutFieldList>;
    /// Holds one entry per requested name: `notFound` if it is not a module, or has no fields or no layouts.
    using Infos = std::map<std::string, Result<Info, MetadataError>>;

    explicit GetLayoutModuleInfoWithChildDM(std::shared_ptr<GetLayoutModuleInfoDM> getLayoutModuleInfoDM)
        : getLayoutModuleInfoDM(std::move(getLayoutModuleInfoDM)) {}

    const std::shared_ptr<GetLayoutModuleInfoDM> getLayoutModuleInfoDM;

    /// A mode leaves the fields that it does not show out of all layouts, those of the children included.
    Infos getModuleInfos(const std::vector<std::string>& moduleNames, std::optional<DisplayMode> mode) const;
};

/// Builds a `GetModuleInfoWithChildDM` over the tables of an adapter, with memory in front of modules and settings.
struct GetModuleInfoWithChildDMA {
    static std::shared_ptr<GetModuleInfoWithChildDM> getModuleInfoWithChildDM(
        std::shared_ptr<DatabaseAdapter> databaseAdapter,
        std::shared_ptr<InMemoryDatabaseAdapter> inMemoryDatabaseAdapter);
};
struct GetModuleInfoWithChildAssembler {
    /// Uses the database that is open at this moment.
    static std::shared_ptr<GetModuleInfoWithChildDM> getModuleInfoWithChildDM();
};

}  // namespace tarvo
