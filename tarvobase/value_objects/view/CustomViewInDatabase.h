#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/view/CustomViewChoices.h"
#include "tarvobase/value_objects/view/CustomViewPersistanceDelegate.h"

namespace tarvo {

/// The table of custom views. What the user chose for a view lies over each row of the server's.
class CustomViewInDatabase final : public DatabasePersistanceClass, public CustomViewPersistanceDelegate {
public:
    /// Uses the columns that the configuration currently names.
    explicit CustomViewInDatabase(std::shared_ptr<DatabaseAdapter> databaseAdapter);
    CustomViewInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                         const CustomViewDatabaseConstants& databaseConstants);

    bool storeCustomView(const CustomView& customView) override { return storeCustomView(CustomViews{customView}); }
    bool storeCustomView(const CustomViews& customViews) override;
    std::optional<CustomViews> getCustomViews(const std::string& moduleName) override;
    std::optional<CustomViews> getCustomViews(const std::string& moduleName,
                                              const std::vector<CustomViewColumnName>& sortBy) override;
    std::optional<CustomViews> getDefaultCustomViews() override;
    std::optional<CustomView> getCustomView(const std::string& id, const std::string& moduleName) override;
    std::optional<CustomView> getUnreadCustomView(const std::string& moduleName) override;
    std::optional<CustomView> getDefaultCustomView(const std::string& moduleName) override;
    std::optional<CustomView> getAllViewCustomView(const std::string& moduleName) override;
    bool setAsDefaultCustomView(const std::string& cvId, const std::string& moduleName) override;
    bool removeCustomViews(const std::vector<std::string>& moduleList) override;
    bool updateSortfield(const SortField& sortField, const std::string& cvId, const std::string& moduleName) override;

private:
    std::optional<CustomViews> viewsWhere(std::vector<Criteria> criterias,
                                          const std::vector<CustomViewColumnName>& sortBy = {}) const;
    std::optional<CustomView> firstWhere(std::vector<Criteria> criterias) const;
    Criteria oneView(const std::string& cvId, const std::string& moduleName) const;
    bool layChoicesOver(const CustomViews& customViews);
    bool markAsDefault(const std::string& cvId, const std::string& moduleName) const;

    CustomViewDatabaseConstants names_;
    CustomViewChoices choices_;
};

}  // namespace tarvo
