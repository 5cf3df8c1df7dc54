#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>

#include "platform/Describe.h"
#include "platform/Value.h"
#include "tarvobase/value_objects/transaction/ErrorResponse.h"

namespace tarvo {

/// The outcome of a request that changes something on the server.
struct ChangeAnswer {
    enum class Outcome {
        accepted,
        refused,     ///< the server did not apply the change and says why
        unreadable,  ///< there is an answer, but it does not say whether the change was applied
        noAnswer     ///< being offline is not a failure: the same request may be sent again later
    };
    /// Why there is no answer. Host calls show the raw texts.
    enum class Silence { notSignedIn, noConnection, timeout, shutDown, outdated, busy };

    static ChangeAnswer accepted(std::string recordId, std::optional<ValueMap> record = std::nullopt) {
        return {.outcome = Outcome::accepted, .recordId = std::move(recordId), .record = std::move(record)};
    }
    static ChangeAnswer refused(ErrorResponse refusal) {
        return {.outcome = Outcome::refused, .refusal = std::move(refusal)};
    }
    static ChangeAnswer unreadable() { return {.outcome = Outcome::unreadable}; }
    static ChangeAnswer noAnswer(Silence silence) { return {.outcome = Outcome::noAnswer, .silence = silence}; }
    /// There is no answer, and the server cannot have the change from this request.
    static ChangeAnswer unsent(Silence silence) {
        return {.outcome = Outcome::noAnswer, .silence = silence, .isUnsent = true};
    }

    Outcome outcome = Outcome::unreadable;
    /// The server's id of the record, if the change is accepted: that of a new record, or the one that was sent.
    std::string recordId{};
    /// The record as a wire dictionary, if the answer to an accepted change has more of it than the id. It need not
    /// have all fields.
    std::optional<ValueMap> record{};
    std::optional<ErrorResponse> refusal{};  ///< present if the change is refused
    /// Whether the server failed the request as a whole. It has not looked at the change then, and says nothing of an
    /// earlier send of it.
    bool isOfWholeRequest = false;
    std::optional<Silence> silence{};  ///< present if there is no answer
    bool isUnsent = false;             ///< whether the request without an answer has not reached the server

    friend bool operator==(const ChangeAnswer&, const ChangeAnswer&) = default;
};

template <>
struct EnumCases<ChangeAnswer::Outcome> {
    using O = ChangeAnswer::Outcome;
    static constexpr EnumCase<O> cases[] = {
        {O::accepted, "accepted"}, {O::refused, "refused"}, {O::unreadable, "unreadable"}, {O::noAnswer, "noAnswer"}};
};

template <>
struct EnumCases<ChangeAnswer::Silence> {
    using S = ChangeAnswer::Silence;
    static constexpr EnumCase<S> cases[] = {{S::notSignedIn, "notSignedIn"}, {S::noConnection, "noConnection"},
                                            {S::timeout, "timeout"},         {S::shutDown, "shutDown"},
                                            {S::outdated, "outdated"},       {S::busy, "busy"}};
};

/// Runs exactly once per request, on the network queue, unless the service is released before the host hands out a
/// token.
using ChangeCompletion = std::function<void(ChangeAnswer answer)>;

}  // namespace tarvo
