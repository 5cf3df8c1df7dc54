// A host application from an empty machine to a list on the screen. docs/application.md quotes it section by section.
#include "examples/Application.h"
#include "platform/MainQueue.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/Lifecycle.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/configuration/UserAccounts.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/download/DatabaseBinding.h"
#include "tarvobase/init_process/InitProcessAssembler.h"
#include "tarvobase/list_view/GetCustomViewsUseCase.h"
#include "tarvobase/list_view/GetListFilterRecords.h"
#include "tarvobase/network_layer/NetworkAccess.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/CustomViewChangedObserver.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/utils/Util.h"

using namespace tarvo;
using namespace example;

namespace {

void configure(const std::string& home) {
    auto& configuration = CommonConfigration::sharedInstance();
    configuration.localDirectoryLocation = home;                  // Databases/ and settings/ lie below it
    configuration.userDefaultsGroup = "my-crm";                   // name of the settings file
    configuration.authentication = std::make_shared<MySignIn>();  // accounts and tokens, see below
    configuration.serverType = MProxyServerType::type0;  // which servers; dclBD and dclPrefix complete the names
    configuration.dclBD = variable("CRM_DOMAIN");
    configuration.fieldIdentifier = FieldIdentifier::crmColumnNameIdentifier();  // how fields are named, for good

    configuration.recordIDGenerator = ChangeQueues::shared().recordIds();  // ids of records made here
    Util::performInitialOperations(std::make_shared<BrenUserDefaults>());  // the user's formats of dates
}

std::shared_ptr<KelvaDatabasePersistance> openDatabase() {
    auto path = DatabaseConstants().databaseName();
    auto database = std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(path));
    if (auto opened = database->registerDB(passphraseOfTheKeyRing()); !opened) {
        fail(opened.error().message);
        return nullptr;
    }
    CommonConfigration::sharedInstance().databaseAdapter = database;
    DatabaseBinding::bind(Scope::current(),
                          BrenUserDefaults::ofCurrentAccount());  // forgets settings of a removed file
    return database;
}

class FirstDownload : public InitProcessUseCaseDelegate {
public:
    std::atomic<bool> hasEnded = false;
    void progressDidUpdate(InitProcessUseCaseProtocol&, double percent, bool) override {
        show(std::to_string(static_cast<int>(percent)) + "%");
    }
    void initProcessCompleted(InitProcessUseCaseProtocol&) override { hasEnded = true; }  // not on the main queue
    void networkResponseError() override { show("a step got no answer"); }                // on the main queue
    void parsingError() override { show("a step got an answer that it cannot use"); }
};

void downloadOnce(const std::shared_ptr<KelvaDatabasePersistance>& database) {
    auto userDefaults = std::make_shared<BrenUserDefaults>();
    auto listener = std::make_shared<FirstDownload>();
    MacInitProcessAssembler assembler(database, std::make_shared<InMemoryStorage>(),
                                      std::make_shared<DatabaseConstants>(), userDefaults);
    assembler.setInitProcessUseCaseDelegate(listener);
    assembler.startInitProcess();
    MainQueue::shared()->runUntil([&] { return listener->hasEnded.load(); }, std::chrono::minutes(5));
}

void showLeads(const CustomView& view, std::function<void()> ended) {
    auto list = std::make_shared<GetListFilterRecords<>>();
    GetListFilterRecords<>::Request request;
    request.moduleName = "Leads";
    request.criteriaId = view.viewID;  // from GetCustomViewsUseCase
    request.from = 0;
    request.limit = 5;
    list->execute(request, {.onSuccess =
                                [list, ended](auto& response) {
                                    for (auto& record : *response.records) {
                                        auto created = record["CREATEDTIME"].asInteger();  // seconds since 1970
                                        show(record.getString("COMPANY") + "  " +
                                             (created ? Util::dateTimeFormatter().string(*created).value_or("") : ""));
                                    }
                                    ended();
                                },
                            .onError =
                                [ended](auto& error) {
                                    show(std::string(caseName(error.which())));
                                    ended();
                                },
                            .didComplete = nullptr});
}

class ViewsListener : public CustomViewChangedObserver {
    void customViewChanged(const std::vector<std::string>& viewIDs, const std::string& moduleName) override {
        show(std::to_string(viewIDs.size()) + " views of " + moduleName);  // on the bus's background queue
    }
};

class ViewReceiver : public GetCustomViewsUseCaseDelegate {
public:
    std::function<void(const std::optional<CustomView>& view)> received;
    void defaultCustomView(const std::optional<CustomView>& view, const std::string&) override { received(view); }
};

}  // namespace

int main() {
    configure(variable("CRM_HOME"));
    if (!trustFurtherAuthority(variable("CRM_AUTHORITY"))) return fail("no certificate");
    auto database = openDatabase();
    if (!database) return 1;

    auto viewsListener = std::make_shared<ViewsListener>();
    BrenNotificationCenter::shared().add<CustomViewChangedObserver>(viewsListener);
    if (!UserAccountsManager::userAccounts().isInitialDownloadComplete(variable("CRM_ACCOUNT"))) downloadOnce(database);

    auto views = std::make_shared<GetCustomViewsUseCase>();
    auto receiver = std::make_shared<ViewReceiver>();
    receiver->received = [](const std::optional<CustomView>& view) {
        if (view) return showLeads(*view, [] { MainQueue::shared()->stop(); });
        MainQueue::shared()->stop();
    };
    views->delegate = receiver;
    views->getDefaultCustomView("Leads");
    MainQueue::shared()->run();

    shutdown();
    CommonConfigration::sharedInstance().databaseAdapter = nullptr;
    database->deregisterDB();
}
