#pragma once

#include <map>
#include <string>
#include <vector>

#include "tarvobase/value_objects/view/CustomViewConstants.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

/// A list filter that is saved on the server, with what is needed to run it on the local tables.
struct CustomView final : FilterProtocol {
    std::string viewID;
    std::string viewType;
    std::string viewName;
    std::string viewDisplayName;
    bool isDefault = false;
    std::string offlineQuery;             ///< the condition with numbered holes; empty for the view of all records
    std::string offlineQueryReplaceInfo;  ///< what fills the holes
    std::string lastModifiedTime;
    bool isUserCustomView = false;
    std::string listFields;  ///< API names of the columns shown, joined by ","
    std::string mode;
    std::string sectionID;
    int defaultSortBy = -1;
    int defaultSortOrder = -1;
    std::string selectedColumnsQuery;
    std::string viewOrder;
    std::string sectionDisplayName;

    const std::string& filterId() const override { return viewID; }
    void setFilterId(std::string id) override { viewID = std::move(id); }
    const std::string& filterName() const override { return viewName; }
    void setFilterName(std::string name) override { viewName = std::move(name); }

    /// Returns whether both views list the same records in the same order, as far as the client can see.
    bool hasSameList(const CustomView& other) const {
        return offlineQuery == other.offlineQuery && offlineQueryReplaceInfo == other.offlineQueryReplaceInfo &&
               sortBy == other.sortBy && sortOrder == other.sortOrder;
    }

    static constexpr auto fields() {
        using V = CustomView;
        using Names = CustomViewConstants;
        // Where two members share a column, the one that is written last stays: the sort by name, not the one by
        // number.
        return describe(field("viewID", &V::viewID, &Names::ViewID), field("viewType", &V::viewType, &Names::ViewType),
                        field("viewName", &V::viewName, &Names::ViewName),
                        field("viewDisplayName", &V::viewDisplayName, &Names::ViewDisplayName),
                        field("moduleName", &V::moduleName, &Names::ModuleName),
                        field("isOfflineSupported", &V::isOfflineSupported, &Names::IsOfflineSupported),
                        field("isDefault", &V::isDefault, &Names::IsDefault),
                        field("offlineQuery", &V::offlineQuery, &Names::OfflineQuery),
                        field("offlineQueryReplaceInfo", &V::offlineQueryReplaceInfo, &Names::OfflineQueryReplaceInfo),
                        field("lastModifiedTime", &V::lastModifiedTime, &Names::LastModifiedTime),
                        field("isUserCustomView", &V::isUserCustomView, &Names::IsUserCustomView),
                        field("listFields", &V::listFields, &Names::ListFields), field("mode", &V::mode, &Names::Mode),
                        field("sectionID", &V::sectionID, &Names::SectionID),
                        field("defaultSortBy", &V::defaultSortBy, &Names::DefaultSortBy),
                        field("defaultSortOrder", &V::defaultSortOrder, &Names::DefaultSortOrder),
                        field("selectedColumnsQuery", &V::selectedColumnsQuery, &Names::SelectedColumnsQuery),
                        field("viewOrder", &V::viewOrder, &Names::ViewOrder),
                        field("sectionDisplayName", &V::sectionDisplayName, &Names::SectionDisplayName),
                        field("sortBy", &V::sortBy, &Names::SortBy),
                        field("sortOrder", &V::sortOrder, &Names::SortOrder));
    }
    friend bool operator==(const CustomView&, const CustomView&) = default;
};

/// Views by id.
struct CustomViewList {
    CustomViewList() = default;
    /// If two views have the same id, the last one stays.
    explicit CustomViewList(std::vector<CustomView> cvArray);

    std::map<std::string, CustomView> cvList;

    /// Returns the first view, by id, that is marked as default, or null if none is. The pointer is valid as long as
    /// the list.
    const CustomView* default_() const;
    /// Returns null if there is no such view.
    const CustomView* operator[](const std::string& viewID) const;
};

}  // namespace tarvo
