#pragma once

#include "bren_network/URLRequest.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/usecase/AppError.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// Returns the failure that a use case reports for a request that got no answer.
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

/// Returns the reason that an operation gives for a request that got no answer.
inline FailureReason failureReasonOf(const bren::NetworkError& error) {
    using Kind = bren::NetworkError::Kind;
    if (error.kind == Kind::notSent) return FailureReason::notSignedIn;
    return error.kind == Kind::outdated ? FailureReason::outdated : FailureReason::noNetwork;
}

/// Notifies the responder of a delegate use case of such a request, on the calling queue. The scope is that of the
/// work.
inline void reportNetworkFailure(const std::weak_ptr<CommonErrorProtocol>& responder, const bren::NetworkError& error,
                                 const Scope& scope) {
    auto listener = responder.lock();
    if (!listener) return;
    if (error.kind == bren::NetworkError::Kind::notSent)
        listener->noAuthtoken(scope.account);
    else
        listener->networkResponseErrorWithCause(error.message);
}

}  // namespace tarvo
