#include "tarvobase/value_objects/OrganisationInUserDefaults.h"

#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

namespace {
const std::string currentOrganisationKey = "CurrentOrganisation";
}

OrganisationInUserDefaults::OrganisationInUserDefaults() : OrganisationInUserDefaults(std::make_shared<BrenUserDefaults>()) {}
OrganisationInUserDefaults::OrganisationInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : userDefaults_(std::move(userDefaults)) {}

std::optional<Organisation> OrganisationInUserDefaults::getCurrentOrganisation() const {
    auto stored = userDefaults_->dictionaryForKey(currentOrganisationKey, UserDefaultsGroup::current());
    auto id = stored ? readKey<std::string>(*stored, "orgID") : std::nullopt;
    if (!id) return std::nullopt;
    return Organisation{*id, readKey<std::string>(*stored, "orgName").value_or(""),
                        readKey<bool>(*stored, "isAppDefault").value_or(false), readKey<bool>(*stored, "isWebDefault").value_or(false)};
}

void OrganisationInUserDefaults::setCurrentOrganisation(const std::optional<Organisation>& organisation) {
    std::optional<ValueMap> stored;
    if (organisation) {
        stored.emplace();
        forEachField(*organisation, [&](std::string_view name, const auto& member) { stored->set(name, member); });
    }
    userDefaults_->setSecureDictionary(stored, currentOrganisationKey, UserDefaultsGroup::current());
}

std::optional<std::string> OrganisationInUserDefaults::currentOrganisationID() {
    auto organisation = getCurrentOrganisation();
    return organisation ? std::optional(organisation->orgID) : std::nullopt;
}

}  // namespace tarvo
