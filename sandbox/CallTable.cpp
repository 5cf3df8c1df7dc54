#include "sandbox/CallTable.h"

#include "sandbox/calls/Answers.h"

namespace tarvo::sandbox {
namespace {

constexpr CallRow callRows[] = {
    {"POST", "getappinitdata", calls::initData},
    {"POST", "getlumetappinitdata", calls::initData},
    {"POST", "getmoduletags", calls::moduleTags},
    {"POST", "getmetadatainfo", calls::metadata},
    {"POST", "getcustomviewsinfo", calls::views},
    {"POST", "getuserdetails", calls::userDetails},
    {"POST", "getpermissions", calls::permissions},
    {"POST", "gettaxcurrencies", calls::taxesAndCurrencies},
    {"POST", "getpipelines", calls::pipelines},
    {"POST", "products/getcvrecords", calls::viewRecords},
    {"POST", "products/getrecords", calls::moduleRecords},
    {"POST", "products/getsyncrecords", calls::changedRecords},
    {"POST", "products/getrecord", calls::singleRecord},
    {"POST", "products/addrecord", calls::addRecords},
    {"POST", "products/updaterecord", calls::updateRecords},
    {"POST", "products/deleterecord", calls::deleteRecord},
    {"POST", "uploadattachment", calls::uploadAttachment},
    {"POST", "uploadvoicenote", calls::uploadVoiceNote},
};

}  // namespace

std::span<const CallRow> callTable() { return callRows; }

std::optional<CallPath> parseCallPath(std::string_view path) {
    for (std::string_view servlet : {"crm", "vestra"}) {
        auto rest = path;
        if (!rest.starts_with("/")) return std::nullopt;
        rest.remove_prefix(1);
        if (!rest.starts_with(servlet)) continue;
        rest.remove_prefix(servlet.size());
        if (!rest.starts_with("/v") || rest.size() < 5 || rest[2] < '2' || rest[2] > '5' || rest[3] != '/')
            return std::nullopt;
        return CallPath{std::string(servlet), rest[2] - '0', std::string(rest.substr(4))};
    }
    return std::nullopt;
}

}  // namespace tarvo::sandbox
