#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/init_process/steps/InitCustomViewNS.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/FilterRecordMapPersistanceDelegate.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

struct ParsedPermissionInfo;

/// Is notified on the main queue how the sync of a module's views ended.
class CVSyncDatamanagerDelegate : public virtual platform::Object {
public:
    virtual void CVSyncDidComplete(const ModuleIdentifier& for_) = 0;
    /// The module or its views could not be had, or the database did not store them. The stored views stay.
    virtual void CVSyncFailed(const ModuleIdentifier& for_) = 0;
};

/// Exchanges the stored views of a module for those of the server. The exchange is one commit: a reader sees the old
/// views or the new ones. The user's own default view and orders stay. A list whose view is gone, or has another
/// condition or order, is emptied, so that its next page is its first one.
///
/// Syncs of one module never overlap: a call during a sync is served by one more after it. The four modules of
/// activities, whose views come together, count as one. Held by `shared_ptr`. May be called from any thread.
class CVSyncDatamanager final : public virtual platform::Object {
public:
    struct Collaborators {
        Scope scope;
        std::shared_ptr<InitCustomViewNSP> networkService;
        std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;
        std::shared_ptr<CustomViewPersistanceDelegate> cvPersistance;
        std::shared_ptr<FilterRecordMapPersistanceDelegate> cvRecordMapPersistance;
        UserDefaultsUtil userDefaultsUtil;
    };
    explicit CVSyncDatamanager(Collaborators collaborators) : collaborators_(std::move(collaborators)) {}
    static std::shared_ptr<CVSyncDatamanager> make(
        const Stores& stores, std::shared_ptr<InitCustomViewNSP> networkService = std::make_shared<InitCustomViewNS>());

    /// Set it before the first call.
    std::weak_ptr<CVSyncDatamanagerDelegate> delegate;

    /// Ends with one callback of the delegate. It may block its caller for a read of the database.
    void syncCV(const ModuleIdentifier& for_);

private:
    using CustomViews = CustomViewPersistanceDelegate::CustomViews;

    bool onRequestComplete(const NetworkAnswer& answer, const std::string& moduleName);
    bool handleSuccessResponse(const CustomViews& views, const ParsedPermissionInfo& info,
                               const std::string& moduleName);
    bool exchange(const std::vector<std::string>& moduleNames, const CustomViews& views);
    bool emptyChangedLists(const CustomViews& former, CustomViews& gone);

    Collaborators collaborators_;
};

}  // namespace tarvo
