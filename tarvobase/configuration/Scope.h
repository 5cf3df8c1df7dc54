#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

class DatabaseAdapter;

/// The account, organisation and database that a piece of work belongs to. An operation takes one copy when it is made
/// and hands it to its services and stores, so that an answer which arrives after a switch never reaches the data of
/// another account or organisation.
///
/// A host switches in this order: it sets `CommonConfigration.databaseAdapter` to null, selects the account and its
/// organisation, and sets the adapter of the new account. Then it makes new use cases, since those of the former
/// account stay with that account.
struct Scope {
    std::string account;                               ///< id of the account; empty if nobody is signed in
    std::string organisation;                          ///< `CommonConfigration.currentOrgID`; empty for none
    std::shared_ptr<DatabaseAdapter> databaseAdapter;  ///< null while no database is open
    UserDefaultsGroup settings;                        ///< the account's own settings
    FieldIdentifier naming;
    std::shared_ptr<DatabaseAdapter> databaseInForce;  ///< that of the configuration when the scope was taken

    /// Returns the scope that is in force now. It may be called from any thread.
    static Scope current();
    /// Returns the scope that is in force now, over another adapter, which may be null. It serves hosts and tests that
    /// hand an adapter over.
    static Scope over(std::shared_ptr<DatabaseAdapter> databaseAdapter);

    /// Returns false once another account, organisation or database is in force. A scope that was taken without a
    /// database stays current when one is opened, since its work stores nothing there. May be called from any thread.
    bool isCurrent() const;

    /// Returns the name of a table that each organisation has for itself: `name` followed by "_" and the organisation's
    /// id, or `name` alone while no organisation is chosen.
    std::string tableName(std::string_view name) const;
};

}  // namespace tarvo
