#include "tarvobase/value_objects/User.h"

namespace tarvo {

namespace {

const auto userForm = form<User, UserConstants>(
    member(&User::id, &UserConstants::ID), member(&User::firstName, &UserConstants::FirstName),
    member(&User::lastName, &UserConstants::LastName), member(&User::name, &UserConstants::Name),
    member(&User::BrenUID, &UserConstants::BrenUID), member(&User::email, &UserConstants::Email),
    member(&User::status, &UserConstants::Status), member(&User::role, &UserConstants::Role),
    member(&User::confirm, &UserConstants::Confirm), member(&User::profile, &UserConstants::Profile),
    member(&User::profileID, &UserConstants::ProfileID), member(&User::isLoggedInUser, &UserConstants::IsLoggedInUser),
    member(&User::dateFormat, &UserConstants::DateFormat), member(&User::timeFormat, &UserConstants::TimeFormat),
    member(&User::timeZone, &UserConstants::TimeZone), member(&User::nameFormat, &UserConstants::NameFormat));

}  // namespace

ValueMap UserConstants::getDictionary(const User& user) const { return userForm.toMap(user, *this, Form::plain); }
User UserConstants::getUser(const ValueMap& map) const { return userForm.read(map, *this, Form::plain); }
ValueMap UserDatabaseConstants::getDictionary(const User& user) const {
    return userForm.toMap(user, *this, Form::table);
}
User UserDatabaseConstants::getUser(const Row& row) const { return userForm.read(row, *this, Form::table); }

InMemoryPropertyValue propertyForKey(const User& user, std::string_view key) {
    return propertyOf(userForm, user, key, UserConstants());
}

}  // namespace tarvo
