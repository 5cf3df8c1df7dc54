#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/Value.h"
#include "sandbox/changes/Refusal.h"

/// Builds the fixed forms around the content of an answer. Times are milliseconds of the server's clock.
namespace tarvo::sandbox::envelope {

/// Makes one entry of the result list. An empty list of rows is marked with "nodata".
Value entry(std::string_view module, ValueList rows, std::int64_t now);
/// Makes the same entry with further members in its "info".
Value entry(std::string_view module, ValueList rows, std::int64_t now, const ValueMap& moreInfo);
/// Makes an entry that failed while its siblings are valid.
Value failedEntry(std::string_view module, std::string_view code, std::string_view message, std::int64_t now);
/// Makes such an entry for a change that was refused: "error" is code and message, and the details are in the "info".
/// With `asObject` code, message and details are one object of "error".
Value refusedEntry(std::string_view module, const Refusal& refusal, bool asObject, std::int64_t now);

/// Makes {"response":{"result":[...],"responseInfo":{...}}}.
Value answer(ValueList entries, std::int64_t now);
/// Writes the text of an answer whose rows are too many to be made as values first.
class Writer {
public:
    explicit Writer(std::int64_t now);

    void add(const Value& entry);
    /// Adds an entry whose rows `writeRows` appends, as a JSON list, to the text that it gets.
    void add(std::string_view module, bool isEmpty, const ValueMap& moreInfo,
             const std::function<void(std::string&)>& writeRows);
    /// Returns the whole text. No call may follow.
    std::string finish();

private:
    void separate();

    std::int64_t now_;
    bool isFirst_ = true;
    std::string json_;
};

/// Makes {"error":[{"code":...,"message":...}]}, which says that the whole request failed.
Value failure(std::string_view code, std::string_view message);

/// Makes the older form that a few calls keep: "response" is a list of parts, each a pair of times and content.
Value olderAnswer(ValueList parts);
Value olderPart(ValueList rows, std::int64_t now);
/// Makes a part that failed while the others are valid.
Value olderFailedPart(std::int64_t code, std::string_view message, std::int64_t now);

}  // namespace tarvo::sandbox::envelope
