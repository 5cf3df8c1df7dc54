#include "tarvobase/value_objects/UserDetails.h"

namespace tarvo {

namespace {

const auto detailsForm =
    form<UserDetails, UserDetailsConstants>(member(&UserDetails::BrenUID, &UserDetailsConstants::BrenUID),
                                            member(&UserDetails::timeZone, &UserDetailsConstants::TimeZone),
                                            member(&UserDetails::country, &UserDetailsConstants::Country),
                                            member(&UserDetails::language, &UserDetailsConstants::Language),
                                            member(&UserDetails::email, &UserDetailsConstants::Email),
                                            member(&UserDetails::secondEmail, &UserDetailsConstants::SecondEmail));

}  // namespace

ValueMap UserDetailsConstants::getDictionary(const UserDetails& details) const {
    return detailsForm.toMap(details, *this, Form::plain);
}
UserDetails UserDetailsConstants::getUserDetails(const ValueMap& map) const {
    return detailsForm.read(map, *this, Form::plain);
}

InMemoryPropertyValue propertyForKey(const UserDetails& details, std::string_view key) {
    return propertyOf(detailsForm, details, key, UserDetailsConstants());
}

}  // namespace tarvo
