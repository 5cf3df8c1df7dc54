#pragma once

#include <optional>
#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct UserDetails;

struct UserDetailsConstants : StoredNames<UserDetailsConstants, UserDetails> {
    std::string_view TableName = "UserDetails";
    std::string_view BrenUID = "BrenUID";
    std::string_view TimeZone = "timeZone";
    std::string_view Country = "country";
    std::string_view Language = "language";
    std::string_view Email = "email";
    std::string_view SecondEmail = "secondEmail";
};

/// What the server sends about the account itself.
struct UserDetails {
    std::string BrenUID;
    std::string timeZone;  ///< a name such as "Europe/Berlin"
    std::string country;   ///< codes such as "US" and "en"
    std::string language;
    std::string email;
    std::optional<std::string> secondEmail;

    using InMemoryKeys = UserDetailsConstants;
    static constexpr auto fields() {
        using V = UserDetails;
        using Names = UserDetailsConstants;
        return describe(
            field("BrenUID", &V::BrenUID, &Names::BrenUID), field("timeZone", &V::timeZone, &Names::TimeZone),
            field("country", &V::country, &Names::Country), field("language", &V::language, &Names::Language),
            field("email", &V::email, &Names::Email), field("secondEmail", &V::secondEmail, &Names::SecondEmail));
    }
    friend bool operator==(const UserDetails&, const UserDetails&) = default;
};

}  // namespace tarvo
