#pragma once

#include "tarvobase/get_metadata/TagsNWParser.h"
#include "tarvobase/network_layer/StaticBaseNetworkService.h"

namespace tarvo {

/// Asks the server for the tags of a module.
class GetModuleTagsNS final : public StaticBaseNetworkService {
public:
    /// Gets the transport's error, or the tags, which are absent if the answer cannot be used.
    using Callback = std::function<void(Result<std::optional<std::vector<Tag>>, NetworkError>)>;

    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::getModuleTags); }
    /// Calls back exactly once, on the network queue, unless the service is released before that.
    void getTags(const Module& module, Callback callback) {
        post({{"module", module.moduleName}, {"moduleAPI", module.apiName}},
             [module, callback = std::move(callback)](NetworkAnswer answer) {
                 if (answer.error) return callback(*std::move(answer.error));
                 callback(TagsNWParser::getTags(answer.body, module));
             });
    }
};

/// Puts tags on records of the server. The caller fills the request.
class AddTagsNS final : public StaticBaseNetworkService {
public:
    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::addTags); }
};

}  // namespace tarvo
