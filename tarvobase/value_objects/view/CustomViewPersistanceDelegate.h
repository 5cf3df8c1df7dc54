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

/// The store of custom views. A read is absent when the store fails, or for one view also when there is none. From any
/// thread.
class CustomViewPersistanceDelegate : public virtual platform::Object {
public:
    using CustomViews = std::vector<CustomView>;

    /// Views of the same keys are replaced.
    virtual void storeCustomView(const CustomView& customView) = 0;
    virtual void storeCustomView(const CustomViews& customViews) = 0;
    /// In no particular order.
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName) = 0;
    /// Ascending by each of the columns.
    virtual std::optional<CustomViews> getCustomViews(const std::string& moduleName,
                                                      const std::vector<CustomViewColumnName>& sortBy) = 0;
    /// Of all modules.
    virtual std::optional<CustomViews> getDefaultCustomViews() = 0;
    virtual std::optional<CustomView> getCustomView(const std::string& id, const std::string& moduleName) = 0;
    /// The default view that shows what the user has not read.
    virtual std::optional<CustomView> getUnreadCustomView(const std::string& moduleName) = 0;
    virtual std::optional<CustomView> getDefaultCustomView(const std::string& moduleName) = 0;
    /// The view that shows every record: of leads the one of that name, of other modules one without a condition.
    virtual std::optional<CustomView> getAllViewCustomView(const std::string& moduleName) = 0;
    /// Takes the mark from the view that has it and gives it to another.
    virtual void setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) = 0;
    virtual void removeCustomViews(const std::vector<std::string>& moduleList) = 0;
    virtual void updateSortfield(const SortField& sortField, const std::string& cvId,
                                 const std::string& moduleName) = 0;
};

}  // namespace tarvo
