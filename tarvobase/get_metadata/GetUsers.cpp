#include "tarvobase/get_metadata/GetUsers.h"

#include <algorithm>

#include "platform/Folding.h"
#include "platform/Text.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo {

namespace {

using UserResult = Result<User, ParserError>;

UserResult userFor(const GetUser::Request& request, UserPersistanceDelegate& users) {
    using Case = GetUser::Request::Case;
    switch (request.which) {
        case Case::currentUser:
            return users.getUserWithBrenUID();
        case Case::userId:
            return users.getUser(request.id);
        case Case::brenUID:
            break;
    }
    auto found = users.getUsersWithBrenUID({request.id});
    if (!found) return found.error();
    if (found->empty()) return ParserError(ParserError::Case::noData);
    return found->front();
}

UserPersistanceDelegate::Users unsorted(const GetUsers::Request& request, UserPersistanceDelegate& users) {
    using Case = GetUsers::Request::Case;
    switch (request.which) {
        case Case::all:
            return users.getUsers();
        case Case::active:
            return users.getActiveUsers();
        case Case::userIds:
            return users.getUsersWithUserId(request.ids);
        case Case::brenUIDs:
            break;
    }
    return users.getUsersWithBrenUID(request.ids);
}

void sortByName(std::vector<User>& users) {
    using Keyed = std::pair<std::pair<std::string, std::string>, User>;
    std::vector<Keyed> keyed;
    keyed.reserve(users.size());
    for (auto& user : users) {
        auto key = std::pair(text::fold(user.name), user.id);
        keyed.emplace_back(std::move(key), std::move(user));
    }
    std::sort(keyed.begin(), keyed.end(), [](const Keyed& a, const Keyed& b) { return a.first < b.first; });
    users.clear();
    for (auto& [key, user] : keyed) users.push_back(std::move(user));
}

}  // namespace

GetUser::GetUser() : GetUser(Stores::current().users()) {}

void GetUser::run(std::shared_ptr<const Request> request, UICallback handler) {
    auto user = userFor(*request, *usersPersistance);
    if (!user) return handler.onError(Failure::unknownError());
    Response response;
    response.user = *std::move(user);
    handler.onSuccess(std::move(response));
}

GetUsers::GetUsers() : GetUsers(Stores::current().users()) {}

UserPersistanceDelegate::Users GetUsers::users(const Request& request, UserPersistanceDelegate& usersPersistance) {
    auto users = unsorted(request, usersPersistance);
    if (users) sortByName(users.value());
    return users;
}

void GetUsers::run(std::shared_ptr<const Request> request, UICallback handler) {
    auto found = users(*request, *usersPersistance);
    if (!found) return handler.onError(Failure::unknownError());
    Response response;
    response.users = *std::move(found);
    handler.onSuccess(std::move(response));
}

}  // namespace tarvo
