#include "bridge/Topics.h"

#include "bridge/forms/JsonForm.h"
#include "bridge/forms/SyncForms.h"
#include "bridge/forms/TransactionForms.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/list_sync/SyncLFRecordNotificationDelegate.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CVObserver.h"
#include "tarvobase/notification/CustomViewChangedObserver.h"
#include "tarvobase/notification/InitialProcessComplete.h"
#include "tarvobase/notification/ModuleChangedObserver.h"
#include "tarvobase/notification/RecordChangedObserver.h"
#include "tarvobase/notification/SearchTokenChangedObserver.h"
#include "tarvobase/notification/SyncObserver.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"
#include "tarvobase/transaction/TransactionStatusObserver.h"
#include "tarvobase/value_objects/module/Module.h"

namespace tarvo::bridge {

namespace {

using Notify = Topics::Notify;

class TopicListener {
public:
    TopicListener(const Topics::Request& request, Notify notify) : request_(request), notify_(std::move(notify)) {}

protected:
    void report(std::string_view name, ValueMap arguments) { notify_(request_.topic, name, std::move(arguments)); }

    const Topics::Request request_;

private:
    const Notify notify_;
};

class SettingsListener final : public TopicListener, public UserDefaultsValueObserver {
public:
    using TopicListener::TopicListener;
    std::vector<std::string> observingKeys() const override { return request_.keys; }
    std::vector<std::string> observingGroups() const override { return request_.groups; }
    void newValue(const Value& value, const std::string& forKey, const std::string& inGroup) override {
        report("newValue", {{"value", value}, {"forKey", forKey}, {"inGroup", inGroup}});
    }
};

class ChangeListener final : public TopicListener, public ChangeQueueObserver {
public:
    using TopicListener::TopicListener;
    void changeSaved(const Change& change) override { report("changeSaved", {{"change", toJson(change)}}); }
    void changeNotSaved(const std::string& moduleName, const std::string& recordId, ChangeNotSaved reason) override {
        report("changeNotSaved",
               {{"moduleName", moduleName}, {"recordId", recordId}, {"reason", std::string(caseName(reason))}});
    }
    void changeAccepted(const Change& change, const std::optional<std::string>& formerRecordId) override {
        ValueMap arguments{{"change", toJson(change)}};
        if (formerRecordId) arguments.set("formerRecordId", *formerRecordId);
        report("changeAccepted", std::move(arguments));
    }
    void changeCancelled(const Change& change) override { report("changeCancelled", {{"change", toJson(change)}}); }
    void changeRefused(const Change& change) override { report("changeRefused", {{"change", toJson(change)}}); }
};

class InitialProcessListener final : public TopicListener, public InitialProcessComplete {
public:
    using TopicListener::TopicListener;
    void initialProcessComplete(const std::string& userId) override {
        report("initialProcessComplete", {{"userId", userId}});
    }
};

class ModuleListener final : public TopicListener, public ModuleChangedObserver {
public:
    using TopicListener::TopicListener;
    void modulesAdded() override { report("modulesAdded", {}); }
    void modulesAdded(const std::vector<Module>& modules) override { reportModules("modulesAdded", modules); }
    void modulesEdited(const std::vector<Module>& modules) override { reportModules("modulesEdited", modules); }
    void modulesDeleted(const std::vector<Module>& modules) override { reportModules("modulesDeleted", modules); }

private:
    void reportModules(std::string_view name, const std::vector<Module>& modules) {
        report(name, {{"modules", toJson(modules)}});
    }
};

class RecordListener final : public TopicListener, public RecordChangedObserver {
public:
    using TopicListener::TopicListener;
    void recordObtained(const std::string& recordID, const std::string& moduleName) override {
        report("recordObtained", {{"recordID", recordID}, {"moduleName", moduleName}});
    }
    void recordAdded(const std::string& moduleName, const RecordIds& recordIds) override {
        report("recordAdded", {{"moduleName", moduleName}, {"recordIds", idsOf(recordIds)}});
    }
    void recordUpdated(const std::string& moduleName, const RecordIds& recordIds) override {
        report("recordUpdated", {{"moduleName", moduleName}, {"recordIds", idsOf(recordIds)}});
    }
    void recordUpdated(const std::string& moduleName, const std::string& oldRecordID,
                       const std::string& newRecordID) override {
        report("recordUpdated",
               {{"moduleName", moduleName}, {"oldRecordID", oldRecordID}, {"newRecordID", newRecordID}});
    }
    void recordDeleted(const std::string& moduleName, const std::vector<std::string>& recordIds) override {
        report("recordDeleted", {{"moduleName", moduleName}, {"recordIds", toJson(recordIds)}});
    }

private:
    static ValueList idsOf(const RecordIds& recordIds) {
        ValueList ids;
        for (auto& [recordID, modifiedTime] : recordIds)
            ids.push_back(ValueMap{{"recordID", recordID}, {"modifiedTime", modifiedTime}});
        return ids;
    }
};

class SyncListener final : public TopicListener, public SyncObserver {
public:
    using TopicListener::TopicListener;
    void syncStarted(const std::string& moduleName) override { report("syncStarted", {{"moduleName", moduleName}}); }
    void syncFinished(const std::string& moduleName, ModuleType moduleType) override {
        report("syncFinished", {{"moduleName", moduleName}, {"moduleType", toJson(moduleType)}});
    }
};

class TransactionListener final : public TopicListener, public TransactionStatusObserver {
public:
    using TopicListener::TopicListener;
    void transactionGaveUp(const NTransaction& transaction) override {
        report("transactionGaveUp", {{"transaction", toJson(transaction)}});
    }
};

class ViewListener final : public TopicListener, public CustomViewChangedObserver {
public:
    using TopicListener::TopicListener;
    void customViewChanged(const std::vector<std::string>& viewIDs, const std::string& moduleName) override {
        report("customViewChanged", {{"viewIDs", toJson(viewIDs)}, {"moduleName", moduleName}});
    }
};

class ModuleViewsListener final : public TopicListener, public CVObserver {
public:
    using TopicListener::TopicListener;
    void customViewsChanged(const std::string& moduleName) override {
        report("customViewsChanged", {{"moduleName", moduleName}});
    }
};

class ListSyncListener final : public TopicListener, public SyncLFRecordNotificationDelegate {
public:
    using TopicListener::TopicListener;
    void listSynced(const std::string& moduleName, const std::string& criteriaId,
                    const SyncLFRecordCompletionStatus& status) override {
        report("listSynced", {{"moduleName", moduleName}, {"criteriaId", criteriaId}, {"status", toJson(status)}});
    }
};

class SearchListener final : public TopicListener, public SearchTokenChangedObserver {
public:
    using TopicListener::TopicListener;
    void searchTokenChanged(const std::string& moduleName) override {
        report("searchTokenChanged", {{"moduleName", moduleName}});
    }
};

template <class Topic, class Listener>
std::shared_ptr<platform::Object> listener(const Topics::Request& request, const Notify& notify) {
    auto made = std::make_shared<Listener>(request, notify);
    BrenNotificationCenter::shared().add<Topic>(made);
    return made;
}

/// One row per topic.
struct Row {
    std::string_view topic;
    std::shared_ptr<platform::Object> (*listen)(const Topics::Request& request, const Notify& notify);
};
constexpr Row rows[] = {
    {"CVObserver", listener<CVObserver, ModuleViewsListener>},
    {"ChangeQueueObserver", listener<ChangeQueueObserver, ChangeListener>},
    {"CustomViewChangedObserver", listener<CustomViewChangedObserver, ViewListener>},
    {"InitialProcessComplete", listener<InitialProcessComplete, InitialProcessListener>},
    {"ModuleChangedObserver", listener<ModuleChangedObserver, ModuleListener>},
    {"RecordChangedObserver", listener<RecordChangedObserver, RecordListener>},
    {"SearchTokenChangedObserver", listener<SearchTokenChangedObserver, SearchListener>},
    {"SyncLFRecordNotificationDelegate", listener<SyncLFRecordNotificationDelegate, ListSyncListener>},
    {"SyncObserver", listener<SyncObserver, SyncListener>},
    {"TransactionStatusObserver", listener<TransactionStatusObserver, TransactionListener>},
    {"UserDefaultsValueObserver", listener<UserDefaultsValueObserver, SettingsListener>},
};

}  // namespace

bool Topics::change(const Request& request, const Notify& notify) {
    for (auto& row : rows) {
        if (row.topic != request.topic) continue;
        listeners_.erase(request.topic);
        if (request.listen) listeners_[request.topic] = row.listen(request, notify);
        return true;
    }
    return false;
}

}  // namespace tarvo::bridge
