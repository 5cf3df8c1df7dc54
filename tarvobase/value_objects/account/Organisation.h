#pragma once

#include <optional>
#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct Organisation;

struct OrganisationConstants : StoredNames<OrganisationConstants, Organisation> {
    std::string_view TableName = of("Organisations", "ORGANISATIONS");
    std::string_view OrgID = of("orgID", "org_id");
    std::string_view OrgName = of("orgName", "org_name");
    std::string_view IsAppDefault = of("isAppDefault", "is_app_default");
    std::string_view IsWebDefault = of("isWebDefault", "is_web_default");

    /// Returns nullopt for a map without an id.
    std::optional<Organisation> getOrganisation(const ValueMap& map) const;
};
struct OrganisationDatabaseConstants : TableTwin<OrganisationConstants> {};

/// An organisation of the account.
struct Organisation {
    std::string orgID;
    std::string orgName;
    bool isAppDefault = false;  ///< the one that this application works on
    bool isWebDefault = false;  ///< the one that the account's browser sessions open

    static constexpr auto fields() {
        using V = Organisation;
        using Names = OrganisationConstants;
        return describe(field("orgID", &V::orgID, &Names::OrgID), field("orgName", &V::orgName, &Names::OrgName),
                        field("isAppDefault", &V::isAppDefault, &Names::IsAppDefault),
                        field("isWebDefault", &V::isWebDefault, &Names::IsWebDefault));
    }
    friend bool operator==(const Organisation&, const Organisation&) = default;
};

}  // namespace tarvo
