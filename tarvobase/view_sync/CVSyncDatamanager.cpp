#include "tarvobase/view_sync/CVSyncDatamanager.h"

#include <iterator>
#include <set>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/list_view/ListChanges.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CVObserver.h"
#include "tarvobase/records/SharedActivities.h"
#include "tarvobase/records/sql/CVRecordMapInDatabase.h"
#include "tarvobase/sync/SyncTurns.h"
#include "tarvobase/sync/wire/CVSyncParser.h"
#include "tarvobase/utils/CommonUtils.h"

namespace tarvo {

namespace {

bool isAmongActivities(const std::string& moduleName) {
    return moduleName == SharedActivities::moduleName || SharedActivities::isActivity(moduleName);
}

/// Logs why the views of a module are not exchanged. Returns false.
bool viewsStay(const std::string& moduleName, const std::string& why) {
    platform::log(platform::LogLevel::warning, "sync", "the views of " + moduleName + " stay as they are: " + why);
    return false;
}

/// Returns the modules whose views an answer replaces. An answer for calls alone must not take the views of tasks, so
/// only those of the four are emptied for which it brings views.
std::vector<std::string> replacedModules(const std::vector<CustomView>& views, const std::string& moduleName) {
    if (!isAmongActivities(moduleName) || views.empty()) return {moduleName};
    std::set<std::string> modules;
    for (auto& view : views)
        if (isAmongActivities(view.moduleName)) modules.insert(view.moduleName);
    return {modules.begin(), modules.end()};
}

}  // namespace

std::shared_ptr<CVSyncDatamanager> CVSyncDatamanager::make(const Stores& stores,
                                                           std::shared_ptr<InitCustomViewNSP> networkService) {
    return std::make_shared<CVSyncDatamanager>(
        Collaborators{.scope = stores.scope,
                      .networkService = std::move(networkService),
                      .modulePersistance = stores.modules(),
                      .cvPersistance = stores.customViews(),
                      .cvRecordMapPersistance = std::make_shared<CVRecordMapInDatabase>(stores.databaseAdapter()),
                      .userDefaultsUtil = stores.userDefaultsUtil()});
}

void CVSyncDatamanager::syncCV(const ModuleIdentifier& for_) {
    using Turns = SyncTurns<bool>;
    auto name = for_.rawValue();
    auto run = [self = platform::strongSelf<CVSyncDatamanager>(this), name](std::shared_ptr<Turns::Turn> turn) {
        auto module = self->collaborators_.modulePersistance->getModuleByModuleName(name);
        if (!module) {
            viewsStay(name, module.error().logText());
            return;
        }
        self->collaborators_.networkService->getCustomViews({module.value()}, [=](NetworkAnswer answer) {
            CommonUtils::performAsyncInBackground(
                [=, answer = std::move(answer)] { turn->outcome = self->onRequestComplete(answer, name); });
        });
    };
    auto ended = [listener = delegate, for_](bool isComplete) {
        CommonUtils::performAsyncInMain([listener, for_, isComplete] {
            auto delegate = listener.lock();
            if (!delegate) return;
            isComplete ? delegate->CVSyncDidComplete(for_) : delegate->CVSyncFailed(for_);
        });
    };
    auto what = "views of " + (isAmongActivities(name) ? std::string(SharedActivities::moduleName) : name);
    Turns::shared().ask(collaborators_.scope, what, std::move(run), std::move(ended));
}

bool CVSyncDatamanager::onRequestComplete(const NetworkAnswer& answer, const std::string& moduleName) {
    if (answer.error) return viewsStay(moduleName, answer.error->message);
    auto parsed = CVSyncParser().parse(answer.body);
    if (!parsed) return viewsStay(moduleName, parsed.error().logText());
    if (parsed->result.empty()) return viewsStay(moduleName, "the answer is empty");
    bool isStored = true;
    for (auto& entry : parsed->result) {
        if (!entry)
            isStored = viewsStay(moduleName, entry.error().logText());
        else if (!entry->data)
            isStored = viewsStay(moduleName, entry->data.error().logText());
        else if (!handleSuccessResponse(entry->data.value(), entry->info, moduleName))
            isStored = false;
    }
    return isStored;
}

bool CVSyncDatamanager::handleSuccessResponse(const CustomViews& views, const ParsedPermissionInfo& info,
                                              const std::string& moduleName) {
    if (info.moduleName != moduleName) return viewsStay(moduleName, "the answer is for " + info.moduleName);
    // Without rows that can be read nobody knows what the server has.
    if (views.empty() && info.nodata != true) return viewsStay(moduleName, "the answer has none");
    auto modules = replacedModules(views, moduleName);
    if (!exchange(modules, views)) return viewsStay(moduleName, "the database did not store the new ones");
    collaborators_.userDefaultsUtil.setListFilterLastUpdatedTime(platform::Clock::secondsSince1970(), modules);
    for (auto& name : modules)
        BrenNotificationCenter::shared().notify<CVObserver>(
            true, [name](CVObserver& observer) { observer.customViewsChanged(name); });
    return true;
}

bool CVSyncDatamanager::exchange(const std::vector<std::string>& moduleNames, const CustomViews& views) {
    platform::MutexLock lock(ListChanges::shared().mutex);
    auto& persistance = *collaborators_.cvPersistance;
    auto& database = collaborators_.scope.databaseAdapter;
    CustomViews former, gone;
    for (auto& name : moduleNames) {
        auto stored = persistance.getCustomViews(name);
        if (!stored) return false;
        std::move(stored->begin(), stored->end(), std::back_inserter(former));
    }
    bool isCommitted = database && database->transaction("exchange of views", [&] {
        return persistance.removeCustomViews(moduleNames) && (views.empty() || persistance.storeCustomView(views)) &&
               emptyChangedLists(former, gone);
    });
    if (!isCommitted) return false;
    for (auto& view : gone) collaborators_.userDefaultsUtil.resetListFilter(view.moduleName, view.viewID);
    return true;
}

bool CVSyncDatamanager::emptyChangedLists(const CustomViews& former, CustomViews& gone) {
    auto& map = *collaborators_.cvRecordMapPersistance;
    for (auto& view : former) {
        auto present = collaborators_.cvPersistance->getCustomView(view.viewID, view.moduleName);
        if (present && present->hasSameList(view)) continue;
        if (!present) gone.push_back(view);
        // The flag comes first: a process that ends in between must not leave an empty list that says "no more".
        collaborators_.userDefaultsUtil.setListFilterHasMoreRecord(true, view.moduleName, view.viewID);
        bool isListed = map.count(view.viewID, view.moduleName).value_or(0) > 0;
        if (isListed && !map.delete_(view.viewID, view.moduleName)) return false;
    }
    return true;
}

}  // namespace tarvo
