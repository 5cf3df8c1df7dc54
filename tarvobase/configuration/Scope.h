#pragma once

#include <memory>
#include <string>

#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

class DatabaseAdapter;

/// Whom a piece of work belongs to. An operation takes one copy when it is made and hands it to its services and
/// stores, so that an answer which arrives after a switch of account or organisation reaches nobody else's data. The
/// host switches in this order: it takes `databaseAdapter` away, selects the account and its organisation, and sets the
/// adapter of the new account.
struct Scope {
    std::string account;                               ///< id of the account; empty when nobody is signed in
    std::string organisation;                          ///< `CommonConfigration.currentOrgID`; empty for none
    std::shared_ptr<DatabaseAdapter> databaseAdapter;  ///< null before a database is open
    UserDefaultsGroup settings;                        ///< the account's own settings
    FieldIdentifier naming;
    std::shared_ptr<DatabaseAdapter> databaseInForce;  ///< the configuration's when the scope was taken

    /// The scope of the moment. From any thread.
    static Scope current();
    /// The scope of the moment over another adapter, for hosts and tests that hand one over. May be null.
    static Scope over(std::shared_ptr<DatabaseAdapter> databaseAdapter);

    /// Returns false once another account, organisation or database is in force. A scope without a database does not
    /// mind one that is opened: its work stores nothing there. From any thread.
    bool isCurrent() const;
};

}  // namespace tarvo
