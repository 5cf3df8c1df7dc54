#pragma once

#include <memory>
#include <string>
#include <vector>

#include "platform/ThreadSafety.h"
#include "tarvobase/sync/RecordsSyncDataManager.h"
#include "tarvobase/sync/SyncRounds.h"
#include "tarvobase/usecase/DelegateUseCase.h"

namespace tarvo {

/// The delegate of both use cases, called on the main queue, except for `wantsSyncResults`.
class RecordsSyncUseCaseDelegate : public RecordsSyncDataManagerDelegate {
public:
    /// All rounds that the use case has asked for have ended; it brings their outcomes in the order of their ends. An
    /// empty list means that there was nothing to ask for: no module is stored, or not the named one.
    virtual void syncsEnded(const std::vector<SyncRound>& rounds) { static_cast<void>(rounds); }
};

/// What the use cases share: they pass the notices of their data manager on to the main queue, and count the rounds
/// that they wait for.
class RecordsSyncUseCaseBase : public DelegateUseCase<RecordsSyncUseCaseDelegate>,
                               public RecordsSyncDataManagerDelegate {
public:
    // Callbacks of the data manager.
    void syncStarted(const std::string& for_) override;
    void syncResultsFetched(const std::string& moduleName, const Records& addedRecords, const Records& editedRecords,
                            const Ids& deletedRecordIDs) override;
    bool wantsSyncResults() const override;
    void syncProgressed(const SyncRound& round) override;
    void syncEnded(const SyncRound& round) override;

    const std::shared_ptr<RecordsSyncDataManagerProtocol> recordsSyncDataManager;

protected:
    explicit RecordsSyncUseCaseBase(std::shared_ptr<RecordsSyncDataManagerProtocol> dataManager)
        : recordsSyncDataManager(std::move(dataManager)) {}

    /// Notes that a number of calls of the data manager may each be answered by a `syncEnded`. Call it before them.
    void expectEnds(std::size_t calls);
    /// Notes that a call will not be answered.
    void expectOneLess();

private:
    void reportWhenAllEnded();

    platform::Mutex mutex_;
    std::size_t expectedEnds_ TARVO_GUARDED_BY(mutex_) = 0;
    std::vector<SyncRound> ended_ TARVO_GUARDED_BY(mutex_);
};

class AllModulesSyncUseCaseProtocol : public virtual platform::Object {
public:
    /// Asks for a round of each stored module. Returns at once.
    virtual void syncAllModules() = 0;
};

/// Brings the records of all modules up to date, several modules side by side. Held by `shared_ptr`. The delegate gets
/// no further callback once the use case is released; the rounds go on.
class AllModulesSyncUseCase final : public RecordsSyncUseCaseBase, public AllModulesSyncUseCaseProtocol {
public:
    static std::shared_ptr<AllModulesSyncUseCase> make(const Stores& stores);
    static std::shared_ptr<AllModulesSyncUseCase> make(std::shared_ptr<RecordsSyncDataManagerProtocol> dataManager,
                                                       std::shared_ptr<ModulesPersistanceDelegate> modulePersistance);

    const std::shared_ptr<ModulesPersistanceDelegate> modulePersistance;

    void syncAllModules() override;
    /// Does the same for some modules.
    void syncModules(std::vector<Module> modules);

private:
    AllModulesSyncUseCase(std::shared_ptr<RecordsSyncDataManagerProtocol> dataManager,
                          std::shared_ptr<ModulesPersistanceDelegate> modulePersistance)
        : RecordsSyncUseCaseBase(std::move(dataManager)), modulePersistance(std::move(modulePersistance)) {}
    void startRounds(const std::vector<Module>& modules, const SyncRounds::Call& call);
};

class ModuleyncUseCaseProtocol : public virtual platform::Object {
public:
    /// Asks for a round of a module. Returns at once.
    virtual void syncRecords(const std::string& moduleName) = 0;
    virtual void syncRecords(const Module& module) = 0;
};

/// Brings the records of one module up to date. Held by `shared_ptr`. The delegate gets no further callback once the
/// use case is released; the round goes on.
class ModuleyncUseCase final : public RecordsSyncUseCaseBase, public ModuleyncUseCaseProtocol {
public:
    static std::shared_ptr<ModuleyncUseCase> make(const Stores& stores);
    static std::shared_ptr<ModuleyncUseCase> make(std::shared_ptr<RecordsSyncDataManagerProtocol> dataManager);

    void syncRecords(const std::string& moduleName) override;
    void syncRecords(const Module& module) override;

private:
    using RecordsSyncUseCaseBase::RecordsSyncUseCaseBase;
    template <class Which>
    void ask(Which which);
};

}  // namespace tarvo
