#pragma once

#include <map>
#include <string>
#include <vector>

#include "tarvobase/value_objects/CustomViewConstants.h"
#include "tarvobase/value_objects/FilterProtocol.h"

namespace tarvo {

/// A saved list filter of the server, with what it takes to run it on the local tables.
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

    static constexpr auto fields() {
        using V = CustomView;
        return describe(
            field("viewID", &V::viewID), field("viewType", &V::viewType), field("viewName", &V::viewName),
            field("viewDisplayName", &V::viewDisplayName), field("moduleName", &V::moduleName),
            field("isOfflineSupported", &V::isOfflineSupported), field("isDefault", &V::isDefault),
            field("offlineQuery", &V::offlineQuery), field("offlineQueryReplaceInfo", &V::offlineQueryReplaceInfo),
            field("lastModifiedTime", &V::lastModifiedTime), field("isUserCustomView", &V::isUserCustomView),
            field("listFields", &V::listFields), field("mode", &V::mode), field("sectionID", &V::sectionID),
            field("defaultSortBy", &V::defaultSortBy), field("defaultSortOrder", &V::defaultSortOrder),
            field("selectedColumnsQuery", &V::selectedColumnsQuery), field("viewOrder", &V::viewOrder),
            field("sectionDisplayName", &V::sectionDisplayName), field("sortBy", &V::sortBy),
            field("sortOrder", &V::sortOrder));
    }
    friend bool operator==(const CustomView&, const CustomView&) = default;
};

/// Views by their ids.
struct CustomViewList {
    CustomViewList() = default;
    /// Of views with one id the last stays.
    explicit CustomViewList(std::vector<CustomView> cvArray);

    std::map<std::string, CustomView> cvList;

    /// The first view, by id, that is marked as default; null when none is. Valid as long as the list.
    const CustomView* default_() const;
    /// Null when there is no such view.
    const CustomView* operator[](const std::string& viewID) const;
};

}  // namespace tarvo
