#pragma once

#include <optional>
#include <string>
#include <utility>

#include "platform/Describe.h"
#include "platform/Value.h"

namespace tarvo {

/// The domain error of use cases that have none of their own.
struct NoDomainError {
    static constexpr auto fields() { return describe(); }
    friend bool operator==(const NoDomainError&, const NoDomainError&) = default;
};

enum class AppErrorCase { domainError, networkUnavailable, timeout, authenticationFailure, unknownError };

template <>
struct EnumCases<AppErrorCase> {
    static constexpr EnumCase<AppErrorCase> cases[] = {{AppErrorCase::domainError, "domainError"},
                                                       {AppErrorCase::networkUnavailable, "networkUnavailable"},
                                                       {AppErrorCase::timeout, "timeout"},
                                                       {AppErrorCase::authenticationFailure, "authenticationFailure"},
                                                       {AppErrorCase::unknownError, "unknownError"}};
};

/// The reason of an `unknownError`, as far as the operation knows it.
enum class FailureReason {
    noNetwork,       ///< the server could not be reached, or did not answer in time
    notSignedIn,     ///< there was no token for the request
    outdated,        ///< another account, organisation or database is in force by now
    refused,         ///< the server refused
    unusableAnswer,  ///< the server's answer cannot be read
    noSuchModule,    ///< no such module is stored, or it has no fields
    noSuchView,      ///< the module has no such view
    notStored        ///< the database could not store the answer
};

template <>
struct EnumCases<FailureReason> {
    static constexpr EnumCase<FailureReason> cases[] = {{FailureReason::noNetwork, "noNetwork"},
                                                        {FailureReason::notSignedIn, "notSignedIn"},
                                                        {FailureReason::outdated, "outdated"},
                                                        {FailureReason::refused, "refused"},
                                                        {FailureReason::unusableAnswer, "unusableAnswer"},
                                                        {FailureReason::noSuchModule, "noSuchModule"},
                                                        {FailureReason::noSuchView, "noSuchView"},
                                                        {FailureReason::notStored, "notStored"}};
};

/// The reason, and its cause in words where it is known, such as "certificate expired: crm.example.com:443".
struct FailureDetails {
    FailureReason reason;
    std::string cause{};
};

/// The failure that every use case over `UsecaseFrame` reports: one of the operation's own kind with its value, or one
/// of the general ones. An answer of the server that cannot be parsed is an `unknownError` too.
template <class DomainError>
class AppError {
public:
    using Case = AppErrorCase;

    static AppError domainError(DomainError error) { return AppError(Case::domainError, std::move(error)); }
    static AppError networkUnavailable() { return AppError(Case::networkUnavailable); }
    static AppError timeout() { return AppError(Case::timeout); }
    static AppError authenticationFailure() { return AppError(Case::authenticationFailure); }
    static AppError unknownError(std::optional<FailureReason> reason = std::nullopt, std::string cause = {}) {
        AppError error(Case::unknownError);
        error.reason_ = reason;
        error.cause_ = std::move(cause);
        return error;
    }
    static AppError unknownError(const FailureDetails& details) { return unknownError(details.reason, details.cause); }

    Case which() const { return case_; }
    /// Returns the domain error, or null in the other cases.
    const DomainError* getDomainError() const { return domainError_ ? &*domainError_ : nullptr; }
    /// Returns the reason of an `unknownError`, if the operation gives one.
    std::optional<FailureReason> reason() const { return reason_; }
    /// Returns the cause in words; empty if it is not known.
    const std::string& cause() const { return cause_; }

private:
    explicit AppError(Case which, std::optional<DomainError> error = std::nullopt)
        : case_(which), domainError_(std::move(error)) {}
    Case case_;
    std::optional<DomainError> domainError_;
    std::optional<FailureReason> reason_;
    std::string cause_;
};

/// An `AppError` with the details that the server sent.
template <class DomainError>
struct ErrorObject {
    AppError<DomainError> appError;
    std::string errorCode;
    std::optional<std::string> errorMsg;
    std::optional<ValueMap> details;

    const DomainError* getDomainError() const { return appError.getDomainError(); }
};

/// Error codes of server and transaction failures.
enum class ErrorCode {
    crmInvalidData,
    noPermission,
    invalidData,
    mandatoryNotFound,
    txnDependingTransactionFailed,
    txnModuleNotFound,
    txnParsingFailed,
    txnMaxSyncAttemptReached,
    txnInvalidTransaction,
    unknown
};

template <>
struct EnumCases<ErrorCode> {
    static constexpr EnumCase<ErrorCode> cases[] = {
        {ErrorCode::crmInvalidData, "crmInvalidData", "crmINVALID_DATA"},
        {ErrorCode::noPermission, "noPermission", "crmNO_PERMISSION"},
        {ErrorCode::invalidData, "invalidData", "INVALID_DATA"},
        {ErrorCode::mandatoryNotFound, "mandatoryNotFound", "crmMANDATORY_NOT_FOUND"},
        {ErrorCode::txnDependingTransactionFailed, "txnDependingTransactionFailed", "txnDEPENDING_TRANSACTION_FAILED"},
        {ErrorCode::txnModuleNotFound, "txnModuleNotFound", "txnMODULE_NOT_FOUND"},
        {ErrorCode::txnParsingFailed, "txnParsingFailed", "txnPARSING_FAILED"},
        {ErrorCode::txnMaxSyncAttemptReached, "txnMaxSyncAttemptReached", "txnMAX_SYNC_ATTEMPT_REACHED"},
        {ErrorCode::txnInvalidTransaction, "txnInvalidTransaction", "txnINVALID_TRANSACTION"},
        {ErrorCode::unknown, "unknown", " - "}};
};

}  // namespace tarvo
