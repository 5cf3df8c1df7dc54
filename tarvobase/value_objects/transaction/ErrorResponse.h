#pragma once

#include <optional>
#include <string>

#include "tarvobase/storage/Mapper.h"

namespace tarvo {

/// Why the server, or this library before it asked the server, refused a change. Kept with the change as JSON.
struct ErrorResponse {
    std::string code;     ///< the server's code, or one of the local codes below
    std::string message;  ///< the server's words; the code itself for a local code
    std::optional<ValueMap> details;

    /// Fails with "code" or "message" when that is missing or no text. Details that are no map are absent.
    static Result<ErrorResponse, ParsingError> fromJSON(const ValueMap& json);
    /// "details" is left out when there are none.
    ValueMap toJSON() const;
    /// From the error list of an answer, exactly two texts (code and message), and the answer's details; nothing for
    /// any other list.
    static std::optional<ErrorResponse> fromErrorList(const ValueList& errors,
                                                      std::optional<ValueMap> details = std::nullopt);

    static const ErrorResponse& moduleNotFound();
    static const ErrorResponse& parsingFailed();
    static const ErrorResponse& invlaidTransaction();

    static constexpr auto fields() {
        using E = ErrorResponse;
        return describe(field("code", &E::code), field("message", &E::message), field("details", &E::details));
    }
    friend bool operator==(const ErrorResponse&, const ErrorResponse&) = default;
};

}  // namespace tarvo
