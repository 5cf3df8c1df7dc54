#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/module/RelatedList.h"

namespace tarvo {

/// The store of related lists. Writes return whether they were stored. Any thread may use it.
class ModuleRelatedListPersistanceDelegate : public virtual platform::Object {
public:
    using RelatedLists = std::vector<RelatedList>;

    virtual bool storeModuleRelatedList(const RelatedList& list) = 0;
    virtual bool storeModuleRelatedList(const std::vector<RelatedList>& lists) = 0;
    /// Sets the column of the list with this id, under every parent.
    virtual bool setLookupColumnByRealtedListID(const std::string& realtedListID, const std::string& lookupColumn) = 0;
    /// Sets the column of every list that shows records of this module.
    virtual bool setLookupColumnByRelatedModuleName(const std::string& relatedModuleName,
                                                    const std::string& lookupColumn) = 0;
    /// Returns the lists in the order of the parent's detail, or nullopt if there are none.
    virtual std::optional<RelatedLists> getModulesRelatedToModule(const std::string& moduleName) = 0;
    /// Returns an empty list if there is none, and nullopt if the store cannot be read.
    virtual std::optional<RelatedLists> getModuleRelatedWith(const std::string& moduleName,
                                                             const std::string& relatedModuleName) = 0;
};

}  // namespace tarvo
