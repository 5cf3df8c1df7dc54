#pragma once

#include <optional>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/account/Organisation.h"

namespace tarvo {

/// The store of the account's organisations. From any thread.
class OrganisationPersistance : public virtual platform::Object {
public:
    /// The organisation that the account works on; absent until one was chosen.
    virtual std::optional<Organisation> getCurrentOrganisation() const = 0;
    /// Nothing takes the choice back.
    virtual void setCurrentOrganisation(const std::optional<Organisation>& organisation) = 0;
    /// Stores the list in place of the former one: an organisation that the account has left is in it no more.
    virtual void storeOrganisations(const std::vector<Organisation>& organisations) = 0;
    /// Absent until a list was stored.
    virtual std::optional<std::vector<Organisation>> getOrganisations() const = 0;
};

}  // namespace tarvo
