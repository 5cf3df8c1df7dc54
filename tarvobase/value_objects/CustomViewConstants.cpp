#include "tarvobase/value_objects/CustomViewConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/CustomView.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

namespace {

using V = CustomView;
using ViewNames = CustomViewConstants;

// Where columns are shared, the last member that is written stays: the sort by name, not the one by number.
const auto viewForm = form<V, ViewNames>(
    member(&V::viewID, &ViewNames::ViewID), member(&V::viewType, &ViewNames::ViewType),
    member(&V::viewName, &ViewNames::ViewName), member(&V::viewDisplayName, &ViewNames::ViewDisplayName),
    member(&V::moduleName, &ViewNames::ModuleName), member(&V::isOfflineSupported, &ViewNames::IsOfflineSupported),
    member(&V::isDefault, &ViewNames::IsDefault), member(&V::offlineQuery, &ViewNames::OfflineQuery),
    member(&V::offlineQueryReplaceInfo, &ViewNames::OfflineQueryReplaceInfo),
    member(&V::lastModifiedTime, &ViewNames::LastModifiedTime),
    member(&V::isUserCustomView, &ViewNames::IsUserCustomView), member(&V::listFields, &ViewNames::ListFields),
    member(&V::mode, &ViewNames::Mode), member(&V::sectionID, &ViewNames::SectionID),
    member(&V::defaultSortBy, &ViewNames::DefaultSortBy, -1),
    member(&V::defaultSortOrder, &ViewNames::DefaultSortOrder, -1),
    member(&V::selectedColumnsQuery, &ViewNames::SelectedColumnsQuery), member(&V::viewOrder, &ViewNames::ViewOrder),
    member(&V::sectionDisplayName, &ViewNames::SectionDisplayName), member(&V::sortBy, &ViewNames::SortBy),
    member(&V::sortOrder, &ViewNames::SortOrder));

}  // namespace

ValueMap CustomViewConstants::getDictionary(const CustomView& customView) const {
    return viewForm.toMap(customView, *this, Form::plain);
}
CustomView CustomViewConstants::getValue(const ValueMap& map) const { return viewForm.read(map, *this, Form::plain); }

ValueMap CustomViewDatabaseConstants::getDictionary(const CustomView& customView) const {
    auto row = viewForm.toMap(customView, *this, Form::table);
    row.remove("");
    return row;
}
CustomView CustomViewDatabaseConstants::getValue(const Row& row) const {
    return viewForm.read(row, *this, Form::table);
}

const CustomViewDatabaseConstants& CommonConfigration::customViewDBConstants() const {
    static constexpr CustomViewDatabaseConstants ownCriteria;
    static constexpr CustomViewWithOfflineQueryDatabaseConstants serversCriteria;
    if (serverCVCriteria.get()) return serversCriteria;
    return ownCriteria;
}

}  // namespace tarvo
