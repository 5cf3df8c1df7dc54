#include "bridge/forms/RecordForms.h"

#include "tarvobase/list_view/GetCustomViewsDataManager.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/sql/FilterToWhereConverter.h"

namespace tarvo::bridge {

Reading JsonForm<ColumnFilter>::withoutCondition(const ColumnFilter& filter) {
    if (FilterToWhereConverter::getWhereStatement(filter)) return {};
    auto comparator = std::visit([](auto type) { return std::string(caseName(type)); }, filter.filterType);
    return Misread{{}, "the filter " + comparator + " of " + filter.column + " gives no condition with these inputs"};
}

std::optional<std::string> JsonRecordQuery::complete() {
    auto stored = Stores::current().modules()->getModuleByModuleName(moduleName);
    if (!stored) return "request.moduleName: there is no module \"" + moduleName + "\"";
    module = *stored;
    if (!cvId) return std::nullopt;
    customView = GetCustomViewsDataManager::current()->getCustomView(*cvId, moduleName);
    if (!customView) return "request.cvId: " + moduleName + " has no such view";
    return std::nullopt;
}

}  // namespace tarvo::bridge
