#pragma once

#include <string>

#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// An organisation of the account.
struct Organisation {
    std::string orgID;
    std::string orgName;
    bool isAppDefault = false;  ///< the one that this application works on
    bool isWebDefault = false;  ///< the one that the account's browser sessions open

    static constexpr auto fields() {
        return describe(field("orgID", &Organisation::orgID), field("orgName", &Organisation::orgName),
                        field("isAppDefault", &Organisation::isAppDefault),
                        field("isWebDefault", &Organisation::isWebDefault));
    }
    friend bool operator==(const Organisation&, const Organisation&) = default;
};

struct OrganisationConstants {
    std::string_view TableName = "Organisations";
    std::string_view OrgID = "orgID";
    std::string_view OrgName = "orgName";
    std::string_view IsAppDefault = "isAppDefault";
    std::string_view IsWebDefault = "isWebDefault";

    ValueMap getDictionary(const Organisation& organisation) const;
    /// Nothing for a map without an id.
    std::optional<Organisation> getOrganisation(const ValueMap& map) const;
};

struct OrganisationDatabaseConstants : OrganisationConstants {
    constexpr OrganisationDatabaseConstants() {
        TableName = "ORGANISATIONS";
        OrgID = "org_id";
        OrgName = "org_name";
        IsAppDefault = "is_app_default";
        IsWebDefault = "is_web_default";
    }
    ValueMap getDictionary(const Organisation& organisation) const;
    Organisation getOrganisation(const Row& row) const;
};

}  // namespace tarvo
