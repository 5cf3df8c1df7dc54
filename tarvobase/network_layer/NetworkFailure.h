#pragma once

#include "bren_network/URLRequest.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// What a frame use case reports of a request that got no answer.
template <class DomainError>
AppError<DomainError> appErrorOf(const bren::NetworkError& error) {
    using Kind = bren::NetworkError::Kind;
    switch (error.kind) {
        case Kind::cannotConnect:
        case Kind::connectionLost:
            return AppError<DomainError>::networkUnavailable();
        case Kind::timeout:
            return AppError<DomainError>::timeout();
        case Kind::notSent:
            return AppError<DomainError>::authenticationFailure();
        default:
            return AppError<DomainError>::unknownError();
    }
}

/// The reason that an operation gives for a request that got no answer.
inline FailureReason failureReasonOf(const bren::NetworkError& error) {
    return error.kind == bren::NetworkError::Kind::notSent ? FailureReason::notSignedIn : FailureReason::noNetwork;
}

/// What delegate use cases hear of such a request, on the queue of the call.
inline void tellFailure(const std::weak_ptr<CommonErrorProtocol>& responder, const bren::NetworkError& error) {
    auto hearing = responder.lock();
    if (!hearing) return;
    if (error.kind == bren::NetworkError::Kind::notSent)
        hearing->noAuthtoken(CommonConfigration::sharedInstance().getCurrentAccountID().value_or(""));
    else
        hearing->networkResponseError();
}

}  // namespace tarvo
