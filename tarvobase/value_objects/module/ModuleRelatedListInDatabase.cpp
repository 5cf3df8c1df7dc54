#include "tarvobase/value_objects/module/ModuleRelatedListInDatabase.h"

namespace tarvo {

bool ModuleRelatedListInDatabase::storeModuleRelatedList(const std::vector<RelatedList>& lists) {
    return table().store(rowsOf(lists, constants_));
}

bool ModuleRelatedListInDatabase::setLookupColumnByRealtedListID(const std::string& realtedListID,
                                                                 const std::string& lookupColumn) {
    return setLookupColumn(constants_.ListID, realtedListID, lookupColumn);
}
bool ModuleRelatedListInDatabase::setLookupColumnByRelatedModuleName(const std::string& relatedModuleName,
                                                                     const std::string& lookupColumn) {
    return setLookupColumn(constants_.RelatedModuleName, relatedModuleName, lookupColumn);
}

std::optional<ModuleRelatedListPersistanceDelegate::RelatedLists>
ModuleRelatedListInDatabase::getModulesRelatedToModule(const std::string& moduleName) {
    FetchQuery query(table().tableName(), columnIs(constants_.ModuleName, moduleName));
    query.sortBy = {SortDescriptor({.colName = std::string(constants_.RelatedOrder), .numeric = true})};
    auto lists = listsOf(query);
    return lists && !lists->empty() ? std::move(lists) : std::nullopt;
}

std::optional<ModuleRelatedListPersistanceDelegate::RelatedLists> ModuleRelatedListInDatabase::getModuleRelatedWith(
    const std::string& moduleName, const std::string& relatedModuleName) {
    return listsOf(
        FetchQuery(table().tableName(), Criteria::and_({columnIs(constants_.ModuleName, moduleName),
                                                        columnIs(constants_.RelatedModuleName, relatedModuleName)})));
}

bool ModuleRelatedListInDatabase::setLookupColumn(std::string_view column, const std::string& value,
                                                  const std::string& lookupColumn) const {
    return table().update({{std::string(constants_.LookupColumn), lookupColumn}}, columnIs(column, value));
}

std::optional<ModuleRelatedListPersistanceDelegate::RelatedLists> ModuleRelatedListInDatabase::listsOf(
    const FetchQuery& query) const {
    return table().valuesOf(table().fetch(query), [](const Row& row) { return constants_.getValue(row); });
}

}  // namespace tarvo
