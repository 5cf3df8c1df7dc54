#pragma once

#include "tarvobase/configuration/Assemblers.h"
#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/view_sync/CVSyncDatamanager.h"

namespace tarvo {

/// The delegate of `CVSync`, called on the main queue.
class CVSyncDelegate : public virtual platform::Object {
public:
    virtual void CVSyncDidComplete(const ModuleIdentifier& for_) { static_cast<void>(for_); }
    /// The stored views stay as they were.
    virtual void CVSyncFailed(const ModuleIdentifier& for_) { static_cast<void>(for_); }
};

class CVSyncProtocol : public virtual platform::Object {
public:
    /// Brings the views of a module up to date. Returns at once; each call ends with one callback.
    virtual void sync(const ModuleIdentifier& for_) = 0;
};

/// Brings the views of modules up to date. Held by `shared_ptr`. The delegate gets no further callback once the use
/// case is released; a sync goes on.
class CVSync final : public DelegateUseCase<CVSyncDelegate>, public CVSyncProtocol, public CVSyncDatamanagerDelegate {
public:
    static std::shared_ptr<CVSync> make(const Stores& stores) { return make(CVSyncDatamanager::make(stores)); }
    static std::shared_ptr<CVSync> make(std::shared_ptr<CVSyncDatamanager> dataManager) {
        std::shared_ptr<CVSync> sync(new CVSync(std::move(dataManager)));
        sync->dm->delegate = sync;
        return sync;
    }

    const std::shared_ptr<CVSyncDatamanager> dm;

    void sync(const ModuleIdentifier& for_) override {
        inBackground([dm = dm, for_] { dm->syncCV(for_); });
    }
    void CVSyncDidComplete(const ModuleIdentifier& for_) override {
        if (auto listener = delegate.lock()) listener->CVSyncDidComplete(for_);
    }
    void CVSyncFailed(const ModuleIdentifier& for_) override {
        if (auto listener = delegate.lock()) listener->CVSyncFailed(for_);
    }

private:
    explicit CVSync(std::shared_ptr<CVSyncDatamanager> dataManager) : dm(std::move(dataManager)) {}
};

/// Builds a sync of views and starts it. An assembler holds its use case, so releasing it ends the callbacks.
class CVSyncAssembler final : public BaseAssemblerWithDatabaseUserDefaults {
public:
    using BaseAssemblerWithDatabaseUserDefaults::BaseAssemblerWithDatabaseUserDefaults;

    const std::shared_ptr<CVSync> cvSync = CVSync::make(Stores::over(databaseAdapter, userDefaults));

    /// Sets the delegate, which is held weakly. Call it before `sync`.
    void setDelegate(std::weak_ptr<CVSyncDelegate> delegate) { cvSync->delegate = std::move(delegate); }
    void sync(const ModuleIdentifier& for_) { cvSync->sync(for_); }
};

}  // namespace tarvo
