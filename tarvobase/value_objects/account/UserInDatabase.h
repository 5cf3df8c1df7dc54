#pragma once

#include "tarvobase/configuration/Scope.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

/// The table of users.
class UserInDatabase final : public DatabasePersistanceClass, public UserPersistanceDelegate {
public:
    UserInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                   UserDatabaseConstants databaseConstants = {}, std::string account = Scope::current().account);

    bool storeUser(const User& user) override { return storeUsers({user}); }
    bool storeUsers(const std::vector<User>& users) override;
    bool updateUser(const User& user, const std::string& oldUserID) override;
    Result<User, ParserError> getUserWithBrenUID() override;
    Result<User, ParserError> getUser(const std::string& userID) override;
    Users getUsers() override;
    Users getActiveUsers() override;
    Users getUsersWithBrenUID(const std::vector<std::string>& brenUIDs) override;
    Users getUsersWithUserId(const std::vector<std::string>& userIds) override;

private:
    std::optional<std::vector<User>> usersWhere(std::string_view column, const std::vector<std::string>& values) const;
    std::optional<std::vector<User>> usersOf(const std::optional<Rows>& rows) const;

    UserDatabaseConstants databaseConstants_;
    const std::string account_;
};

}  // namespace tarvo
