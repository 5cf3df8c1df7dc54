#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/view/CustomView.h"

namespace tarvo {

/// Columns that a list of views may be sorted by.
enum class CustomViewColumnName {
    ViewID,
    ViewType,
    ViewName,
    ViewDisplayName,
    ModuleName,
    IsOfflineSupported,
    IsDefault,
    OfflineQuery,
    OfflineQueryReplaceInfo,
    LastModifiedTime,
    IsUserCustomView,
    ListFields,
    Mode,
    SectionID,
    SelectedColumnsQuery,
    ViewOrder,
    SectionDisplayName,
    SortBy,
    SortOrder
};

/// The store of custom views. A read returns nullopt if the store cannot be read; a read of one view also if there is
/// no such view. Writes return whether they were stored. Any thread may use it.
class CustomViewPersistanceDelegate : public virtual platform::Object {
public:
    using CustomViews = std::vector<CustomView>;

    /// Stores the views. A view replaces the stored one with the same keys.
    virtual bool storeCustomView(const CustomView& customView) = 0;
    virtual bool storeCustomView(const CustomViews& customViews) = 0;
    /// Returns the views in the order in which they were stored.
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName) = 0;
    /// Returns the views in ascending order of these columns.
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName,
                                                      const std::vector<CustomViewColumnName>& sortBy) = 0;
    /// Returns the views of all modules.
    virtual std::optional<CustomViews> getDefaultCustomViews() = 0;
    virtual std::optional<CustomView> getCustomView(const std::string& id, const std::string& moduleName) = 0;
    /// Returns the default view that shows the records which the user has not read.
    virtual std::optional<CustomView> getUnreadCustomView(const std::string& moduleName) = 0;
    virtual std::optional<CustomView> getDefaultCustomView(const std::string& moduleName) = 0;
    /// Returns the view that shows every record: for leads the one named "All Open Leads", for other modules one
    /// without a condition.
    virtual std::optional<CustomView> getAllViewCustomView(const std::string& moduleName) = 0;
    /// Moves the default mark of a module's views to this view, as one commit. An unknown view takes the mark from
    /// nobody: the call then returns false.
    virtual bool setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) = 0;
    virtual bool removeCustomViews(const std::vector<std::string>& moduleList) = 0;
    virtual bool updateSortfield(const SortField& sortField, const std::string& cvId,
                                 const std::string& moduleName) = 0;
};

}  // namespace tarvo
