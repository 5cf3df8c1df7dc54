#include "tarvobase/value_objects/view/CustomViewInDatabase.h"

#include <set>

#include "tarvobase/configuration/Variant.h"

namespace tarvo {

namespace {

constexpr std::string_view yes = "true", no = "false";
/// Leads can be converted, and their view of all records leaves the converted ones out, so it has a condition.
constexpr std::string_view leads = "Leads", allOpenLeads = "All Open Leads";

using ViewNames = CustomViewConstants;
using Column = CustomViewColumnName;

std::string_view ViewNames::*nameOf(Column column) {
    static constexpr std::pair<Column, std::string_view ViewNames::*> columns[] = {
        {Column::ViewID, &ViewNames::ViewID},
        {Column::ViewType, &ViewNames::ViewType},
        {Column::ViewName, &ViewNames::ViewName},
        {Column::ViewDisplayName, &ViewNames::ViewDisplayName},
        {Column::ModuleName, &ViewNames::ModuleName},
        {Column::IsOfflineSupported, &ViewNames::IsOfflineSupported},
        {Column::IsDefault, &ViewNames::IsDefault},
        {Column::OfflineQuery, &ViewNames::OfflineQuery},
        {Column::OfflineQueryReplaceInfo, &ViewNames::OfflineQueryReplaceInfo},
        {Column::LastModifiedTime, &ViewNames::LastModifiedTime},
        {Column::IsUserCustomView, &ViewNames::IsUserCustomView},
        {Column::ListFields, &ViewNames::ListFields},
        {Column::Mode, &ViewNames::Mode},
        {Column::SectionID, &ViewNames::SectionID},
        {Column::SelectedColumnsQuery, &ViewNames::SelectedColumnsQuery},
        {Column::ViewOrder, &ViewNames::ViewOrder},
        {Column::SectionDisplayName, &ViewNames::SectionDisplayName},
        {Column::SortBy, &ViewNames::SortBy},
        {Column::SortOrder, &ViewNames::SortOrder}};
    for (auto& [known, name] : columns)
        if (known == column) return name;
    return &ViewNames::ViewID;
}

}  // namespace

CustomViewInDatabase::CustomViewInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : CustomViewInDatabase(std::string(CustomViewDatabaseConstants().TableName), std::move(databaseAdapter),
                           customViewDBConstants(variant::hasServerCriteria())) {}

CustomViewInDatabase::CustomViewInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                                           const CustomViewDatabaseConstants& databaseConstants)
    : DatabasePersistanceClass(std::move(tableName), std::move(databaseAdapter)),
      names_(databaseConstants),
      choices_(this->databaseAdapter) {}

bool CustomViewInDatabase::storeCustomView(const CustomViews& customViews) {
    return databaseAdapter && databaseAdapter->joinTransaction("store views", [&] {
        return table().store(rowsOf(customViews, names_)) && layChoicesOver(customViews);
    });
}

/// A choice for a view that is not here waits for it.
bool CustomViewInDatabase::layChoicesOver(const CustomViews& customViews) {
    std::set<std::string> modules;
    for (auto& view : customViews) modules.insert(view.moduleName);
    auto choices = choices_.of({modules.begin(), modules.end()});
    if (!choices) return false;
    for (auto& choice : *choices) {
        if (!getCustomView(choice.viewID, choice.moduleName)) continue;
        if (choice.isDefault && !markAsDefault(choice.viewID, choice.moduleName)) return false;
        if (choice.sortBy && choice.sortOrder &&
            !table().update(
                {{std::string(names_.SortBy), *choice.sortBy}, {std::string(names_.SortOrder), *choice.sortOrder}},
                oneView(choice.viewID, choice.moduleName)))
            return false;
    }
    return true;
}

/// Takes the mark from all other views of the module: the server may have marked several.
bool CustomViewInDatabase::markAsDefault(const std::string& cvId, const std::string& moduleName) const {
    auto setMark = [&](std::string_view mark, const Criteria& where) {
        return table().update({{std::string(names_.IsDefault), mark}}, where);
    };
    return setMark(no, columnIs(names_.ModuleName, moduleName)) && setMark(yes, oneView(cvId, moduleName));
}

