#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/module/RelatedList.h"

namespace tarvo {

/// The store of related lists. From any thread.
class ModuleRelatedListPersistanceDelegate : public virtual platform::Object {
public:
    using RelatedLists = std::vector<RelatedList>;

    virtual void storeModuleRelatedList(const RelatedList& list) = 0;
    virtual void storeModuleRelatedList(const std::vector<RelatedList>& lists) = 0;
    /// Of the list with this id, under every parent.
    virtual void setLookupColumnByRealtedListID(const std::string& realtedListID, const std::string& lookupColumn) = 0;
    /// Of every list of the module's records.
    virtual void setLookupColumnByRelatedModuleName(const std::string& relatedModuleName,
                                                    const std::string& lookupColumn) = 0;
    /// In the order of the parent's detail. Absent when there is none.
    virtual std::optional<RelatedLists> getModulesRelatedToModule(const std::string& moduleName) = 0;
    /// Empty when there is none, absent without an answer.
    virtual std::optional<RelatedLists> getModuleRelatedWith(const std::string& moduleName,
                                                             const std::string& relatedModuleName) = 0;
};

}  // namespace tarvo
