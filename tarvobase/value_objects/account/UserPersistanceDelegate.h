#pragma once

#include <string>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/value_objects/account/User.h"

namespace tarvo {

/// The store of users. Reads fail with `ParserError::noData` when there is no such user or the store cannot be read. A
/// list may be empty and is in no particular order. Writes return whether they were stored. Any thread may use it.
class UserPersistanceDelegate : public virtual platform::Object {
public:
    using Users = Result<std::vector<User>, ParserError>;

    virtual bool storeUser(const User& user) = 0;
    virtual bool storeUsers(const std::vector<User>& users) = 0;
    /// Replaces the user who has this id; does nothing if there is none.
    virtual bool updateUser(const User& user, const std::string& oldUserID) = 0;
    /// Returns the user whom the current account belongs to.
    virtual Result<User, ParserError> getUserWithBrenUID() = 0;
    virtual Result<User, ParserError> getUser(const std::string& userID) = 0;
    virtual Users getUsers() = 0;
    /// Returns the users who have accepted their invitation.
    virtual Users getActiveUsers() = 0;
    virtual Users getUsersWithBrenUID(const std::vector<std::string>& brenUIDs) = 0;
    virtual Users getUsersWithUserId(const std::vector<std::string>& userIds) = 0;
};

}  // namespace tarvo
