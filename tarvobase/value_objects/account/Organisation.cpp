#include "tarvobase/value_objects/account/Organisation.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

template struct StoredNames<OrganisationConstants, Organisation>;

std::optional<Organisation> OrganisationConstants::getOrganisation(const ValueMap& map) const {
    auto organisation = getValue(map);
    return organisation.orgID.empty() ? std::nullopt : std::optional(std::move(organisation));
}

}  // namespace tarvo
