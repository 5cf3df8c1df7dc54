#pragma once

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/module/ModuleRelatedListPersistanceDelegate.h"

namespace tarvo {

/// The table of related lists.
class ModuleRelatedListInDatabase final : public StaticDatabasePersistanceClass<ModuleRelatedListDatabaseConstants>,
                                          public ModuleRelatedListPersistanceDelegate {
public:
    using StaticDatabasePersistanceClass::StaticDatabasePersistanceClass;

    bool storeModuleRelatedList(const RelatedList& list) override { return storeModuleRelatedList(RelatedLists{list}); }
    bool storeModuleRelatedList(const std::vector<RelatedList>& lists) override;
    bool setLookupColumnByRealtedListID(const std::string& realtedListID, const std::string& lookupColumn) override;
    bool setLookupColumnByRelatedModuleName(const std::string& relatedModuleName,
                                            const std::string& lookupColumn) override;
    std::optional<RelatedLists> getModulesRelatedToModule(const std::string& moduleName) override;
    std::optional<RelatedLists> getModuleRelatedWith(const std::string& moduleName,
                                                     const std::string& relatedModuleName) override;

private:
    bool setLookupColumn(std::string_view column, const std::string& value, const std::string& lookupColumn) const;
    std::optional<RelatedLists> listsOf(const FetchQuery& query) const;

    static constexpr ModuleRelatedListDatabaseConstants constants_{};
};

}  // namespace tarvo
