#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/usecase/DelegateUseCase.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

/// Receives the answers of `GetUsersUseCase`, on the main queue.
class GetUsersUseCaseDelegate : public virtual platform::Object {
public:
    virtual void userFetched(const User& user) { static_cast<void>(user); }
    /// The users are sorted as `GetUsers` sorts them.
    virtual void usersFetched(const std::vector<User>& users) { static_cast<void>(users); }
    /// There is no such user, or no store.
    virtual void unableToFetchUsers() {}
};

/// Reports users from memory and the local database to a delegate.
class GetUsersUseCase final : public DelegateUseCase<GetUsersUseCaseDelegate> {
public:
    /// Uses the database that is open at this moment.
    GetUsersUseCase();
    explicit GetUsersUseCase(std::shared_ptr<UserPersistanceDelegate> dataManager)
        : dataManager(std::move(dataManager)) {}

    void getUsers();
    void getActiveUsers();
    void getUser(const std::string& userID);
    void getCurrentUser();

    const std::shared_ptr<UserPersistanceDelegate> dataManager;

private:
    template <class Read>
    void answerUser(Read read);
    template <class Read>
    void answerUsers(Read read);
};

}  // namespace tarvo
