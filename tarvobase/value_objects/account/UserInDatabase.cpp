#include "tarvobase/value_objects/account/UserInDatabase.h"

namespace tarvo {

UserInDatabase::UserInDatabase(std::string tableName, std::shared_ptr<DatabaseAdapter> databaseAdapter,
                               UserDatabaseConstants databaseConstants, std::string account)
    : DatabasePersistanceClass(std::move(tableName), std::move(databaseAdapter)),
      databaseConstants_(databaseConstants),
      account_(std::move(account)) {}

bool UserInDatabase::storeUsers(const std::vector<User>& users) {
    std::vector<ValueMap> rows;
    rows.reserve(users.size());
    for (auto& user : users) rows.push_back(databaseConstants_.getDictionary(user));
    return table().store(std::move(rows));
}

bool UserInDatabase::updateUser(const User& user, const std::string& oldUserID) {
    auto row = databaseConstants_.getDictionary(user);
    auto& names = databaseConstants_;
    // Members that the user lacks are cleared: the row is replaced, not merged.
    for (auto name : {names.IsLoggedInUser, names.DateFormat, names.TimeFormat, names.TimeZone, names.NameFormat})
        if (!row.contains(name)) row.set(name, Value());
    return table().update(std::move(row), Criteria::equalTo(std::string(databaseConstants_.ID), oldUserID));
}

Result<User, ParserError> UserInDatabase::getUserWithBrenUID() {
    return firstOrNoData(usersWhere(databaseConstants_.BrenUID, {account_}));
}
Result<User, ParserError> UserInDatabase::getUser(const std::string& userID) {
    return firstOrNoData(usersWhere(databaseConstants_.ID, {userID}));
}
UserPersistanceDelegate::Users UserInDatabase::getUsers() { return presentOrNoData(usersOf(table().fetchAll())); }
UserPersistanceDelegate::Users UserInDatabase::getActiveUsers() {
    return presentOrNoData(usersWhere(databaseConstants_.Confirm, {"true"}));
}
UserPersistanceDelegate::Users UserInDatabase::getUsersWithBrenUID(const std::vector<std::string>& brenUIDs) {
    return presentOrNoData(usersWhere(databaseConstants_.BrenUID, brenUIDs));
}
UserPersistanceDelegate::Users UserInDatabase::getUsersWithUserId(const std::vector<std::string>& userIds) {
    return presentOrNoData(usersWhere(databaseConstants_.ID, userIds));
}

std::optional<std::vector<User>> UserInDatabase::usersWhere(std::string_view column,
                                                            const std::vector<std::string>& values) const {
    return usersOf(table().fetch(FetchQuery(tableName, Criteria::in(std::string(column), valueList(values)))));
}

std::optional<std::vector<User>> UserInDatabase::usersOf(const std::optional<Rows>& rows) const {
    return table().valuesOf(rows, [this](const Row& row) { return databaseConstants_.getValue(row); });
}

}  // namespace tarvo