std::optional<CustomViewInDatabase::CustomViews> CustomViewInDatabase::getCustomViews(const std::string& moduleName) {
    return viewsWhere({columnIs(names_.ModuleName, moduleName)});
}
std::optional<CustomViewInDatabase::CustomViews> CustomViewInDatabase::getCustomViews(
    const std::string& moduleName, const std::vector<CustomViewColumnName>& sortBy) {
    return viewsWhere({columnIs(names_.ModuleName, moduleName)}, sortBy);
}
std::optional<CustomViewInDatabase::CustomViews> CustomViewInDatabase::getDefaultCustomViews() {
    return viewsWhere({columnIs(names_.IsDefault, std::string(yes))});
}

std::optional<CustomView> CustomViewInDatabase::getCustomView(const std::string& id, const std::string& moduleName) {
    return firstWhere({oneView(id, moduleName)});
}
std::optional<CustomView> CustomViewInDatabase::getUnreadCustomView(const std::string& moduleName) {
    return firstWhere({columnIs(names_.ModuleName, moduleName), columnIs(names_.IsDefault, std::string(yes)),
                       columnIs(names_.ViewName, "Unread " + moduleName)});
}
std::optional<CustomView> CustomViewInDatabase::getDefaultCustomView(const std::string& moduleName) {
    return firstWhere({columnIs(names_.ModuleName, moduleName), columnIs(names_.IsDefault, std::string(yes))});
}
std::optional<CustomView> CustomViewInDatabase::getAllViewCustomView(const std::string& moduleName) {
    auto mark =
        moduleName == leads ? columnIs(names_.ViewName, std::string(allOpenLeads)) : columnIs(names_.OfflineQuery, "");
    return firstWhere({columnIs(names_.ModuleName, moduleName), mark});
}

bool CustomViewInDatabase::setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) {
    return databaseAdapter && databaseAdapter->transaction("set the default view", [&] {
        return getCustomView(cvId, moduleName) && markAsDefault(cvId, moduleName) &&
               choices_.setDefault(cvId, moduleName);
    });
}

bool CustomViewInDatabase::removeCustomViews(const std::vector<std::string>& moduleList) {
    return moduleList.empty() || table().deleteObjects(columnIn(names_.ModuleName, moduleList));
}

bool CustomViewInDatabase::updateSortfield(const SortField& sortField, const std::string& cvId,
                                           const std::string& moduleName) {
    auto order = sortField.isAscending ? SortOrder::ascending : SortOrder::descending;
    return databaseAdapter && databaseAdapter->joinTransaction("set the order of a view", [&] {
        return table().update(
                   {{std::string(names_.SortBy), sortField.column}, {std::string(names_.SortOrder), rawText(order)}},
                   oneView(cvId, moduleName)) &&
               choices_.setOrder(sortField, cvId, moduleName);
    });
}

std::optional<CustomViewInDatabase::CustomViews> CustomViewInDatabase::viewsWhere(
    std::vector<Criteria> criterias, const std::vector<CustomViewColumnName>& sortBy) const {
    auto query = inStoredOrder(FetchQuery(tableName));
    if (!sortBy.empty()) query.sortBy.clear();
    for (auto& criteria : criterias) query.filter(std::move(criteria));
    for (auto column : sortBy) {
        auto name = names_.*nameOf(column);
        if (!name.empty()) query.sortBy.emplace_back(SortDescriptor::Parts{.colName = std::string(name)});
    }
    return table().valuesOf(table().fetch(query), [this](const Row& row) { return names_.getValue(row); });
}

std::optional<CustomView> CustomViewInDatabase::firstWhere(std::vector<Criteria> criterias) const {
    return firstOf(viewsWhere(std::move(criterias)));
}

Criteria CustomViewInDatabase::oneView(const std::string& cvId, const std::string& moduleName) const {
    return Criteria::and_({columnIs(names_.ViewID, cvId), columnIs(names_.ModuleName, moduleName)});
}

}  // namespace tarvo
