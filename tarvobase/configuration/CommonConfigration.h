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

/// Source of temporary ids of new records.
class NewRecordIdGenerator : public virtual platform::Object {
public:
    /// Never the same id twice, also after a crash.
    virtual std::string getNewRecordId() = 0;
    virtual void resetRecordId() = 0;
};

/// Where the database files lie.
class BrenDatabaseConstants : public virtual platform::Object {
public:
    /// Path of the file of the current account.
    virtual std::string databaseName() const = 0;
    /// Path of the file of the account with this id.
    virtual std::string databaseName(const std::string& accountId) const = 0;
    virtual std::string databaseFolder() const = 0;
};

/// Everything the host decides: which server, which account, which folders, which variant. The host fills it in at
/// start-up and may change it while running, from any thread; no code of the library assigns a field. Every reader
/// reads the live value at the moment of use. Absent fields of paths and ids are empty optionals.
///
/// At least `localDirectoryLocation`, `authentication`, `userDefaultsGroup` and the server fields must be set before
/// anything else of the library is used; `databaseAdapter` once the account's database is open.
class CommonConfigration {
public:
    static CommonConfigration& sharedInstance();

    CommonConfigration();

    /// User id and token source of every authenticated call.
    Setting<std::shared_ptr<AuthenticationProtocol>> authentication;
    /// Id of the current account; an empty function asks `authentication` for its current user.
    Setting<std::function<std::optional<std::string>()>> currentAccountIDSource;
    std::optional<std::string> getCurrentAccountID() const;

    /// Folder of record and user photos.
    Setting<std::optional<std::string>> photosLocation;
    /// Value of the request header "x-app-buildid".
    Setting<std::optional<std::string>> appBuildID;
    /// Root of local files: the databases lie in "/Databases" below it.
    Setting<std::optional<std::string>> localDirectoryLocation;
    /// `localDirectoryLocation` and "/VoiceNotes/", computed at the first call and kept. Calling it while that is
    /// absent is a programming error; the answer is then the relative folder, and nothing is kept.
    std::string voiceFileDirectoryLocation();
    /// Held for the host.
    Setting<std::optional<std::string>> localCacheLocation;

    /// The open database of the current account.
    Setting<std::shared_ptr<DatabaseAdapter>> databaseAdapter;
    /// Held for the host.
    Setting<std::optional<NetworkApadapterType>> networkAdapter;
    Setting<PersistenceMode> persistenceMode{PersistenceMode::offline};
    /// Whether global search stores its results. Fixed.
    static constexpr SearchResultMode searchResultMode = SearchResultMode::full;

    Setting<MProxyServerType> serverType{MProxyServerType::type1};
    Setting<SeModule> seModule{SeModule::crm};
    Setting<Attachments> attachments{Attachments::crm};
    /// Suite name of the settings store, read once when the store is made.
    Setting<std::optional<std::string>> userDefaultsGroup;
    /// Serial queue on which the database writes, read when a database is opened.
    Setting<std::shared_ptr<DispatchQueue>> dbQueue;
    /// Domain part of base URLs.
    Setting<std::string> dclBD;
    /// Host-name prefix of a data centre.
    Setting<std::optional<std::string>> dclPrefix;
    /// Sent as the parameter "domain" of authenticated requests when present.
    Setting<std::optional<std::string>> verticalDomain;
    /// The chosen organisation; empty for none. Stands behind the names of its own tables and in the header
    /// "X-CRM-ORG".
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
    /// Whether views keep the server's own criteria; decides `customViewDBConstants`.
    Setting<bool> serverCVCriteria{false};
    /// The columns of the table of custom views that go with `serverCVCriteria`.
    const CustomViewDatabaseConstants& customViewDBConstants() const;
    Setting<FieldIdentifier> fieldIdentifier;
    /// Whether parsing rewrites system properties ("$name").
    Setting<bool> modifySystemProperties{true};

    Setting<int> maxSingleMerge{3};
    /// Attempts before a transaction gives up.
    Setting<int> maxSyncAttempt{3};
    Setting<std::chrono::seconds> maxSyncTimeInterval{std::chrono::seconds(300)};
    Setting<std::chrono::seconds> maxFileSyncTimeInterval{std::chrono::seconds(600)};

    /// Whether modules have a server id of their own rather than going by their name.
    Setting<bool> isModuleIDSupported{false};
    /// Whether layout rows hold two more columns.
    Setting<bool> hasAdditionalInfoAndSubformKeysInLayoutMeta{false};
    /// Must be set before the first new record is asked for.
    Setting<std::shared_ptr<NewRecordIdGenerator>> recordIDGenerator;

private:
    Setting<std::optional<std::string>> voiceFileDirectory_;
};

/// A table's name for the chosen organisation: "_" and its id behind the name, or the name alone when none is chosen.
std::string organisationTableName(std::string_view name);

/// A copy of the naming that is in force now.
inline FieldIdentifier namingInForce() { return CommonConfigration::sharedInstance().fieldIdentifier.get(); }

}  // namespace tarvo
