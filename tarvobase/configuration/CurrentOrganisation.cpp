#include "tarvobase/configuration/CurrentOrganisation.h"

#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

CurrentOrganisationInUserDefaults::CurrentOrganisationInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults)
    : userDefaults_(std::move(userDefaults)) {}

std::optional<std::string> CurrentOrganisationInUserDefaults::currentOrganisationID() {
    auto stored =
        userDefaults_->dictionaryForKey(std::string(currentOrganisationSetting), UserDefaultsGroup::current());
    auto id = stored ? stored->find(currentOrganisationIDKey) : nullptr;
    auto text = id ? id->asText() : nullptr;
    return text && !text->empty() ? std::optional(*text) : std::nullopt;
}

}  // namespace tarvo
