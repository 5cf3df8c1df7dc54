#include "tarvobase/get_metadata/GetModuleTagsNS.h"

#include <algorithm>

#include "tarvobase/network_layer/Parser.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

namespace {

bool holdsTextsOnly(const Value& row) {
    auto list = row.asList();
    return list && std::all_of(list->begin(), list->end(), [](auto& entry) { return entry.asText() != nullptr; });
}

}  // namespace

std::optional<std::vector<Tag>> TagsNWParser::getTags(const platform::Data& data, const Module& module) {
    auto answer = Parser::getJSONData(data);
    if (!answer || !answer->result || answer->result->empty()) return std::nullopt;
    auto rows = readKey<ValueList>(answer->result->front(), "data");
    if (!rows || !std::all_of(rows->begin(), rows->end(), holdsTextsOnly)) return std::nullopt;
    std::vector<Tag> tags;
    for (auto& entry : *rows) {
        auto& row = *entry.asList();
        if (row.size() >= 2) tags.push_back({*row[0].asText(), *row[1].asText(), module.moduleName});
    }
    return tags;
}

void GetModuleTagsNS::getTags(const Module& module, Callback callback) {
    sendRequest({.params = ValueMap{{"module", module.moduleName}, {"moduleAPI", module.apiName}},
                 .method = HTTPMethod::post,
                 .shouldAddOrgId = true,
                 .completionHandler = [module, callback = std::move(callback)](Data data, std::optional<URLResponse>,
                                                                               std::optional<std::string>,
                                                                               std::optional<NetworkError> error, int) {
                     if (error)
                         callback(*std::move(error));
                     else
                         callback(TagsNWParser::getTags(data, module));
                 }});
}

}  // namespace tarvo
