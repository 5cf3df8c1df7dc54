#include "tarvobase/value_objects/layout/ModuleLayoutInfoInDatabase.h"

namespace tarvo {

bool ModuleLayoutInfoInDatabase::storeModuleLayoutInfo(const std::vector<ModuleLayoutInfo>& layouts) {
    return table().store(rowsOf(layouts, constants_));
}

std::optional<ModuleLayoutInfoPersistanceDelegate::Layouts> ModuleLayoutInfoInDatabase::getModuleLayoutInfoByModuleName(
    const std::string& moduleName) {
    return layoutsWhere(columnIs(constants_.ModuleName, moduleName));
}

std::optional<ModuleLayoutInfo> ModuleLayoutInfoInDatabase::getModuleLayoutInfoForModuleName(
    const std::string& moduleName, const std::string& layoutName) {
    return firstOf(layoutsWhere(
        Criteria::and_({columnIs(constants_.ModuleName, moduleName), columnIs(constants_.LayoutName, layoutName)})));
}

std::optional<std::unordered_map<std::string, ModuleLayoutInfoPersistanceDelegate::Layouts>>
ModuleLayoutInfoInDatabase::getModuleLayoutInfoByModuleNames(const std::vector<std::string>& moduleNames) {
    return groupedBy(&ModuleLayoutInfo::moduleName, layoutsWhere(columnIn(constants_.ModuleName, moduleNames)));
}

std::optional<ModuleLayoutInfo> ModuleLayoutInfoInDatabase::getModuleLayoutInfoByLayoutId(const std::string& layoutId) {
    return firstOf(layoutsWhere(columnIs(constants_.LayoutID, layoutId)));
}

std::optional<ModuleLayoutInfoPersistanceDelegate::Layouts> ModuleLayoutInfoInDatabase::layoutsWhere(
    Criteria criteria) const {
    return table().valuesOf(table().fetch(inStoredOrder(FetchQuery(tableName, std::move(criteria)))),
                            [](const Row& row) { return constants_.getValue(row); });
}

}  // namespace tarvo
