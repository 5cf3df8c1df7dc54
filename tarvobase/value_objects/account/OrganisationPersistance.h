#pragma once

#include <optional>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/value_objects/account/Organisation.h"

namespace tarvo {

/// The store of the account's organisations. Any thread may use it.
class OrganisationPersistance : public virtual platform::Object {
public:
    /// Returns the organisation that the account works on, or nullopt until one has been chosen.
    virtual std::optional<Organisation> getCurrentOrganisation() const = 0;
    /// Chooses the organisation; nullopt takes the choice back.
    virtual void setCurrentOrganisation(const std::optional<Organisation>& organisation) = 0;
    /// Replaces the stored list, so that an organisation which the account has left is gone. Returns whether it was
    /// stored.
    virtual bool storeOrganisations(const std::vector<Organisation>& organisations) = 0;
    /// Returns nullopt until a list has been stored.
    virtual std::optional<std::vector<Organisation>> getOrganisations() const = 0;
};

}  // namespace tarvo
