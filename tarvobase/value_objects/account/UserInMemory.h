#pragma once

#include "tarvobase/storage/InMemoryPersistanceClass.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

/// Keeps users in memory, in front of the table of users. Without a primary store a miss is `noData`.
class UserInMemory final : public InMemoryPersistanceClass, public UserPersistanceDelegate {
public:
    explicit UserInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                          std::shared_ptr<UserPersistanceDelegate> primaryPersistance = nullptr,
                          UserConstants activeUserConstants = {});

    const UserConstants activeUserConstants;
    const std::shared_ptr<UserPersistanceDelegate> primaryPersistance;

    bool storeUser(const User& user) override;
    bool storeUsers(const std::vector<User>& users) override;
    bool updateUser(const User& user, const std::string& oldUserID) override;
    Result<User, ParserError> getUserWithBrenUID() override;
    Result<User, ParserError> getUser(const std::string& userID) override;
    Users getUsers() override;
    Users getActiveUsers() override;
    Users getUsersWithBrenUID(const std::vector<std::string>& brenUIDs) override;
    Users getUsersWithUserId(const std::vector<std::string>& userIds) override;

private:
    Users usersWhere(bool (*chosen)(const User&, const std::vector<std::string>&),
                     const std::vector<std::string>& asked);

    InMemoryTable<User> memory_;
};

}  // namespace tarvo
