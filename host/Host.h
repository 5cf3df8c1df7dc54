#pragma once

#include <memory>
#include <optional>
#include <string>

#include "host/Accounts.h"
#include "host/Arguments.h"
#include "platform/Result.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"

namespace tarvo::host {

/// The application around the library: configuration, accounts and the open database. One a process, on the main
/// thread; its end closes the database and shuts the library down.
class Host {
public:
    /// Sets the library up by the arguments; the text says why it cannot be done.
    static Result<std::unique_ptr<Host>, std::string> setUp(const Arguments& arguments);
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    using OpeningFailure = KelvaDatabasePersistance::OpeningFailure;
    /// Opens the database file of the selected account and hands it to the library. Gives its path.
    Result<std::string, OpeningFailure> openDatabase(const std::string& passphrase);
    /// False when none is open.
    bool closeDatabase();
    /// The open database, or null.
    const std::shared_ptr<KelvaDatabasePersistance>& database() const { return database_; }

    Accounts& accounts() { return *accounts_; }

private:
    Host() = default;
    std::shared_ptr<Accounts> accounts_ = std::make_shared<Accounts>();
    std::shared_ptr<KelvaDatabasePersistance> database_;
};

}  // namespace tarvo::host
