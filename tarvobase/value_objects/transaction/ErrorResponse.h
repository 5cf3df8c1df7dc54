#pragma once

#include <optional>
#include <string>

#include "tarvobase/storage/Mapper.h"

namespace tarvo {

/// Says why the server refused a change, or why this library refused it before asking the server. It is kept with the
/// change as JSON.
struct ErrorResponse {
    std::string code;     ///< the server's code, or one of the local codes below
    std::string message;  ///< the server's message; the code itself for a local code
    std::optional<ValueMap> details;

    /// Fails with "code" or "message" if that member is missing or is not a text. Details that are not a map are
    /// dropped.
    static Result<ErrorResponse, ParsingError> fromJSON(const ValueMap& json);
    /// Leaves "details" out when there are none.
    ValueMap toJSON() const;
    /// Reads the error list of an answer, which is exactly two texts (code and message). Returns nullopt for any other
    /// list.
    static std::optional<ErrorResponse> fromErrorList(const ValueList& errors,
                                                      std::optional<ValueMap> details = std::nullopt);

    static const ErrorResponse& moduleNotFound();
    static const ErrorResponse& parsingFailed();
    static const ErrorResponse& invlaidTransaction();
    static const ErrorResponse& dependingTransactionFailed();
    /// The file of an upload cannot be read. The server was not asked.
    static const ErrorResponse& fileNotReadable();
    /// Says that a transaction was started as often as is allowed. It has no message.
    static const ErrorResponse& maxSyncAttemptReached();
    /// The last words of a change that the server has not decided on: what happened, without values of records.
    static ErrorResponse noAnswer(std::string what);
    bool isNoAnswer() const;

    static constexpr auto fields() {
        using E = ErrorResponse;
        return describe(field("code", &E::code), field("message", &E::message), field("details", &E::details));
    }
    friend bool operator==(const ErrorResponse&, const ErrorResponse&) = default;
};

}  // namespace tarvo
