#include "bridge/DelegateLines.h"
#include "bridge/FirstDownload.h"
#include "bridge/calls/Calls.h"
#include "bridge/forms/RecordForms.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/init_process/InitRecordProcessAssembler.h"
#include "tarvobase/list_view/GetListFilterRecords.h"
#include "tarvobase/storage/InMemoryStorage.h"

namespace tarvo::bridge {

namespace {

struct DownloadRequest {
    bool pipelines = true;
    static constexpr auto fields() { return describe(optionalField("pipelines", &DownloadRequest::pipelines)); }
};
struct RecordDownloadRequest {
    static constexpr auto fields() { return describe(); }
};

/// Returns the open database; refuses the call without one.
std::shared_ptr<DatabaseAdapter> databaseFor(const CallPtr& call) {
    auto database = Scope::current().databaseAdapter;
    if (!database) call->refuse("no database is open");
    return database;
}

class DownloadLines final : public CommonErrorLines, public InitProcessUseCaseDelegate {
public:
    void initProcessCompleted(InitProcessUseCaseProtocol&) override { report("initProcessCompleted"); }
    void initProcessIncomplete(InitProcessUseCaseProtocol&) override { report("initProcessIncomplete"); }
    void progressDidUpdate(InitProcessUseCaseProtocol&, double value, bool isSucess) override {
        report("progressDidUpdate", {{"value", value}, {"isSucess", isSucess}});
    }
};

void startInitProcess(const DownloadRequest& request, const CallPtr& call) {
    auto database = databaseFor(call);
    if (!database) return;
    auto steps = request.pipelines ? InitSteps::all : InitSteps::withoutPipelines;
    // A run that stopped at the init call has ended for the caller, too.
    auto ended = [call](bool) { call->finish(); };
    call->keepUntilEnd(FirstDownload::start(
        database, steps, {.delegate = linesFor<DownloadLines>(call), .step = nullptr, .ended = ended}));
}

class RecordDownloadLines final : public CommonErrorLines, public InitRecordProcessUseCaseDelegate {
public:
    std::function<void()> ended;
    void initRecordProcessCompleted(InitRecordProcessUseCase&) override {
        report("initRecordProcessCompleted");
        ended();
    }
};

void startInitRecordProcess(RecordDownloadRequest, const CallPtr& call) {
    auto database = databaseFor(call);
    if (!database) return;
    auto lines = linesFor<RecordDownloadLines>(call);
    lines->ended = [call] { call->finish(); };
    auto assembler = std::make_shared<InitRecordProcessAssembler>(database, std::make_shared<InMemoryStorage>(),
                                                                  std::make_shared<DatabaseConstants>(),
                                                                  BrenUserDefaults::ofCurrentAccount());
    assembler->setInitRecordProcessUseCaseDelegate(lines);
    call->keepUntilEnd(assembler);
    assembler->startInitRecordProcess();
}

}  // namespace

void addDownloadCalls(Registry& registry) {
    registry.addOperation<DownloadRequest>("InitProcessUseCase", startInitProcess);
    registry.addOperation<RecordDownloadRequest>("InitRecordProcessUseCase", startInitRecordProcess);
    registry.addUsecase<GetListFilterRecords<>>("GetListFilterRecords");
}

}  // namespace tarvo::bridge
