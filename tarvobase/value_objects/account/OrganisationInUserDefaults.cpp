#include "tarvobase/value_objects/account/OrganisationInUserDefaults.h"

namespace tarvo {

namespace {

const std::string currentOrganisationKey(currentOrganisationSetting);
const std::string organisationsKey = "Organisations";

}  // namespace

OrganisationInUserDefaults::OrganisationInUserDefaults()
    : OrganisationInUserDefaults(BrenUserDefaults::ofCurrentAccount()) {}
OrganisationInUserDefaults::OrganisationInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : userDefaults_(std::move(userDefaults)) {}

std::optional<Organisation> OrganisationInUserDefaults::getCurrentOrganisation() const {
    auto stored = userDefaults_->dictionaryForKey(currentOrganisationKey, UserDefaultsGroup::current());
    return stored ? OrganisationConstants().getOrganisation(*stored) : std::nullopt;
}

void OrganisationInUserDefaults::setCurrentOrganisation(const std::optional<Organisation>& organisation) {
    auto stored = organisation ? std::optional(OrganisationConstants().getDictionary(*organisation)) : std::nullopt;
    userDefaults_->setSecureDictionary(stored, currentOrganisationKey, UserDefaultsGroup::current());
}

bool OrganisationInUserDefaults::storeOrganisations(const std::vector<Organisation>& organisations) {
    ValueList stored;
    for (auto& organisation : organisations) stored.emplace_back(OrganisationConstants().getDictionary(organisation));
    return userDefaults_->update(organisationsKey, UserDefaultsGroup::current(),
                                 [&](const Value&) { return Value(stored); });
}

std::optional<std::vector<Organisation>> OrganisationInUserDefaults::getOrganisations() const {
    auto stored = userDefaults_->arrayForKey(organisationsKey, UserDefaultsGroup::current());
    if (!stored) return std::nullopt;
    std::vector<Organisation> organisations;
    for (auto& entry : *stored)
        if (auto organisation = entry.asMap() ? OrganisationConstants().getOrganisation(*entry.asMap()) : std::nullopt)
            organisations.push_back(*std::move(organisation));
    return organisations;
}

std::optional<std::string> OrganisationInUserDefaults::currentOrganisationID() {
    return CurrentOrganisationInUserDefaults(userDefaults_).currentOrganisationID();
}

}  // namespace tarvo
