#include "tarvobase/value_objects/field/PicklistMetadataInDatabase.h"

#include <algorithm>

namespace tarvo {

namespace {

// Sorts indexes instead of the rows, because rows are large and an account has thousands of them.
void sortByPosition(std::vector<PicklistMetadata>& rows) {
    std::vector<std::pair<int, std::size_t>> places;
    places.reserve(rows.size());
    for (auto& row : rows) places.emplace_back(row.position, places.size());
    std::sort(places.begin(), places.end());
    std::vector<PicklistMetadata> sorted;
    sorted.reserve(rows.size());
    for (auto& [position, place] : places) sorted.push_back(std::move(rows[place]));
    rows = std::move(sorted);
}

}  // namespace

bool PicklistMetadataInDatabase::storePicklistMetadata(const std::vector<PicklistMetadata>& picklists) {
    return table().store(rowsOf(picklists, constants_));
}

std::optional<PicklistMetadataPersistanceDelegate::Picklist> PicklistMetadataInDatabase::getPicklist(
    const std::string& moduleName, const std::optional<std::string>& layoutId, const std::vector<Criteria>& criteria) {
    std::vector<Criteria> criterias{columnIs(constants_.ModuleName, moduleName)};
    if (layoutId) criterias.push_back(columnIs(constants_.LayoutID, *layoutId));
    criterias.insert(criterias.end(), criteria.begin(), criteria.end());
    return picklistWhere(std::move(criterias));
}

std::optional<PicklistMetadataPersistanceDelegate::Picklist>
PicklistMetadataInDatabase::getPicklistMetadataForModuleWith(const std::string& moduleName) {
    return getPicklist(moduleName, std::nullopt, {});
}
std::optional<PicklistMetadataPersistanceDelegate::Picklist>
PicklistMetadataInDatabase::getPicklistMetadataForModuleWith(const std::string& moduleName,
                                                             const std::string& layoutID) {
    return getPicklist(moduleName, layoutID, {});
}

std::optional<std::unordered_map<std::string, PicklistMetadataPersistanceDelegate::Picklist>>
PicklistMetadataInDatabase::getPicklistMetadataByModuleNames(const std::vector<std::string>& moduleNames) {
    return groupedBy(&PicklistMetadata::moduleName, picklistWhere({columnIn(constants_.ModuleName, moduleNames)}));
}

std::optional<PicklistMetadataPersistanceDelegate::Picklist> PicklistMetadataInDatabase::getPicklistMetadataByFieldID(
    const std::string& fieldID) {
    return picklistWhere({columnIs(constants_.FieldID, fieldID)});
}

std::optional<PicklistMetadataPersistanceDelegate::Picklist>
PicklistMetadataInDatabase::getPicklistMetadataByCrmColumnList(const std::string& moduleName,
                                                               const std::vector<std::string>& crmColumnList) {
    return picklistWhere(
        {columnIs(constants_.ModuleName, moduleName), columnIn(constants_.CrmColumnName, crmColumnList)});
}

std::optional<PicklistMetadataPersistanceDelegate::Picklist> PicklistMetadataInDatabase::picklistWhere(
    std::vector<Criteria> criterias) const {
    FetchQuery query(table().tableName());
    query.criterias = std::move(criterias);
    auto picklist = table().readableOf(table().fetch(query), [](const Row& row) { return constants_.getValue(row); });
    // SQL cannot sort here: the column is text, and rows with the same position keep the order of the table.
    if (picklist) sortByPosition(*picklist);
    return picklist;
}

}  // namespace tarvo
