#include "tarvobase/value_objects/account/UserInMemory.h"

#include <algorithm>

#include "platform/Text.h"

namespace tarvo {

UserInMemory::UserInMemory(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass,
                           std::shared_ptr<UserPersistanceDelegate> primaryPersistance,
                           UserConstants activeUserConstants)
    : InMemoryPersistanceClass(std::move(inMemoryPersistanceClass)),
      activeUserConstants(activeUserConstants),
      primaryPersistance(std::move(primaryPersistance)),
      memory_(
          *this, std::string(activeUserConstants.TableName), [](const User& user) { return user.id; },
          this->primaryPersistance != nullptr) {}

bool UserInMemory::storeUser(const User& user) {
    return memory_.store({user}, [&] { return !primaryPersistance || primaryPersistance->storeUser(user); });
}

bool UserInMemory::storeUsers(const std::vector<User>& users) {
    return memory_.store(users, [&] { return !primaryPersistance || primaryPersistance->storeUsers(users); });
}

bool UserInMemory::updateUser(const User& user, const std::string& oldUserID) {
    return memory_.update(user, {{std::string(activeUserConstants.ID), oldUserID}},
                          [&] { return !primaryPersistance || primaryPersistance->updateUser(user, oldUserID); });
}

Result<User, ParserError> UserInMemory::getUserWithBrenUID() {
    return memory_.firstOr({{std::string(activeUserConstants.BrenUID), currentAccountBrenUID()}}, [&] {
        return primaryPersistance ? primaryPersistance->getUserWithBrenUID()
                                  : Result<User, ParserError>(ParserError::noData());
    });
}

Result<User, ParserError> UserInMemory::getUser(const std::string& userID) {
    return memory_.firstOr({{std::string(activeUserConstants.ID), userID}}, [&] {
        return primaryPersistance ? primaryPersistance->getUser(userID)
                                  : Result<User, ParserError>(ParserError::noData());
    });
}

UserPersistanceDelegate::Users UserInMemory::getUsers() {
    return memory_.allOr(
        [&] { return primaryPersistance ? primaryPersistance->getUsers() : Users(ParserError::noData()); });
}

UserPersistanceDelegate::Users UserInMemory::getActiveUsers() {
    return usersWhere([](const User& user, const std::vector<std::string>&) { return user.confirm; }, {});
}
UserPersistanceDelegate::Users UserInMemory::getUsersWithBrenUID(const std::vector<std::string>& brenUIDs) {
    return usersWhere(
        [](const User& user, const std::vector<std::string>& asked) { return text::contains(asked, user.BrenUID); },
        brenUIDs);
}
UserPersistanceDelegate::Users UserInMemory::getUsersWithUserId(const std::vector<std::string>& userIds) {
    return usersWhere(
        [](const User& user, const std::vector<std::string>& asked) { return text::contains(asked, user.id); },
        userIds);
}

// Several users may match, so only the whole table can answer. It is read for the first such request.
UserPersistanceDelegate::Users UserInMemory::usersWhere(bool (*chosen)(const User&, const std::vector<std::string>&),
                                                        const std::vector<std::string>& asked) {
    auto users = getUsers();
    if (users) std::erase_if(users.value(), [&](auto& user) { return !chosen(user, asked); });
    return users;
}

}  // namespace tarvo
