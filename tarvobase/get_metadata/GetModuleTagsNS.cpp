#include "tarvobase/get_metadata/GetModuleTagsNS.h"

#include "tarvobase/network_layer/Parser.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

std::optional<std::vector<Tag>> TagsNWParser::getTags(const platform::Data& data, const Module& module) {
    auto answer = Parser::getJSONData(data);
    if (!answer || !answer->result || answer->result->empty()) return std::nullopt;
    auto rows = readKey<ValueList>(answer->result->front(), "data");
    if (!rows) return std::nullopt;
    std::vector<Tag> tags;
    for (auto& row : *rows) {
        auto texts = readAs<std::vector<std::string>>(row);
        if (!texts) return std::nullopt;
        if (texts->size() >= 2) tags.push_back({texts->at(0), texts->at(1), module.moduleName});
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
