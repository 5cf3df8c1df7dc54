#include "tarvobase/value_objects/CustomViewConstants.h"

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/value_objects/CustomView.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

namespace {

using V = CustomView;
using Names = CustomViewConstants;

// Where columns are shared, the last member that is written stays: the sort by name, not the one by number.
const auto viewForm = form<V, Names>(
    member(&V::viewID, &Names::ViewID), member(&V::viewType, &Names::ViewType), member(&V::viewName, &Names::ViewName),
    member(&V::viewDisplayName, &Names::ViewDisplayName), member(&V::moduleName, &Names::ModuleName),
    member(&V::isOfflineSupported, &Names::IsOfflineSupported), member(&V::isDefault, &Names::IsDefault),
    member(&V::offlineQuery, &Names::OfflineQuery),
    member(&V::offlineQueryReplaceInfo, &Names::OfflineQueryReplaceInfo),
    member(&V::lastModifiedTime, &Names::LastModifiedTime), member(&V::isUserCustomView, &Names::IsUserCustomView),
    member(&V::listFields, &Names::ListFields), member(&V::mode, &Names::Mode),
    member(&V::sectionID, &Names::SectionID), member(&V::defaultSortBy, &Names::DefaultSortBy, -1),
    member(&V::defaultSortOrder, &Names::DefaultSortOrder, -1),
    member(&V::selectedColumnsQuery, &Names::SelectedColumnsQuery), member(&V::viewOrder, &Names::ViewOrder),
    member(&V::sectionDisplayName, &Names::SectionDisplayName), member(&V::sortBy, &Names::SortBy),
    member(&V::sortOrder, &Names::SortOrder));

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
