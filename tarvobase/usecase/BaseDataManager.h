#pragma once

#include <functional>
#include <memory>

#include "platform/FunctionRef.h"
#include "platform/Object.h"
#include "tarvobase/usecase/Usecase.h"

namespace tarvo {

/// Answers a request from local data, from the server or from both, as the request's source says. Subclasses override
/// `getDBResponse`, `getNWResponse` or both.
template <class Op>
class BaseDataManager : public platform::Object {
public:
    using Request = typename Op::Request;
    using Response = typename Op::Response;
    using Failure = AppError<typename Op::DomainError>;
    using UICallback = tarvo::UICallback<Response, Failure>;
    using RequestPtr = std::shared_ptr<const Request>;
    /// Called before the callee returns, which cannot keep them.
    using OnDBSuccess = platform::FunctionRef<void(Response)>;
    using OnDBError = platform::FunctionRef<void(Failure)>;
    /// May be called later, on any queue.
    using OnNWSuccess = std::function<void(Response)>;
    using OnNWError = std::function<void(Failure)>;

    virtual void runRequest(const RequestPtr& request, const UICallback& handler) {
        switch (request->source()) {
            case DataSource::database:
                askDatabase(request, handler);
                break;
            case DataSource::network:
                askNetwork(request, handler);
                break;
            case DataSource::both:
                askDatabase(request, handler);
                askNetwork(request, handler);
                break;
            case DataSource::either:
                if (!askDatabase(request, handler)) askNetwork(request, handler);
                break;
            case DataSource::none:
                break;
        }
    }

    /// Gives the local answer. Returns whether it called `onSuccess` with a usable one.
    virtual bool getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) {
        static_cast<void>(request), static_cast<void>(onSuccess), static_cast<void>(onError);
        return false;
    }

    /// Asks the server. Returns at once; one of the callbacks follows.
    virtual void getNWResponse(const RequestPtr& request, OnNWSuccess onSuccess, OnNWError onError) {
        static_cast<void>(request), static_cast<void>(onSuccess), static_cast<void>(onError);
    }

private:
    bool askDatabase(const RequestPtr& request, const UICallback& handler) {
        return getDBResponse(
            request, [&](Response response) { handler.onSuccess(std::move(response)); },
            [&](Failure failure) { handler.onError(std::move(failure)); });
    }
    void askNetwork(const RequestPtr& request, const UICallback& handler) {
        getNWResponse(
            request, [handler](Response response) { handler.onSuccess(std::move(response)); },
            [handler](Failure failure) { handler.onError(std::move(failure)); });
    }
};

}  // namespace tarvo
