#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "host/Accounts.h"
#include "host/Arguments.h"
#include "platform/Result.h"
#include "platform/Secret.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"

namespace tarvo::host {

/// The application around the library: configuration, accounts and the open database. There is one per process, on the
/// main thread; its destructor closes the database and shuts the library down.
class Host {
public:
    /// Sets the library up by the arguments, whose passphrase it takes, or returns why it cannot be done.
    static Result<std::unique_ptr<Host>, std::string> setUp(Arguments& arguments);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    using OpeningFailure = KelvaDatabasePersistance::OpeningFailure;
    /// Opens the database file of the selected account, hands it to the library and returns its path.
    Result<std::string, OpeningFailure> openDatabase(const platform::Secret& passphrase, bool sends = true);
    /// Returns false if none is open.
    bool closeDatabase();
    /// Returns the open database, or null.
    const std::shared_ptr<KelvaDatabasePersistance>& database() const { return database_; }

    Accounts& accounts() { return *accounts_; }
    /// Hands out the passphrase of the arguments, which is wiped once the caller lets go of it. Nullopt if there is
    /// none or it was handed out before.
    std::optional<platform::Secret> takePassphrase() { return std::exchange(passphrase_, std::nullopt); }

private:
    Host() = default;
    std::shared_ptr<Accounts> accounts_ = std::make_shared<Accounts>();
    std::shared_ptr<KelvaDatabasePersistance> database_;
    std::optional<platform::Secret> passphrase_;
};

}  // namespace tarvo::host
