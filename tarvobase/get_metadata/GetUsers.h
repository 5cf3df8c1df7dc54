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

/// Asks for the user who is signed in, or for the user with an id of one of the two kinds.
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

/// Answers one user from memory, then from the database that was open when the object was made. Answers once, on the
/// main queue, whatever the request's source. If there is no such user, the answer is `unknownError`.
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

/// Asks for all users, for the active ones, or for the users with ids of one of the two kinds.
struct GetUsersOperation::Request : BaseRequest {
    enum class Case { all, active, userIds, brenUIDs };

    static Request all() { return {}; }
    static Request active() { return {Case::active, {}}; }
    static Request userIds(std::vector<std::string> ids) { return {Case::userIds, std::move(ids)}; }
    static Request brenUIDs(std::vector<std::string> ids) { return {Case::brenUIDs, std::move(ids)}; }

    Request() = default;
    Case which = Case::all;
    std::vector<std::string> ids;  ///< empty for all users and for the active ones

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

/// Answers users sorted by name without regard to case, then by id, which is the order of a list to choose from. An id
/// that nobody has is left out. Answers once, on the main queue, whatever the request's source. A failed read is
/// `unknownError`.
class GetUsers final : public Usecase<GetUsersOperation> {
public:
    GetUsers();
    explicit GetUsers(std::shared_ptr<UserPersistanceDelegate> usersPersistance)
        : usersPersistance(std::move(usersPersistance)) {}

    const std::shared_ptr<UserPersistanceDelegate> usersPersistance;

    /// Returns the users for a request, in the order described above.
    static UserPersistanceDelegate::Users users(const Request& request, UserPersistanceDelegate& usersPersistance);

protected:
    void run(std::shared_ptr<const Request> request, UICallback handler) override;
};

}  // namespace tarvo
