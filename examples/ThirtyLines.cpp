#include "examples/Application.h"  // MySignIn, passphraseOfTheKeyRing, show and fail: what an application has anyway
#include "platform/MainQueue.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/Lifecycle.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/get_metadata/GetModulesUC.h"

using namespace tarvo;
using namespace example;

int main() {
    auto& configuration = CommonConfigration::sharedInstance();
    configuration.localDirectoryLocation = variable("HOME") + "/.local/share/crm";
    configuration.authentication = std::make_shared<MySignIn>();  // who is signed in, and the token
    configuration.dclBD = "crm.mycompany.example";

    auto path = DatabaseConstants().databaseName();
    auto database = std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(path));
    if (auto opened = database->registerDB(passphraseOfTheKeyRing()); !opened) return fail(opened.error().message);
    configuration.databaseAdapter = database;

    auto getModules = std::make_shared<GetModulesUC>();
    getModules->execute(GetModulesUC::Request({"Leads", "Contacts"}), [](auto* response, auto*) {
        if (response)
            for (auto& module : response->modules) show(module.pluralName);
        MainQueue::shared()->stop();
    });

    MainQueue::shared()->run();  // or hand in a poster of your own event loop
    shutdown();
}
