#include "sandbox/calls/ChangeLists.h"

#include "platform/Text.h"
#include "sandbox/JsonText.h"

namespace tarvo::sandbox::calls {

void appendRecords(const std::vector<RecordData>& records, std::string& json) {
    RecordValue scratch;
    json += '[';
    for (const auto& record : records) {
        if (json.back() != '[') json += ',';
        record.write(json, scratch);
    }
    json += ']';
}

void appendIds(const std::vector<std::string>& ids, std::string& json) {
    json += '[';
    if (!ids.empty()) {
        json += '[';
        appendJsonText(json, text::join(ids, ","));
        json += ']';
    }
    json += ']';
}

}  // namespace tarvo::sandbox::calls
