#include "tarvobase/value_objects/Organisation.h"

namespace tarvo {

namespace {

const auto organisationForm = form<Organisation, OrganisationConstants>(
    member(&Organisation::orgID, &OrganisationConstants::OrgID),
    member(&Organisation::orgName, &OrganisationConstants::OrgName),
    member(&Organisation::isAppDefault, &OrganisationConstants::IsAppDefault),
    member(&Organisation::isWebDefault, &OrganisationConstants::IsWebDefault));

}  // namespace

ValueMap OrganisationConstants::getDictionary(const Organisation& organisation) const {
    return organisationForm.toMap(organisation, *this, Form::plain);
}
std::optional<Organisation> OrganisationConstants::getOrganisation(const ValueMap& map) const {
    auto organisation = organisationForm.read(map, *this, Form::plain);
    return organisation.orgID.empty() ? std::nullopt : std::optional(std::move(organisation));
}
ValueMap OrganisationDatabaseConstants::getDictionary(const Organisation& organisation) const {
    return organisationForm.toMap(organisation, *this, Form::table);
}
Organisation OrganisationDatabaseConstants::getOrganisation(const Row& row) const {
    return organisationForm.read(row, *this, Form::table);
}

}  // namespace tarvo
