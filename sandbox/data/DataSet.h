#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "sandbox/SandboxAccounts.h"
#include "sandbox/changes/ChangeLog.h"
#include "sandbox/changes/KeptFiles.h"
#include "sandbox/changes/RecordRules.h"
#include "sandbox/data/Currencies.h"
#include "sandbox/data/Generator.h"
#include "sandbox/data/Metadata.h"
#include "sandbox/data/Pipelines.h"
#include "sandbox/data/RecordOrders.h"
#include "sandbox/data/RecordStore.h"
#include "sandbox/data/SyncState.h"
#include "sandbox/data/Views.h"

namespace tarvo::sandbox {

struct ModuleData {
    std::string id;
    std::string name;
    std::string singular;
    std::string plural;
    std::string apiName;
    /// The server's "generated_type": "default", "custom", "subform" and so on.
    std::string type;
    int position;
    /// Whether it has lists of its own; false for modules whose rows lie under records of another.
    bool hasOwnLists;
};

struct UserData {
    std::string id;
    std::string firstName;
    std::string lastName;
    /// The account that this user signs in with. Users beyond the accounts have one without any token.
    std::string account;
    std::string email;
    std::string status;
    std::string role;
    bool confirmed;
    std::string profile;
    std::string profileId;
    std::string timeZone;

    std::string name() const { return firstName + " " + lastName; }
};

struct OrganisationData {
    std::string id;
    std::string name;
    bool isDefault;
};

struct TagData {
    std::string id;
    std::string name;
    std::string module;
};

/// Holds the content of the server: one organisation with its users, modules and settings, the same for every run with
/// the same seed. The first users belong to the accounts of the command line, in their order. Calls change it, so a
/// caller holds the server's lock.
class DataSet {
public:
    /// Makes `recordsPerModule` records in each module that has lists of its own.
    DataSet(std::uint64_t seed, const Accounts& accounts, std::size_t recordsPerModule,
            const std::string& mailDomain = "example.com");
    DataSet(const DataSet&) = delete;
    DataSet& operator=(const DataSet&) = delete;

    IdSequence ids;
    std::vector<ModuleData> modules;
    MetadataByModule metadata;
    std::vector<UserData> users;
    std::vector<OrganisationData> organisations;
    /// Pairs of key and value.
    std::vector<std::pair<std::string, std::string>> companyInfo;
    std::vector<TagData> tags;
    /// Both may be used without the server's lock.
    std::unique_ptr<RecordStore> records;
    RecordOrders recordOrders;
    /// By module name; a module without rules has none that refuse anything.
    std::map<std::string, RecordRules, std::less<>> rules;
    ChangeLog changes;
    KeptFiles files;
    SyncState sync;
    std::vector<ViewData> views;
    std::vector<CurrencyData> currencies;
    std::vector<TaxData> taxes;
    DealStages dealStages;

    /// Returns null when there is no module of that name or API name.
    const ModuleData* module(std::string_view nameOrApiName) const;
    const UserData& userOf(std::string_view account) const;
};

}  // namespace tarvo::sandbox
