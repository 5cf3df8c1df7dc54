#pragma once

#include <optional>
#include <string>

#include "tarvobase/storage/StoredNames.h"

namespace tarvo {

struct User;

struct UserConstants : StoredNames<UserConstants, User> {
    std::string_view TableName = of("Users", "ACTIVE_USERS");
    std::string_view ID = of("ID", "user_id");
    std::string_view FirstName = of("firstName", "user_first_name");
    std::string_view LastName = of("lastName", "user_last_name");
    std::string_view Name = of("name", "user_name");
    std::string_view BrenUID = of("BrenUID", "user_brenuid");
    std::string_view Email = of("email", "user_email");
    std::string_view Status = of("status", "user_status");
    std::string_view Role = of("role", "user_role");
    std::string_view Confirm = of("confirm", "user_confirm");
    std::string_view Profile = of("profile", "user_profile");
    std::string_view ProfileID = of("profileID", "user_profile_id");
    std::string_view IsLoggedInUser = of("isLoggedInUser", "is_logged_in_user");
    std::string_view DateFormat = of("dateFormat", "date_format");
    std::string_view TimeFormat = of("timeFormat", "time_format");
    std::string_view TimeZone = of("timeZone", "time_zone");
    std::string_view NameFormat = of("nameFormat", "name_format");
};
struct UserDatabaseConstants : TableTwin<UserConstants> {};

/// A user of the organisation. `id` is the user's row on the server, `BrenUID` the account that the user signs in with.
struct User {
    std::string id;
    std::string firstName;
    std::string lastName;
    std::string name;
    std::string BrenUID;
    std::string email;
    std::string status;
    std::string role;
    bool confirm = false;  ///< whether the user has accepted the invitation and is active
    std::string profile;
    std::string profileID;
    std::optional<bool> isLoggedInUser;
    std::optional<std::string> dateFormat;  ///< patterns
    std::optional<std::string> timeFormat;
    std::optional<std::string> timeZone;  ///< a name such as "Europe/Berlin"
    std::optional<std::string> nameFormat;

    using InMemoryKeys = UserConstants;
    static constexpr auto fields() {
        using V = User;
        using Names = UserConstants;
        return describe(field("id", &V::id, &Names::ID), field("firstName", &V::firstName, &Names::FirstName),
                        field("lastName", &V::lastName, &Names::LastName), field("name", &V::name, &Names::Name),
                        field("BrenUID", &V::BrenUID, &Names::BrenUID), field("email", &V::email, &Names::Email),
                        field("status", &V::status, &Names::Status), field("role", &V::role, &Names::Role),
                        field("confirm", &V::confirm, &Names::Confirm), field("profile", &V::profile, &Names::Profile),
                        field("profileID", &V::profileID, &Names::ProfileID),
                        field("isLoggedInUser", &V::isLoggedInUser, &Names::IsLoggedInUser),
                        field("dateFormat", &V::dateFormat, &Names::DateFormat),
                        field("timeFormat", &V::timeFormat, &Names::TimeFormat),
                        field("timeZone", &V::timeZone, &Names::TimeZone),
                        field("nameFormat", &V::nameFormat, &Names::NameFormat));
    }
    friend bool operator==(const User&, const User&) = default;
};

}  // namespace tarvo
