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

/// The concurrent queue on which every frame use case runs.
struct UsecaseQueue {
    static const std::shared_ptr<DispatchQueue>& queue();
};

/// The two ways to finish. Copies may be kept until the answer is there. Both return at once; the callbacks run later
/// on the main queue, the specific one and then `didComplete`, in one item.
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

    /// A response may be of a class derived from `Response`; it arrives uncut.
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

/// The frame of a public operation: a request in, a response or a typed failure out, work on `UsecaseQueue`, answers on
/// the main queue. `Op` owns the types: `Request` (a `BaseRequest`), `Response` (a `BaseResponse`), `DomainError`.
/// Held by `shared_ptr`. One object may serve several calls at once; calls have no id and cannot be cancelled.
template <class Op, class Failure_>
class UsecaseFrame : public platform::Object {
public:
    using Operation = Op;
    using Request = typename Op::Request;
    using Response = typename Op::Response;
    using DomainError = typename Op::DomainError;
    using Failure = Failure_;
    using UICallback = tarvo::UICallback<Response, Failure>;

    /// What the caller wants to hear; each may be absent. All run on the main queue.
    struct Callback {
        typename UICallback::OnSuccess onSuccess;
        typename UICallback::OnError onError;
        typename UICallback::DidComplete didComplete;
    };

    /// Starts the operation and returns at once. Answers as often as the request's source says: none, once, or twice.
    /// The use case lives until `run` has returned, even when the caller lets it go.
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
    /// The work, on `UsecaseQueue`. What it starts beyond its return must hold what it needs by itself.
    virtual void run(std::shared_ptr<const Request> request, UICallback handler) {
        static_cast<void>(request);
        static_cast<void>(handler);
    }
};

/// The frame whose failures are `AppError`s: that of every operation at present.
template <class Op>
class Usecase : public UsecaseFrame<Op, AppError<typename Op::DomainError>> {};

/// The frame whose failures carry the server's details.
template <class Op>
class UsecaseProtocol : public UsecaseFrame<Op, ErrorObject<typename Op::DomainError>> {};

}  // namespace tarvo
