#include "tarvobase/get_metadata/GetUsersUseCase.h"

#include "tarvobase/get_metadata/GetUsers.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo {

GetUsersUseCase::GetUsersUseCase() : GetUsersUseCase(Stores::current().users()) {}

void GetUsersUseCase::getUsers() {
    answerUsers([](UserPersistanceDelegate& store) { return GetUsers::users(GetUsers::Request::all(), store); });
}

void GetUsersUseCase::getActiveUsers() {
    answerUsers([](UserPersistanceDelegate& store) { return GetUsers::users(GetUsers::Request::active(), store); });
}

void GetUsersUseCase::getUser(const std::string& userID) {
    answerUser([userID](UserPersistanceDelegate& store) { return store.getUser(userID); });
}

void GetUsersUseCase::getCurrentUser() {
    answerUser([](UserPersistanceDelegate& store) { return store.getUserWithBrenUID(); });
}

template <class Read>
void GetUsersUseCase::answerUser(Read read) {
    answer([store = dataManager, read] { return read(*store); },
           [](GetUsersUseCaseDelegate& delegate, const Result<User, ParserError>& user) {
               user ? delegate.userFetched(*user) : delegate.unableToFetchUsers();
           });
}

template <class Read>
void GetUsersUseCase::answerUsers(Read read) {
    answer([store = dataManager, read] { return read(*store); },
           [](GetUsersUseCaseDelegate& delegate, const UserPersistanceDelegate::Users& users) {
               users ? delegate.usersFetched(*users) : delegate.unableToFetchUsers();
           });
}

}  // namespace tarvo
