#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox::calls {
namespace {

/// Describes a permission of a profile for the records of a module.
struct Rights {
    std::string_view key;
    /// Denied to every profile but "Administrator" in modules that make up the catalogue.
    bool isGuarded;
};

constexpr Rights rights[] = {{"View", false}, {"Create", true}, {"Edit", true}, {"Delete", true}, {"Export", true}};

bool isCatalogue(const std::string& module) {
    return module == "Products" || module == "PriceBooks" || module == "Campaigns";
}

const UserData* holderOf(const DataSet& data, const std::string& profileId) {
    for (const auto& user : data.users)
        if (user.profileId == profileId) return &user;
    return nullptr;
}

}  // namespace

// Positions 3 to 7 belong to older clients.
Reply userDetails(const Call& call) {
    const auto& user = call.data.userOf(call.account);
    ValueList row{user.account,
                  user.name(),
                  user.email,
                  user.timeZone,
                  "US|en",
                  "",
                  "",
                  "",
                  user.firstName,
                  user.lastName,
                  user.id,
                  user.status,
                  flag(user.confirmed),
                  user.role,
                  user.profile,
                  user.profileId};
    return Reply::of(envelope::answer({envelope::entry("userDetails", std::move(row), call.now)}, call.now));
}

Reply permissions(const Call& call) {
    const auto* holder = holderOf(call.data, call.request.parameter("profileid").value_or(""));
    bool isAdministrator = holder && holder->profile == "Administrator";
    ValueList rows;
    for (const auto& module : call.data.modules)
        for (const auto& right : rights)
            if (holder && module.hasOwnLists)
                rows.push_back(ValueList{module.name, module.apiName, right.key,
                                         flag(isAdministrator || !right.isGuarded || !isCatalogue(module.name))});
    return Reply::of(envelope::answer({envelope::entry("permissions", std::move(rows), call.now)}, call.now));
}

}  // namespace tarvo::sandbox::calls
