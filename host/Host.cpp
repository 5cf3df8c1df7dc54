#include "host/Host.h"

#include "platform/Files.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/configuration/DatabaseConstants.h"
#include "tarvobase/configuration/Lifecycle.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/database_layer/DatabaseNaming.h"
#include "tarvobase/download/DatabaseBinding.h"
#include "tarvobase/network_layer/NetworkAccess.h"
#include "tarvobase/utils/Util.h"

namespace tarvo::host {

namespace {

// An edition consists of its path, its init call and the names that go with them.
void setEdition(CommonConfigration& configuration, ServletPathV4 servlet) {
    bool crm = servlet == ServletPathV4::crm;
    configuration.servletPath = servlet;
    configuration.initDataType = crm ? InitDataType::crm : InitDataType::lumet;
    configuration.baseURLType = crm ? WebBaseURLType::crmV2 : WebBaseURLType::lumetV2;
    configuration.seModule = crm ? SeModule::crm : SeModule::lumet;
    configuration.attachments = crm ? Attachments::crm : Attachments::lumet;
}

void configure(const Arguments& arguments, const std::shared_ptr<Accounts>& accounts) {
    auto& configuration = CommonConfigration::sharedInstance();
    configuration.localDirectoryLocation = arguments.home;
    configuration.photosLocation = arguments.home + "/Photos";
    configuration.localCacheLocation = arguments.home + "/Cache";
    configuration.userDefaultsGroup = "tarvo-host";
    configuration.appBuildID = "tarvo-host";
    configuration.authentication = accounts;
    configuration.serverType = static_cast<MProxyServerType>(arguments.serverType);
    if (arguments.domain) configuration.dclBD = *arguments.domain;
    configuration.dclPrefix = arguments.prefix;
    configuration.fieldIdentifier = arguments.identifier == Identifier::column
                                        ? FieldIdentifier::crmColumnNameIdentifier()
                                        : FieldIdentifier::fieldAPINameIdentifier();
    setEdition(configuration, arguments.servlet);
    configuration.recordIDGenerator = ChangeQueues::shared().recordIds();
}

}  // namespace

Result<std::unique_ptr<Host>, std::string> Host::setUp(Arguments& arguments) {
    if (!files::createDirectories(arguments.home)) return "the folder " + arguments.home + " cannot be made";
    if (!arguments.authorityFile.empty() && !trustFurtherAuthority(arguments.authorityFile))
        return "no certificate can be read from " + arguments.authorityFile;
    std::unique_ptr<Host> host(new Host);
    host->passphrase_ = std::exchange(arguments.passphrase, std::nullopt);
    configure(arguments, host->accounts_);
    if (arguments.account) host->accounts_->signIn(*arguments.account, {.token = arguments.token});
    return host;
}

Host::~Host() {
    // Work under way ends before the database that it uses.
    shutdown();
    closeDatabase();
    CommonConfigration::sharedInstance().authentication = nullptr;
}

Result<std::string, Host::OpeningFailure> Host::openDatabase(const platform::Secret& passphrase, bool sends) {
    auto path = DatabaseConstants().databaseName();
    auto database = std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(path));
    std::optional<std::string> text = passphrase.text();
    auto opened = database->registerDB(text);
    platform::wipe(*text);
    if (!opened) return std::move(opened).error();
    // In the other naming, stored values would stand under names that nobody asks for.
    if (DatabaseNaming::isOther(*database, namingInForce())) {
        database->deregisterDB();
        return OpeningFailure{OpeningFailure::Kind::other,
                              "it was filled with the other naming of fields; see --identifier and --servlet"};
    }
    database_ = database;
    Util::performInitialOperations(std::make_shared<BrenUserDefaults>());
    CommonConfigration::sharedInstance().databaseAdapter = database;
    DatabaseBinding::bind(Scope::current(), BrenUserDefaults::ofCurrentAccount());
    if (sends) ChangeQueues::shared().start();
    return path;
}

bool Host::closeDatabase() {
    if (!database_) return false;
    ChangeQueues::shared().stop();
    CommonConfigration::sharedInstance().databaseAdapter = nullptr;
    database_->deregisterDB();
    database_.reset();
    return true;
}

}  // namespace tarvo::host
