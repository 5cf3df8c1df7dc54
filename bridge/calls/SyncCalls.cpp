#include "bridge/DelegateLines.h"
#include "bridge/calls/Calls.h"
#include "bridge/forms/RecordForms.h"
#include "bridge/forms/SyncForms.h"
#include "tarvobase/download/DownloadRecordsUseCase.h"
#include "tarvobase/list_sync/SyncListFilterRecords.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/sync/RecordsSyncUseCases.h"
#include "tarvobase/view_sync/CVSync.h"

namespace tarvo {

namespace bridge {

/// What the lines of a page hold.
enum class SyncTell { records, ids, none };

}  // namespace bridge

template <>
struct EnumCases<bridge::SyncTell> {
    using T = bridge::SyncTell;
    static constexpr EnumCase<T> cases[] = {{T::records, "records"}, {T::ids, "ids"}, {T::none, "none"}};
};

namespace bridge {

namespace {

struct AllModulesSyncRequest {
    SyncTell tell = SyncTell::records;
    static constexpr auto fields() { return describe(optionalField("tell", &AllModulesSyncRequest::tell)); }
};
struct ModuleSyncRequest {
    std::string moduleName;
    SyncTell tell = SyncTell::records;
    static constexpr auto fields() {
        return describe(field("moduleName", &ModuleSyncRequest::moduleName),
                        optionalField("tell", &ModuleSyncRequest::tell));
    }
};
struct RecordsDownloadRequest {
    std::optional<std::vector<std::string>> moduleNames;
    DownloadRecordsMaxCount maxDownloadCount = DownloadRecordsMaxCount::defaultMaxCount;
    static constexpr auto fields() {
        return describe(field("moduleNames", &RecordsDownloadRequest::moduleNames),
                        optionalField("maxDownloadCount", &RecordsDownloadRequest::maxDownloadCount));
    }
};

class SyncLines final : public virtual DelegateLines, public RecordsSyncUseCaseDelegate {
public:
    CallPtr call;
    SyncTell tell = SyncTell::records;

    void syncStarted(const std::string& moduleName) override {
        report("syncStarted", {{"moduleName", toJson(moduleName)}});
    }
    void syncResultsFetched(const std::string& moduleName, const Records& addedRecords, const Records& editedRecords,
                            const Ids& deletedRecordIDs) override {
        report("syncResultsFetched", {{"moduleName", toJson(moduleName)},
                                      {"addedRecords", formOf(addedRecords)},
                                      {"editedRecords", formOf(editedRecords)},
                                      {"deletedRecordIDs", deletedRecordIDs ? toJson(*deletedRecordIDs) : Value()}});
    }
    bool wantsSyncResults() const override { return tell != SyncTell::none; }
    void syncsEnded(const std::vector<SyncRound>& rounds) override {
        call->done("response", ValueMap{{"rounds", toJson(rounds)}});
        call->finish();
    }

private:
    Value formOf(const Records& records) const {
        if (!records) return {};
        if (tell == SyncTell::records) return toJson(*records);
        ValueList ids;
        for (auto& record : *records) ids.emplace_back(record.recordId());
        return ids;
    }
};

/// Makes the delegate of a sync, whose call ends when all of its rounds have.
template <class UseCase>
std::shared_ptr<UseCase> syncFor(std::shared_ptr<UseCase> usecase, SyncTell tell, const CallPtr& call) {
    auto lines = linesFor<SyncLines>(call);
    lines->call = call;
    lines->tell = tell;
    usecase->delegate = lines;
    call->keepUntilEnd(usecase);
    return usecase;
}

class RecordsDownloadLines final : public virtual DelegateLines,
                                   public ErrorLines<DownloadRecordsErrorRelay>,
                                   public DownloadRecordsUseCaseDelegate {
public:
    CallPtr call;

    void recordsDownloaded(const DownloadedRange& inRange, const std::string& moduleName, bool hasMore) override {
        report("recordsDownloaded",
               {{"from", inRange.from}, {"to", inRange.to}, {"moduleName", toJson(moduleName)}, {"hasMore", hasMore}});
    }
    void recordsDownloadDidComplete(const std::string& moduleName) override {
        report("recordsDownloadDidComplete", {{"moduleName", toJson(moduleName)}});
    }
    void recordsDownloadDidCompleteForAll(const std::vector<Module>& modules) override {
        ValueList names;
        for (auto& module : modules) names.emplace_back(module.moduleName);
        report("recordsDownloadDidCompleteForAll", {{"moduleNames", std::move(names)}});
        call->finish();
    }
    void unableToFetchMetadataError() override {
        ErrorLines::unableToFetchMetadataError();
        call->finish();
    }
};

struct ViewSyncRequest {
    std::string moduleName;
    static constexpr auto fields() { return describe(field("moduleName", &ViewSyncRequest::moduleName)); }
};
class ViewSyncLines final : public virtual DelegateLines, public CVSyncDelegate {
public:
    void CVSyncDidComplete(const ModuleIdentifier& module) override {
        report("CVSyncDidComplete", {{"moduleName", module.rawValue()}});
    }
    void CVSyncFailed(const ModuleIdentifier& module) override {
        report("CVSyncFailed", {{"moduleName", module.rawValue()}});
    }
};

void initiateDownload(const RecordsDownloadRequest& request, const CallPtr& call) {
    auto stores = Stores::current();
    std::optional<std::vector<Module>> modules;
    if (request.moduleNames) {
        modules.emplace();
        for (auto& name : *request.moduleNames) {
            auto module = stores.modules()->getModuleByModuleName(name);
            if (!module) return call->refuse("no module " + name + " is stored");
            modules->push_back(std::move(module).value());
        }
    }
    auto usecase = DownloadRecordsUseCase::make(stores);
    auto lines = linesFor<RecordsDownloadLines>(call);
    lines->call = call;
    usecase->delegate = lines;
    call->keepUntilEnd(usecase);
    usecase->initiateDownload(std::move(modules), request.maxDownloadCount);
}

}  // namespace

void addSyncCalls(Registry& registry) {
    registry.addOperation<AllModulesSyncRequest>(
        "AllModulesSyncUseCase.syncAllModules", [](const AllModulesSyncRequest& request, const CallPtr& call) {
            syncFor(AllModulesSyncUseCase::make(Stores::current()), request.tell, call)->syncAllModules();
        });
    registry.addOperation<ModuleSyncRequest>(
        "ModuleyncUseCase.syncRecords", [](const ModuleSyncRequest& request, const CallPtr& call) {
            syncFor(ModuleyncUseCase::make(Stores::current()), request.tell, call)->syncRecords(request.moduleName);
        });
    registry.addUsecase<SyncListFilterRecords>("SyncListFilterRecords");
    registry.addOperation<ViewSyncRequest>("CVSync.sync", [](const ViewSyncRequest& request, const CallPtr& call) {
        answeringOnce<ViewSyncLines>(CVSync::make(Stores::current()), call)
            ->sync(ModuleIdentifier::fromModuleName(request.moduleName));
    });
    registry.addOperation<RecordsDownloadRequest>("DownloadRecordsUseCase.initiateDownload", initiateDownload);
}

}  // namespace bridge
}  // namespace tarvo
