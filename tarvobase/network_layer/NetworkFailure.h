#pragma once

#include "bren_network/URLRequest.h"
#include "tarvobase/usecase/AppError.h"

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

}  // namespace tarvo
