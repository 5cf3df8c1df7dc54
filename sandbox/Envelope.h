#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "platform/Value.h"

/// The fixed forms around the content of an answer. Times are milliseconds of the server's clock.
namespace tarvo::sandbox::envelope {

/// One entry of the result list. An empty list of rows is marked with "nodata".
Value entry(std::string_view module, ValueList rows, std::int64_t now);
/// The same with further members in its "info".
Value entry(std::string_view module, ValueList rows, std::int64_t now, const ValueMap& moreInfo);
/// An entry that failed while its siblings stand.
Value failedEntry(std::string_view module, std::string_view code, std::string_view message, std::int64_t now);

/// {"response":{"result":[...],"responseInfo":{...}}}
Value answer(ValueList entries, std::int64_t now);
/// Writes the text of an answer whose rows are too many to be made as values first.
class Writer {
public:
    explicit Writer(std::int64_t now);

    void add(const Value& entry);
    /// An entry whose rows, a JSON list, `writeRows` appends to the text that it gets.
    void add(std::string_view module, bool isEmpty, const ValueMap& moreInfo,
             const std::function<void(std::string&)>& writeRows);
    /// The whole text; the last call.
    std::string finish();

private:
    void separate();

    std::int64_t now_;
    bool isFirst_ = true;
    std::string json_;
};

/// {"error":[{"code":...,"message":...}]}: the whole request failed.
Value failure(std::string_view code, std::string_view message);

/// The older form that a few calls keep: "response" is a list of parts, each a pair of times and content.
Value olderAnswer(ValueList parts);
Value olderPart(ValueList rows, std::int64_t now);
/// A part that failed while the others stand.
Value olderFailedPart(std::int64_t code, std::string_view message, std::int64_t now);

}  // namespace tarvo::sandbox::envelope
