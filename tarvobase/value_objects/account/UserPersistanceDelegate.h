#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/account/User.h"

namespace tarvo {

/// The store of users. Reads fail with `ParserError::noData` when there is no such user, or no answer at all; a list
/// may be empty. Lists are in no particular order. From any thread.
class UserPersistanceDelegate : public virtual platform::Object {
public:
    using Users = Result<std::vector<User>, ParserError>;

    virtual void storeUser(const User& user) = 0;
    virtual void storeUsers(const std::vector<User>& users) = 0;
    /// Puts `user` in the place of the user with that id; adds nobody.
    virtual void updateUser(const User& user, const std::string& oldUserID) = 0;
    /// The user who the current account is.
    virtual Result<User, ParserError> getUserWithBrenUID() = 0;
    virtual Result<User, ParserError> getUser(const std::string& userID) = 0;
    virtual Users getUsers() = 0;
    /// Those who have confirmed.
    virtual Users getActiveUsers() = 0;
    virtual Users getUsersWithBrenUID(const std::vector<std::string>& brenUIDs) = 0;
    virtual Users getUsersWithUserId(const std::vector<std::string>& userIds) = 0;
};

}  // namespace tarvo
