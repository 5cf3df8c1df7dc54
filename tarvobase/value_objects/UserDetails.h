#pragma once

#include <optional>
#include <string>

#include "tarvobase/value_objects/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

/// What the server tells of the account itself.
struct UserDetails {
    std::string BrenUID;
    std::string timeZone;  ///< a name such as "Europe/Berlin"
    std::string country;   ///< codes such as "US" and "en"
    std::string language;
    std::string email;
    std::optional<std::string> secondEmail;

    static constexpr auto fields() {
        return describe(field("BrenUID", &UserDetails::BrenUID), field("timeZone", &UserDetails::timeZone),
                        field("country", &UserDetails::country), field("language", &UserDetails::language),
                        field("email", &UserDetails::email), field("secondEmail", &UserDetails::secondEmail));
    }
    friend bool operator==(const UserDetails&, const UserDetails&) = default;
};

struct UserDetailsConstants {
    std::string_view TableName = "UserDetails";
    std::string_view BrenUID = "BrenUID";
    std::string_view TimeZone = "timeZone";
    std::string_view Country = "country";
    std::string_view Language = "language";
    std::string_view Email = "email";
    std::string_view SecondEmail = "secondEmail";

    ValueMap getDictionary(const UserDetails& details) const;
    UserDetails getUserDetails(const ValueMap& map) const;
};

/// A member by its plain key, for filters in memory.
InMemoryPropertyValue propertyForKey(const UserDetails& details, std::string_view key);

}  // namespace tarvo
