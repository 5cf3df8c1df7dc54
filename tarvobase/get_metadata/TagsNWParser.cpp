#include "tarvobase/get_metadata/TagsNWParser.h"

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

}  // namespace tarvo
