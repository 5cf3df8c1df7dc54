#pragma once

#include <optional>
#include <string>

#include "tarvobase/usecase/Describe.h"
#include "tarvobase/value_objects/InMemoryDatabaseAdapter.h"
#include "tarvobase/value_objects/StoredForm.h"

namespace tarvo {

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

    static constexpr auto fields() {
        return describe(field("id", &User::id), field("firstName", &User::firstName),
                        field("lastName", &User::lastName), field("name", &User::name),
                        field("BrenUID", &User::BrenUID), field("email", &User::email), field("status", &User::status),
                        field("role", &User::role), field("confirm", &User::confirm), field("profile", &User::profile),
                        field("profileID", &User::profileID), field("isLoggedInUser", &User::isLoggedInUser),
                        field("dateFormat", &User::dateFormat), field("timeFormat", &User::timeFormat),
                        field("timeZone", &User::timeZone), field("nameFormat", &User::nameFormat));
    }
    friend bool operator==(const User&, const User&) = default;
};

struct UserConstants {
    std::string_view TableName = "Users";
    std::string_view ID = "ID";
    std::string_view FirstName = "firstName";
    std::string_view LastName = "lastName";
    std::string_view Name = "name";
    std::string_view BrenUID = "BrenUID";
    std::string_view Email = "email";
    std::string_view Status = "status";
    std::string_view Role = "role";
    std::string_view Confirm = "confirm";
    std::string_view Profile = "profile";
    std::string_view ProfileID = "profileID";
    std::string_view IsLoggedInUser = "isLoggedInUser";
    std::string_view DateFormat = "dateFormat";
    std::string_view TimeFormat = "timeFormat";
    std::string_view TimeZone = "timeZone";
    std::string_view NameFormat = "nameFormat";

    ValueMap getDictionary(const User& user) const;
    User getUser(const ValueMap& map) const;
};

struct UserDatabaseConstants : UserConstants {
    constexpr UserDatabaseConstants() {
        TableName = "ACTIVE_USERS";
        ID = "user_id";
        FirstName = "user_first_name";
        LastName = "user_last_name";
        Name = "user_name";
        BrenUID = "user_brenuid";
        Email = "user_email";
        Status = "user_status";
        Role = "user_role";
        Confirm = "user_confirm";
        Profile = "user_profile";
        ProfileID = "user_profile_id";
        IsLoggedInUser = "is_logged_in_user";
        DateFormat = "date_format";
        TimeFormat = "time_format";
        TimeZone = "time_zone";
        NameFormat = "name_format";
    }
    ValueMap getDictionary(const User& user) const;
    User getUser(const Row& row) const;
};

/// A member by its plain key, for filters in memory.
InMemoryPropertyValue propertyForKey(const User& user, std::string_view key);

}  // namespace tarvo
