#include "tarvobase/metadata/GetLayoutMetadataDataManager.h"

#include <algorithm>

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

namespace {

using Manager = GetLayoutMetadataDataManager;

/// Collects headers and fields in one list.
struct Lines {
    std::vector<LinearLayoutMetadataItemType> result;
    void openSection(const LayoutMetadata& first) {
        result.push_back(LinearLayoutMetadataItemType::header(first.sectionSequence, first.sectionName));
    }
    void add(LayoutMetadata row) { result.push_back(LinearLayoutMetadataItemType::item(std::move(row))); }
};

/// Collects fields by the sequence of their section.
struct Sections {
    std::map<int, std::vector<LayoutMetadata>> result;
    void openSection(const LayoutMetadata& first) { result[first.sectionSequence]; }
    void add(LayoutMetadata row) { result[row.sectionSequence].push_back(std::move(row)); }
};

/// Collects the rows of every layout with a `List`. Sections are distinguished by their sequence alone.
template <class List>
auto collected(std::optional<Manager::LayoutRows> layouts) {
    std::optional<std::map<std::string, decltype(List::result)>> shapes;
    if (!layouts) return shapes;
    shapes.emplace();
    for (auto& [id, rows] : *layouts) {
        List list;
        walkLayout(std::move(rows), &LayoutMetadata::sectionSequence, list);
        shapes->emplace(id, std::move(list.result));
    }
    return shapes;
}

bool isUserField(const LayoutMetadata& row) {
    return row.fieldType == FieldDataType::ownerlookup || row.fieldType == FieldDataType::userLookup;
}

}  // namespace

std::shared_ptr<GetLayoutMetadataDataManager> GetLayoutMetadataDataManager::make() {
    auto stores = Stores::current();
    return std::make_shared<GetLayoutMetadataDataManager>(
        GetOrderedLayoutFieldListDMA::getOrderedLayoutFieldListDM(stores.databaseAdapter()), stores.users());
}

std::optional<Manager::LayoutRows> GetLayoutMetadataDataManager::getLayoutMetadata(
    const std::string& moduleName, const FieldList& fieldList, std::optional<DisplayMode> mode) const {
    auto layouts =
        std::move(getLayoutFieldListDM->getLayoutMetadata({{moduleName, fieldList}}, mode).at(moduleName)).success();
    if (layouts) fillUsers(*layouts);
    return layouts;
}

std::optional<Manager::LinearLayouts> GetLayoutMetadataDataManager::getLinearMetadata(
    const std::string& moduleName, const FieldList& fieldList, std::optional<DisplayMode> mode) const {
    return collected<Lines>(getLayoutMetadata(moduleName, fieldList, mode));
}

std::optional<Manager::SectionedLayouts> GetLayoutMetadataDataManager::getSectionedMetadata(
    const std::string& moduleName, const FieldList& fieldList, std::optional<DisplayMode> mode) const {
    return collected<Sections>(getLayoutMetadata(moduleName, fieldList, mode));
}

// All such fields share one list, which is read only if some field needs it.
void GetLayoutMetadataDataManager::fillUsers(LayoutRows& layouts) const {
    std::optional<LayoutMetadata::LookupData::OwnerLookup> users;
    for (auto& [id, rows] : layouts)
        for (auto& row : rows) {
            if (!isUserField(row)) continue;
            if (!users) {
                auto active = usersPersistance->getActiveUsers();
                users.emplace();
                if (active) users->users = std::make_shared<const std::vector<User>>(*std::move(active));
            }
            row.addData = LayoutMetadata::LookupData{*users};
        }
}

}  // namespace tarvo
