#include "tarvobase/init_process/steps/InitMetadataDM.h"

#include "platform/Log.h"
#include "tarvobase/metadata/PopulateRelatedModulesDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/metadata/wire/MetadataNS.h"
#include "tarvobase/metadata/wire/MetadataParser.h"
#include "tarvobase/metadata/wire/MetadataWriter.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/ModuleChangedObserver.h"

namespace tarvo {

namespace {

/// The server accepts this profile for a user who is not stored yet.
constexpr std::string_view unknownUserProfile = "123";

void notifyModulesAdded(bool onMainThread) {
    BrenNotificationCenter::shared().notify<ModuleChangedObserver>(
        onMainThread, [](ModuleChangedObserver& observer) { observer.modulesAdded(); });
}

}  // namespace

InitMetadataDM::InitMetadataDM(Persistance persistance, std::shared_ptr<MetadataNSP> networkService)
    : BatchedDownloadable(Feature::metadaInfo,
                          {.step = "MetadataInfo", .requested = " Requested for ", .completed = " Completed"},
                          persistance.scope),
      persistance_(std::move(persistance)),
      networkService_(std::move(networkService)) {}

std::shared_ptr<InitMetadataDM> InitMetadataDM::make(const std::shared_ptr<DatabaseAdapter>& dbAdapter,
                                                     const std::shared_ptr<DatabaseAdapter>& secondaryDbAdapter,
                                                     std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                     std::shared_ptr<MetadataNSP> networkService) {
    auto stores = Stores::over(dbAdapter, userDefaults);
    return std::make_shared<InitMetadataDM>(
        Persistance{.userDAO = stores.users(),
                    .scope = stores.scope,
                    .batches = {.moduleDAO = stores.modules(),
                                .settingDAO = stores.settings(),
                                .userDefaultsUtil = stores.userDefaultsUtil()},
                    .metadata = std::make_shared<MetadataWriter>(
                        MetadataWriter::Persistance{.relatedListDAO = stores.relatedLists(),
                                                    .layoutDAO = stores.layouts(),
                                                    .layoutFieldsDAO = stores.layoutFields(),
                                                    .picklistDAO = stores.picklists(),
                                                    .settingDAO = stores.settings(),
                                                    .fieldsDAO = stores.fields(),
                                                    .dbAdapter = dbAdapter,
                                                    .secondaryDbAdapter = secondaryDbAdapter}),
                    .lookupColumns = PopulateRelatedModulesDM::make(stores)},
        networkService ? std::move(networkService) : std::make_shared<MetadataNS>());
}

std::shared_ptr<ModuleBatch> InitMetadataDM::makeModuleBatch() const {
    return std::make_shared<ModuleBatch>(Feature::metadaInfo, persistance_.batches);
}

void InitMetadataDM::getMetaData(std::vector<Module> modules, Callback success, Callback failure) {
    if (modules.empty())
        modules = persistance_.batches.moduleDAO->getAllModules().success().value_or(std::vector<Module>());
    auto batches = makeModuleBatch();
    batches->initiateBatchOfAll(modules);
    run(std::move(batches), Callbacks{std::move(success), std::move(failure)});
}

void InitMetadataDM::request(const std::vector<Module>& modules) {
    MetadataNetworkParams params{profileID(), modules};
    networkService_->getMetadata(params, [weak = platform::weakSelf(this), modules](NetworkAnswer answer) {
        auto self = weak.lock();
        if (!self) return;
        self->batchAnswered(
            modules, std::move(answer), [](auto body) { return MetadataParser().parse(body); },
            [&self](auto& detail, auto&) { return self->store(detail); });
    });
}

InitMetadataDM::Outcome InitMetadataDM::store(const ParsedMetadataDetail& detail) {
    auto& moduleName = detail.info.moduleName;
    platform::log(platform::LogLevel::progress, "metadata", "MetadataInfo Parsing completed for " + moduleName);
    return commit("metadata of " + moduleName, [&] {
        persistance_.metadata->store(detail);
        // The lists that were stored lack these columns. A program that is killed later must not leave them so.
        persistance_.lookupColumns->populateLookupColumn();
    });
}

std::string InitMetadataDM::profileID() const {
    auto users = persistance_.userDAO->getUsersWithBrenUID({scope().account});
    return users && !users->empty() ? users->front().profileID : std::string(unknownUserProfile);
}

void InitMetadataDM::allBatchesCompleted() {
    platform::log(platform::LogLevel::progress, "metadata", "MetadataInfo Batch completed.");
    // The statements of the tables were stored without the modules in memory.
    persistance_.batches.moduleDAO->reloadAll();
    notifyModulesAdded(true);
    callBack();
    notifyModulesAdded(false);
    endRun();
}

}  // namespace tarvo
