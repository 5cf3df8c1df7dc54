#include "tarvobase/get_metadata/InitMetadataDM.h"

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/get_metadata/MetadataStores.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/ModuleChangedObserver.h"
#include "tarvobase/value_objects/FieldMetadataInDatabase.h"
#include "tarvobase/value_objects/InMemoryStorage.h"
#include "tarvobase/value_objects/LayoutMetadataInDatabase.h"
#include "tarvobase/value_objects/ModuleLayoutInfoInDatabase.h"
#include "tarvobase/value_objects/ModuleRelatedListInDatabase.h"
#include "tarvobase/value_objects/PicklistMetadataInDatabase.h"

namespace tarvo {

namespace {

/// What the server takes for a user of whom nothing is known yet.
constexpr std::string_view profileOfNobody = "123";

std::string namesOf(const std::vector<Module>& modules) {
    std::vector<std::string> names;
    for (auto& module : modules) names.push_back(module.moduleName);
    return text::join(names, ", ");
}

void notifyModulesAdded(bool onMainThread) {
    BrenNotificationCenter::shared().notify<ModuleChangedObserver>(
        onMainThread, [](ModuleChangedObserver& observer) { observer.modulesAdded(); });
}

}  // namespace

InitMetadataDM::InitMetadataDM(Persistance persistance, std::shared_ptr<MetadataNSP> networkService)
    : persistance_(std::move(persistance)),
      writer_(persistance_.metadata),
      networkService_(std::move(networkService)) {}

std::shared_ptr<InitMetadataDM> InitMetadataDM::make(const std::shared_ptr<DatabaseAdapter>& dbAdapter,
                                                     const std::shared_ptr<DatabaseAdapter>& secondaryDbAdapter,
                                                     std::shared_ptr<MetadataNSP> networkService) {
    MetadataStores stores{dbAdapter, std::make_shared<InMemoryStorage>()};
    FieldMetadataDatabaseConstants fieldConstants;
    ModuleLayoutInfoDatabaseConstants layoutConstants;
    return std::make_shared<InitMetadataDM>(
        Persistance{.userDAO = stores.users(),
                    .moduleDAO = stores.modules(),
                    .metadata = {.relatedListDAO = std::make_shared<ModuleRelatedListInDatabase>(),
                                 .layoutDAO = std::make_shared<ModuleLayoutInfoInDatabase>(
                                     std::string(layoutConstants.TableName), dbAdapter),
                                 .layoutFieldsDAO = std::make_shared<LayoutMetadataInDatabase>(),
                                 .picklistDAO = std::make_shared<PicklistMetadataInDatabase>(),
                                 .settingDAO = stores.settings(),
                                 .fieldsDAO = std::make_shared<FieldMetadataInDatabase>(
                                     std::string(fieldConstants.TableName), dbAdapter, fieldConstants),
                                 .dbAdapter = dbAdapter,
                                 .secondaryDbAdapter = secondaryDbAdapter}},
        std::move(networkService));
}

void InitMetadataDM::getMetaData(std::vector<Module> modules, Callback success, Callback failure) {
    {
        std::lock_guard lock(mutex_);
        waiting_.push_back({std::move(modules), std::move(success), std::move(failure)});
        if (std::exchange(isDownloading_, true)) return;
    }
    startNextDownload();
}

void InitMetadataDM::startNextDownload() {
    if (auto batches = prepareNextDownload()) batches->start();
}

/// The batches of the next download; null when none waits.
std::shared_ptr<ModuleBatch> InitMetadataDM::prepareNextDownload() {
    auto batches = std::make_shared<ModuleBatch>();
    batches->delegate = platform::weakSelf(this);
    std::vector<Module> modules;
    Callback formerSuccess, formerFailure;  // end after the lock, as the host's destructors do
    {
        std::lock_guard lock(mutex_);
        isDownloading_ = !waiting_.empty();
        if (!isDownloading_) return nullptr;
        auto& next = waiting_.front();
        modules = std::move(next.modules);
        formerSuccess = std::exchange(success_, std::move(next.success));
        formerFailure = std::exchange(failure_, std::move(next.failure));
        waiting_.pop_front();
        moduleBatch_ = batches;
    }
    if (modules.empty())
        if (auto all = persistance_.moduleDAO->getAllModules()) modules = *std::move(all);
    batches->initiateBatch(modules);
    return batches;
}

void InitMetadataDM::nextBatch(const std::vector<Module>& modules) {
    platform::log("MetadataInfo Requested for " + namesOf(modules));
    networkService_->getMetadata(
        {profileID(), modules},
        [weak = platform::weakSelf(this)](Data data, std::optional<NetworkError>, const MetadataNetworkParams& params) {
            if (auto self = weak.lock()) self->answered(data, params);
        });
}

std::string InitMetadataDM::profileID() const {
    auto authentication = CommonConfigration::sharedInstance().authentication.get();
    auto account = authentication ? authentication->currentUser().value_or("") : "";
    auto users = persistance_.userDAO->getUsersWithBrenUID({account});
    return users && !users->empty() ? users->front().profileID : std::string(profileOfNobody);
}

// A transport error needs no branch of its own: what it leaves of a body does not parse.
void InitMetadataDM::answered(const Data& data, const MetadataNetworkParams& params) {
    auto answer = MetadataParser().parse(data);
    if (answer) return handleSuccessResponse(*answer, params);
    platform::log("progress updated failure invoked: " + answer.error().logText());
    handleFailureResponse(params);
}

void InitMetadataDM::handleSuccessResponse(const Answer& answer, const MetadataNetworkParams& params) {
    platform::log("MetadataInfo Completed - success for " + namesOf(params.modules));
    for (auto& entry : answer.result) {
        if (!entry) {
            platform::log("MetadataInfo of a module could not be read: " + entry.error().logText());
            continue;
        }
        if (!entry->data) {
            platform::log("MetadataInfo of " + entry->info.moduleName +
                          " could not be read: " + entry->data.error().logText());
            continue;
        }
        platform::log("MetadataInfo Parsing completed for " + entry->info.moduleName);
        writer_.store(*entry->data);
    }
    batchCompleted(params.modules);
}

void InitMetadataDM::handleFailureResponse(const MetadataNetworkParams& params) {
    platform::log("MetadataInfo Completed - failure for " + namesOf(params.modules));
    batchCompleted(params.modules);
}

void InitMetadataDM::batchCompleted(const std::vector<Module>& modules) {
    std::shared_ptr<ModuleBatch> batches;
    {
        std::lock_guard lock(mutex_);
        batches = moduleBatch_;
    }
    batches->batchCompleted(modules);
}

void InitMetadataDM::allBatchesCompleted() {
    platform::log("MetadataInfo Batch completed.");
    // The statements of the tables went past the modules in memory.
    persistance_.moduleDAO->reloadAll();
    Callback success;
    {
        std::lock_guard lock(mutex_);
        success = success_;
    }
    notifyModulesAdded(true);
    if (success) success();
    notifyModulesAdded(false);
    startNextDownload();
}

}  // namespace tarvo
