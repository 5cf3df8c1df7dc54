#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/usecase/Usecase.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

/// Types of `GetUser`.
struct GetUserOperation {
    struct Request;
    struct Response;
    using DomainError = NoDomainError;
};

/// One user: the one who is signed in, or the one with an id of one of the two kinds.
struct GetUserOperation::Request : BaseRequest {
    enum class Case { currentUser, userId, brenUID };

    static Request currentUser() { return {}; }
    static Request userId(std::string id) { return {Case::userId, std::move(id)}; }
    static Request brenUID(std::string id) { return {Case::brenUID, std::move(id)}; }

    Request() = default;
    Case which = Case::currentUser;
    std::string id;  ///< empty for the current user

    static constexpr auto fields() {
        return describe(optionalField("which", &Request::which), optionalField("id", &Request::id));
    }

private:
    Request(Case which, std::string id) : which(which), id(std::move(id)) {}
};

template <>
struct EnumCases<GetUserOperation::Request::Case> {
    using C = GetUserOperation::Request::Case;
    static constexpr EnumCase<C> cases[] = {
        {C::currentUser, "currentUser"}, {C::userId, "userId"}, {C::brenUID, "brenUID"}};
};

struct GetUserOperation::Response : BaseResponse {
    User user;

    static constexpr auto fields() { return describe(field("user", &Response::user)); }
};

/// Gives one user from memory, then from the database that was open when the object was made. Answers once, on the main
/// queue, whatever the request's source; without such a user the answer is `unknownError`.
class GetUser final : public Usecase<GetUserOperation> {
public:
    GetUser();
    explicit GetUser(std::shared_ptr<UserPersistanceDelegate> usersPersistance)
        : usersPersistance(std::move(usersPersistance)) {}

    const std::shared_ptr<UserPersistanceDelegate> usersPersistance;

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

/// Types of `GetUsers`.
struct GetUsersOperation {
    struct Request;
    struct Response;
    using DomainError = NoDomainError;
};

/// All users, those who are active, or those with the ids of one of the two kinds.
struct GetUsersOperation::Request : BaseRequest {
    enum class Case { all, active, userIds, brenUIDs };

    static Request all() { return {}; }
    static Request active() { return {Case::active, {}}; }
    static Request userIds(std::vector<std::string> ids) { return {Case::userIds, std::move(ids)}; }
    static Request brenUIDs(std::vector<std::string> ids) { return {Case::brenUIDs, std::move(ids)}; }

    Request() = default;
    Case which = Case::all;
    std::vector<std::string> ids;  ///< empty for all and for the active ones

    static constexpr auto fields() {
        return describe(optionalField("which", &Request::which), optionalField("ids", &Request::ids));
    }

private:
    Request(Case which, std::vector<std::string> ids) : which(which), ids(std::move(ids)) {}
};

template <>
struct EnumCases<GetUsersOperation::Request::Case> {
    using C = GetUsersOperation::Request::Case;
    static constexpr EnumCase<C> cases[] = {
        {C::all, "all"}, {C::active, "active"}, {C::userIds, "userIds"}, {C::brenUIDs, "brenUIDs"}};
};

struct GetUsersOperation::Response : BaseResponse {
    std::vector<User> users;

    static constexpr auto fields() { return describe(field("users", &Response::users)); }
};

/// Gives users in the order of their names, without case, then of their ids: the order of a list to choose from. An id
/// that nobody has is left out. Answers once, on the main queue, whatever the request's source; a read that fails is
/// `unknownError`.
class GetUsers final : public Usecase<GetUsersOperation> {
public:
    GetUsers();
    explicit GetUsers(std::shared_ptr<UserPersistanceDelegate> usersPersistance)
        : usersPersistance(std::move(usersPersistance)) {}

    const std::shared_ptr<UserPersistanceDelegate> usersPersistance;

    /// The users for a request, in the order told above.
    static UserPersistanceDelegate::Users users(const Request& request, UserPersistanceDelegate& usersPersistance);

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

}  // namespace tarvo
