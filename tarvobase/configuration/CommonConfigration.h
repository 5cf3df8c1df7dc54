#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/DispatchQueue.h"
#include "tarvobase/configuration/AuthenticationProtocol.h"
#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/configuration/ServerTypes.h"
#include "tarvobase/configuration/Setting.h"

namespace tarvo {

class DatabaseAdapter;
struct CustomViewDatabaseConstants;

/// Makes the temporary ids of new records.
class NewRecordIdGenerator : public virtual platform::Object {
public:
    /// Returns an id that it has never returned before, not even before a crash.
    virtual std::string getNewRecordId() = 0;
    virtual void resetRecordId() = 0;
};

/// Names the database files.
class BrenDatabaseConstants : public virtual platform::Object {
public:
    /// Returns the path of the current account's file.
    virtual std::string databaseName() const = 0;
    /// Returns the path of the file of the account with this id.
    virtual std::string databaseName(const std::string& accountId) const = 0;
    virtual std::string databaseFolder() const = 0;
};

/// The settings that the host decides: server, account, folders and variant. The host fills them in at start-up and may
/// change them while it runs, from any thread; the library assigns none of them. Absent paths and ids are nullopt.
///
/// Work that belongs to an account takes a `Scope` when it begins, and does not come back here for the account, the
/// organisation or the database. All other fields are read at the moment of use.
///
/// At least `localDirectoryLocation`, `authentication`, `userDefaultsGroup` and the server fields must be set before
/// anything else of the library is used, and `databaseAdapter` when the account's database is open. `Scope` describes
/// the order in which a host switches accounts.
class CommonConfigration {
public:
    static CommonConfigration& sharedInstance();

    CommonConfigration();

    /// The accounts and their tokens. Every authenticated call asks here.
    Setting<std::shared_ptr<AuthenticationProtocol>> authentication;
    /// Returns the id of the current account. If the function is empty, `authentication` is asked for its current user.
    Setting<std::function<std::optional<std::string>()>> currentAccountIDSource;
    std::optional<std::string> getCurrentAccountID() const;

    /// The folder for photos of records and users.
    Setting<std::optional<std::string>> photosLocation;
    /// The value of the request header "x-app-buildid".
    Setting<std::optional<std::string>> appBuildID;
    /// The root folder of local files. The databases are in "/Databases" below it.
    Setting<std::optional<std::string>> localDirectoryLocation;
    /// Returns `localDirectoryLocation` followed by "/VoiceNotes/". The first answer is kept. Calling it before
    /// `localDirectoryLocation` is set is a programming error: it then returns the relative folder, which is not kept.
    std::string voiceFileDirectoryLocation();
    /// Held for the host.
    Setting<std::optional<std::string>> localCacheLocation;

    /// The open database of the current account.
    Setting<std::shared_ptr<DatabaseAdapter>> databaseAdapter;
    /// Held for the host.
    Setting<std::optional<NetworkApadapterType>> networkAdapter;
    Setting<PersistenceMode> persistenceMode{PersistenceMode::offline};
    /// Whether global search stores its results. The value is fixed.
    static constexpr SearchResultMode searchResultMode = SearchResultMode::full;

    Setting<MProxyServerType> serverType{MProxyServerType::type1};
    Setting<SeModule> seModule{SeModule::crm};
    Setting<Attachments> attachments{Attachments::crm};
    /// The suite of the settings store. It is read once, when a store is made.
    Setting<std::optional<std::string>> userDefaultsGroup;
    /// The serial queue on which the database writes. It is read when a database is opened.
    Setting<std::shared_ptr<DispatchQueue>> dbQueue;
    /// The domain of base URLs.
    Setting<std::string> dclBD;
    /// The prefix of host names that selects a data centre.
    Setting<std::optional<std::string>> dclPrefix;
    /// Sent as the parameter "domain" of authenticated requests if it is present.
    Setting<std::optional<std::string>> verticalDomain;
    /// The id of the chosen organisation; empty if none is chosen. The names of the organisation's own tables end with
    /// it, and requests send it in the header "X-CRM-ORG".
    Setting<std::string> currentOrgID;
    /// Held for the host.
    Setting<std::string> currentOrgAPIURL;
    Setting<std::string> appUserAgent;

    Setting<ServletPathV4> servletPath{ServletPathV4::crm};
    Setting<WebBaseURLType> baseURLType{WebBaseURLType::crmV2};
    Setting<InitDataType> initDataType{InitDataType::crm};
    Setting<GetMetadataApiVersion> getMetadataApiVersion{GetMetadataApiVersion::lumet};
    /// Whether authenticated requests may carry the organisation id.
    Setting<bool> passOrgID{false};
    /// Whether views keep the server's own criteria. `customViewDBConstants` follows from it.
    Setting<bool> serverCVCriteria{false};
    /// Returns the columns that the table of custom views has under the present `serverCVCriteria`.
    const CustomViewDatabaseConstants& customViewDBConstants() const;
    Setting<FieldIdentifier> fieldIdentifier;
    /// Whether parsing rewrites system properties ("$name").
    Setting<bool> modifySystemProperties{true};

    Setting<int> maxSingleMerge{3};
    /// The number of attempts after which a transaction gives up.
    Setting<int> maxSyncAttempt{3};
    Setting<std::chrono::seconds> maxSyncTimeInterval{std::chrono::seconds(300)};
    Setting<std::chrono::seconds> maxFileSyncTimeInterval{std::chrono::seconds(600)};

    /// Whether modules have an id of the server instead of going by their names.
    Setting<bool> isModuleIDSupported{false};
    /// Whether rows of layouts have two more columns.
    Setting<bool> hasAdditionalInfoAndSubformKeysInLayoutMeta{false};
    /// The host sets it before the first new record is made.
    Setting<std::shared_ptr<NewRecordIdGenerator>> recordIDGenerator;

private:
    Setting<std::optional<std::string>> voiceFileDirectory_;
};

/// Returns a copy of the naming that is in force now.
inline FieldIdentifier namingInForce() { return CommonConfigration::sharedInstance().fieldIdentifier.get(); }

}  // namespace tarvo
