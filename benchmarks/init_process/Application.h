#pragma once

#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>

#include "benchmarks/init_process/SandboxProcess.h"
#include "benchmarks/init_process/WatchedDownload.h"
#include "platform/Log.h"
#include "platform/ProcessState.h"
#include "platform/SettingsStore.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/network_layer/NetworkAccess.h"

namespace tarvo::benchmarks {

/// Applies the settings of an application, and resets them for the benchmarks after this one.
class Application {
public:
    Application(const std::string& folder, const SandboxProcess& server) {
        platform::setLogSink([](std::string_view) {});
        platform::ProcessState::current().get<SettingsStores>().setFolder(folder + "/settings");
        if (!trustFurtherAuthority(server.authority)) std::abort();
        configuration_.localDirectoryLocation = folder;
        configuration_.userDefaultsGroup = "benchmark";
        configuration_.authentication = std::make_shared<SignedIn>();
        configuration_.serverType = MProxyServerType::type0;
        configuration_.dclBD = "localhost:" + server.port;
        configuration_.fieldIdentifier = FieldIdentifier::crmColumnNameIdentifier();
    }
    ~Application() {
        configuration_.fieldIdentifier = naming_;
        configuration_.databaseAdapter = nullptr;
        configuration_.authentication = nullptr;
    }

private:
    CommonConfigration& configuration_ = CommonConfigration::sharedInstance();
    const FieldIdentifier naming_ = configuration_.fieldIdentifier.get();
};

/// An encrypted file that the library has open.
class OpenDatabase {
public:
    explicit OpenDatabase(const std::string& path)
        : adapter(std::make_shared<KelvaDatabasePersistance>(StorageLocation::onDisk(path))) {
        if (!adapter->registerDB("a passphrase").ok()) std::abort();
        CommonConfigration::sharedInstance().databaseAdapter = adapter;
    }
    ~OpenDatabase() {
        CommonConfigration::sharedInstance().databaseAdapter = nullptr;
        adapter->deregisterDB();
    }
    const std::shared_ptr<KelvaDatabasePersistance> adapter;
};

}  // namespace tarvo::benchmarks
