#include "tarvobase/value_objects/transaction/ErrorResponse.h"

namespace tarvo {

namespace {

constexpr const char* noAnswerCode = "noAnswer";

const ErrorResponse local(const char* code) { return {code, code, std::nullopt}; }

}  // namespace

Result<ErrorResponse, ParsingError> ErrorResponse::fromJSON(const ValueMap& json) {
    auto text = [&](std::string_view key) {
        auto value = json.find(key);
        return value ? value->asText() : nullptr;
    };
    auto code = text("code"), message = text("message");
    if (!code) return ParsingError{"code"};
    if (!message) return ParsingError{"message"};
    auto details = json.find("details");
    bool hasDetails = details && details->asMap();
    return ErrorResponse{*code, *message, hasDetails ? std::optional(*details->asMap()) : std::nullopt};
}

ValueMap ErrorResponse::toJSON() const {
    ValueMap json{{"code", code}, {"message", message}};
    if (details) json.set("details", *details);
    return json;
}

std::optional<ErrorResponse> ErrorResponse::fromErrorList(const ValueList& errors, std::optional<ValueMap> details) {
    if (errors.size() != 2 || !errors[0].asText() || !errors[1].asText()) return std::nullopt;
    return ErrorResponse{*errors[0].asText(), *errors[1].asText(), std::move(details)};
}

const ErrorResponse& ErrorResponse::moduleNotFound() {
    static const auto error = local("txnMODULE_NOT_FOUND");
    return error;
}
const ErrorResponse& ErrorResponse::parsingFailed() {
    static const auto error = local("txnPARSING_FAILED");
    return error;
}
const ErrorResponse& ErrorResponse::invlaidTransaction() {
    static const auto error = local("txnINVALID_TRANSACTION");
    return error;
}
const ErrorResponse& ErrorResponse::dependingTransactionFailed() {
    static const auto error = local("txnDEPENDING_TRANSACTION_FAILED");
    return error;
}
const ErrorResponse& ErrorResponse::fileNotReadable() {
    static const auto error = local("txnFILE_NOT_READABLE");
    return error;
}
const ErrorResponse& ErrorResponse::maxSyncAttemptReached() {
    static const ErrorResponse error{.code = "txnMAX_SYNC_ATTEMPT_REACHED", .message = {}, .details = std::nullopt};
    return error;
}

ErrorResponse ErrorResponse::noAnswer(std::string what) { return {.code = noAnswerCode, .message = std::move(what)}; }
bool ErrorResponse::isNoAnswer() const { return code == noAnswerCode; }

}  // namespace tarvo
