#pragma once

#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

#include "platform/DispatchQueue.h"
#include "platform/MainQueue.h"
#include "platform/Object.h"
#include "platform/ProgrammingError.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/usecase/DataSource.h"

namespace tarvo {

/// The concurrent queue on which every use case over `UsecaseFrame` runs.
struct UsecaseQueue {
    static const std::shared_ptr<DispatchQueue>& queue();
};

/// Reports the success or the failure of an operation to its caller. Copies may be kept until the answer is there. Both
/// operations return at once. The callbacks run later in one work item of the main queue: the specific one, then
/// `didComplete`.
template <class Response, class Failure>
class UICallback {
public:
    using OnSuccess = std::function<void(const Response&)>;
    using OnError = std::function<void(const Failure&)>;
    /// Exactly one of the two is not null.
    using DidComplete = std::function<void(const Response*, const Failure*)>;

    UICallback(OnSuccess onSuccess, OnError onError, DidComplete didComplete)
        : callbacks_(std::make_shared<const Callbacks>(
              Callbacks{std::move(onSuccess), std::move(onError), std::move(didComplete)})) {}

    /// A response of a class derived from `Response` keeps its own class on the way.
    template <std::derived_from<Response> R>
    void onSuccess(R response) const {
        MainQueue::shared()->async([callbacks = callbacks_, response = std::move(response)] {
            if (callbacks->onSuccess) callbacks->onSuccess(response);
            if (callbacks->didComplete) callbacks->didComplete(&response, nullptr);
        });
    }

    void onError(Failure failure) const {
        MainQueue::shared()->async([callbacks = callbacks_, failure = std::move(failure)] {
            if (callbacks->onError) callbacks->onError(failure);
            if (callbacks->didComplete) callbacks->didComplete(nullptr, &failure);
        });
    }

private:
    struct Callbacks {
        OnSuccess onSuccess;
        OnError onError;
        DidComplete didComplete;
    };
    std::shared_ptr<const Callbacks> callbacks_;
};

/// The frame of a public operation. It takes a request and answers with a response or a typed failure. The work runs on
/// `UsecaseQueue`, and answers come on the main queue. `Op` owns the types: `Request` (a `BaseRequest`), `Response` (a
/// `BaseResponse`) and `DomainError`.
///
/// Use cases are held by `shared_ptr`. One object may serve several calls at once; calls have no id and cannot be
/// cancelled. A use case belongs to the `Scope` in which it was made.
template <class Op, class Failure_>
class UsecaseFrame : public platform::Object {
public:
    using Operation = Op;
    using Request = typename Op::Request;
    using Response = typename Op::Response;
    using DomainError = typename Op::DomainError;
    using Failure = Failure_;
    using UICallback = tarvo::UICallback<Response, Failure>;

    /// The caller's callbacks, each of which may be empty. All of them run on the main queue.
    struct Callback {
        typename UICallback::OnSuccess onSuccess;
        typename UICallback::OnError onError;
        typename UICallback::DidComplete didComplete;
    };

    /// Starts the operation and returns at once. It answers as often as the request's source says: never, once or
    /// twice. The use case lives until `run` has returned, even if the caller releases it earlier.
    template <std::derived_from<Request> R>
    void execute(R request, Callback callback) {
        auto self = platform::strongSelf(this);
        if (!self)
            return platform::reportProgrammingError("a use case is executed that no shared_ptr holds; it cannot run");
        UsecaseQueue::queue()->async(
            [self = std::move(self),
             request = std::shared_ptr<const Request>(std::make_shared<const R>(std::move(request))),
             callback = std::move(callback)]() mutable {
                self->run(std::move(request), UICallback(std::move(callback.onSuccess), std::move(callback.onError),
                                                         std::move(callback.didComplete)));
            });
    }

    template <std::derived_from<Request> R>
    void execute(R request, typename UICallback::OnSuccess onSuccess, typename UICallback::OnError onError,
                 typename UICallback::DidComplete didComplete = nullptr) {
        execute(std::move(request), Callback{std::move(onSuccess), std::move(onError), std::move(didComplete)});
    }

    template <std::derived_from<Request> R>
    void execute(R request, typename UICallback::DidComplete didComplete) {
        execute(std::move(request), Callback{nullptr, nullptr, std::move(didComplete)});
    }

protected:
    UsecaseFrame() = default;
    /// Does the work, on `UsecaseQueue`. Anything that goes on after it has returned must itself hold what it needs.
    virtual void run(std::shared_ptr<const Request> request, UICallback handler) {
        static_cast<void>(request);
        static_cast<void>(handler);
    }
};

/// The frame whose failures are `AppError`s. All operations use it at present.
template <class Op>
class Usecase : public UsecaseFrame<Op, AppError<typename Op::DomainError>> {};

/// The frame whose failures carry the server's details.
template <class Op>
class UsecaseProtocol : public UsecaseFrame<Op, ErrorObject<typename Op::DomainError>> {};

}  // namespace tarvo
