#include "tarvobase/init_process/steps/InitCustomViewDM.h"

#include "platform/Log.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CustomViewChangedObserver.h"
#include "tarvobase/sync/wire/CVSyncParser.h"

namespace tarvo {

InitCustomViewDM::InitCustomViewDM(Persistance persistance, std::shared_ptr<InitCustomViewNSP> networkService,
                                   BrenNotificationCenter& notifier)
    : BatchedDownloadable(Feature::customView,
                          {.step = "CustomViewInfo", .requested = " Requested for ", .completed = " Completed"},
                          persistance.scope),
      persistance_(std::move(persistance)),
      networkService_(std::move(networkService)),
      notifier_(notifier) {}

std::shared_ptr<InitCustomViewDM> InitCustomViewDM::make(const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                                                         std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                         std::shared_ptr<InitCustomViewNSP> networkService) {
    auto stores = Stores::over(databaseAdapter, userDefaults);
    return std::make_shared<InitCustomViewDM>(Persistance{.customViewDAO = stores.customViews(),
                                                          .scope = stores.scope,
                                                          .batches = {.moduleDAO = stores.modules(),
                                                                      .settingDAO = stores.settings(),
                                                                      .userDefaultsUtil = stores.userDefaultsUtil()}},
                                              std::move(networkService), BrenNotificationCenter::shared());
}

std::shared_ptr<ModuleBatch> InitCustomViewDM::makeModuleBatch() const {
    return std::make_shared<ModuleBatch>(Feature::customView, persistance_.batches);
}

void InitCustomViewDM::getCustomViews(std::vector<Module> modules, Callback success, Callback failure) {
    auto batches = makeModuleBatch();
    batches->initiateBatchOfAll(modules);
    run(std::move(batches), Callbacks{std::move(success), std::move(failure)});
}

void InitCustomViewDM::request(const std::vector<Module>& modules) {
    networkService_->getCustomViews(modules, [weak = platform::weakSelf(this), modules](NetworkAnswer answer) {
        auto self = weak.lock();
        if (!self) return;
        self->batchAnswered(
            modules, std::move(answer), [](auto body) { return CVSyncParser().parse(body); },
            [&self](auto& views, auto& info) { return self->store(views, info.moduleName); });
    });
}

InitCustomViewDM::Outcome InitCustomViewDM::store(const std::vector<CustomView>& views, const std::string& moduleName) {
    platform::log(platform::LogLevel::progress, "list view", "CustomViewInfo Parsing completed for " + moduleName);
    auto outcome = commit("views of " + moduleName, [&] { persistance_.customViewDAO->storeCustomView(views); });
    if (outcome != Outcome::stored) return outcome;
    std::vector<std::string> viewIDs;
    for (auto& view : views) viewIDs.push_back(view.viewID);
    notifier_.notify<CustomViewChangedObserver>(false, [viewIDs = std::move(viewIDs), moduleName](auto& observer) {
        observer.customViewChanged(viewIDs, moduleName);
    });
    return outcome;
}

void InitCustomViewDM::allBatchesCompleted() {
    platform::log(platform::LogLevel::progress, "list view", "CustomViewInfo Batch completed.");
    callBack();
    endRun();
}

}  // namespace tarvo
