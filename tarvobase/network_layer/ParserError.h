#pragma once

#include <optional>
#include <string>

#include "platform/Describe.h"
#include "platform/Value.h"

namespace tarvo {

/// The reason why an answer of the server, or a stored value, cannot be used.
class ParserError {
public:
    enum class Case {
        responseError,
        keyNotFound,
        typeConversionFailedForIndex,
        typeConversionFailedForKey,
        jsonSerializationFailed,
        typeConversionFailed,
        lessNumberOfKeys,
        noData,
        inValidInput
    };

    ParserError(Case plain) : case_(plain) {}  // NOLINT: implicit, so that a plain case is an error by itself
    /// A refusal of the server, with its list of errors if it sent one.
    static ParserError responseError(std::optional<ValueList> errors) {
        ParserError error(Case::responseError);
        error.errors_ = std::move(errors);
        return error;
    }
    static ParserError noData() { return Case::noData; }
    static ParserError keyNotFound(std::string key) { return {Case::keyNotFound, std::move(key)}; }
    static ParserError typeConversionFailedForIndex(std::size_t index) {
        return {Case::typeConversionFailedForIndex, std::to_string(index)};
    }
    static ParserError typeConversionFailedForKey(std::string key) {
        return {Case::typeConversionFailedForKey, std::move(key)};
    }

    Case which() const { return case_; }
    /// The key, or the index as text, in the cases that name one; empty in the others.
    const std::string& key() const { return key_; }
    /// The server's errors in the case `responseError`, as they came.
    const std::optional<ValueList>& errors() const { return errors_; }
    /// Returns the case and its key for log lines. The server's errors are left out, since they may quote what was
    /// sent.
    std::string logText() const;

    friend bool operator==(const ParserError& a, const ParserError& b) {
        return a.case_ == b.case_ && a.key_ == b.key_ && a.errors_ == b.errors_;
    }

private:
    ParserError(Case which, std::string key) : case_(which), key_(std::move(key)) {}
    Case case_;
    std::string key_;
    std::optional<ValueList> errors_;
};

template <>
struct EnumCases<ParserError::Case> {
    using C = ParserError::Case;
    static constexpr EnumCase<C> cases[] = {{C::responseError, "responseError"},
                                            {C::keyNotFound, "keyNotFound"},
                                            {C::typeConversionFailedForIndex, "typeConversionFailedForIndex"},
                                            {C::typeConversionFailedForKey, "typeConversionFailedForKey"},
                                            {C::jsonSerializationFailed, "jsonSerializationFailed"},
                                            {C::typeConversionFailed, "typeConversionFailed"},
                                            {C::lessNumberOfKeys, "lessNumberOfKeys"},
                                            {C::noData, "noData"},
                                            {C::inValidInput, "inValidInput"}};
};

inline std::string ParserError::logText() const {
    return std::string(caseName(case_)) + (key_.empty() ? "" : " " + key_);
}

}  // namespace tarvo
