#include "tarvobase/sync/RecordsSyncUseCases.h"

#include <utility>

#include "platform/Log.h"

namespace tarvo {

using Listener = RecordsSyncUseCaseDelegate;

void RecordsSyncUseCaseBase::syncStarted(const std::string& for_) {
    notifyDelegate([for_](Listener& listener) { listener.syncStarted(for_); });
}

void RecordsSyncUseCaseBase::syncResultsFetched(const std::string& moduleName, const Records& addedRecords,
                                                const Records& editedRecords, const Ids& deletedRecordIDs) {
    notifyDelegate([=](Listener& listener) {
        listener.syncResultsFetched(moduleName, addedRecords, editedRecords, deletedRecordIDs);
    });
}

bool RecordsSyncUseCaseBase::wantsSyncResults() const {
    auto listener = delegate.lock();
    return listener && listener->wantsSyncResults();
}

void RecordsSyncUseCaseBase::syncProgressed(const SyncRound& round) {
    notifyDelegate([round](Listener& listener) { listener.syncProgressed(round); });
}

void RecordsSyncUseCaseBase::syncEnded(const SyncRound& round) {
    notifyDelegate([round](Listener& listener) { listener.syncEnded(round); });
    {
        platform::MutexLock lock(mutex_);
        ended_.push_back(round);
    }
    expectOneLess();
}

void RecordsSyncUseCaseBase::expectEnds(std::size_t calls) {
    {
        platform::MutexLock lock(mutex_);
        expectedEnds_ += calls;
    }
    if (calls == 0) reportWhenAllEnded();
}

void RecordsSyncUseCaseBase::expectOneLess() {
    {
        platform::MutexLock lock(mutex_);
        --expectedEnds_;
    }
    reportWhenAllEnded();
}

void RecordsSyncUseCaseBase::reportWhenAllEnded() {
    std::vector<SyncRound> rounds;
    {
        platform::MutexLock lock(mutex_);
        if (expectedEnds_ > 0) return;
        rounds = std::exchange(ended_, {});
    }
    notifyDelegate([rounds = std::move(rounds)](Listener& listener) { listener.syncsEnded(rounds); });
}

std::shared_ptr<AllModulesSyncUseCase> AllModulesSyncUseCase::make(const Stores& stores) {
    return make(RecordsSyncDataManager::make(stores), stores.modules());
}

std::shared_ptr<AllModulesSyncUseCase> AllModulesSyncUseCase::make(
    std::shared_ptr<RecordsSyncDataManagerProtocol> dataManager,
    std::shared_ptr<ModulesPersistanceDelegate> modulePersistance) {
    std::shared_ptr<AllModulesSyncUseCase> usecase(
        new AllModulesSyncUseCase(std::move(dataManager), std::move(modulePersistance)));
    usecase->recordsSyncDataManager->delegate = usecase;
    return usecase;
}

void AllModulesSyncUseCase::syncAllModules() {
    inBackground([weak = platform::weakSelf(this), call = SyncRounds::shared().announce()] {
        auto self = weak.lock();
        if (!self) return;
        auto allModules = self->modulePersistance->getAllModules();
        self->startRounds(allModules ? std::move(allModules).value() : std::vector<Module>(), *call);
    });
}

void AllModulesSyncUseCase::syncModules(std::vector<Module> modules) {
    inBackground(
        [weak = platform::weakSelf(this), modules = std::move(modules), call = SyncRounds::shared().announce()] {
            if (auto self = weak.lock()) self->startRounds(modules, *call);
        });
}

void AllModulesSyncUseCase::startRounds(const std::vector<Module>& modules, const SyncRounds::Call& call) {
    expectEnds(modules.size());
    for (auto& module : modules) {
        if (call.isStopped) {
            expectOneLess();
            continue;
        }
        platform::log(platform::LogLevel::progress, "sync", "Syncing for: " + module.moduleName);
        if (!recordsSyncDataManager->syncRecords(module)) expectOneLess();
    }
}

std::shared_ptr<ModuleyncUseCase> ModuleyncUseCase::make(const Stores& stores) {
    return make(RecordsSyncDataManager::make(stores));
}

std::shared_ptr<ModuleyncUseCase> ModuleyncUseCase::make(std::shared_ptr<RecordsSyncDataManagerProtocol> dataManager) {
    std::shared_ptr<ModuleyncUseCase> usecase(new ModuleyncUseCase(std::move(dataManager)));
    usecase->recordsSyncDataManager->delegate = usecase;
    return usecase;
}

template <class Which>
void ModuleyncUseCase::ask(Which which) {
    inBackground([weak = platform::weakSelf(this), which = std::move(which), call = SyncRounds::shared().announce()] {
        auto self = weak.lock();
        if (!self) return;
        self->expectEnds(1);
        if (call->isStopped || !self->recordsSyncDataManager->syncRecords(which)) self->expectOneLess();
    });
}

void ModuleyncUseCase::syncRecords(const std::string& moduleName) { ask(moduleName); }
void ModuleyncUseCase::syncRecords(const Module& module) { ask(module); }

}  // namespace tarvo
