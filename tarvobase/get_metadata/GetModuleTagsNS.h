#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "platform/Data.h"
#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/value_objects/Module.h"
#include "tarvobase/value_objects/Tag.h"

namespace tarvo {

struct TagsNWParser {
    /// The tags of the module in the server's order. Nothing for a refusal and for a body that is no list of rows of
    /// texts; a row without a name gives no tag.
    static std::optional<std::vector<Tag>> getTags(const platform::Data& data, const Module& module);
};

/// Asks the server for the tags of a module.
class GetModuleTagsNS final : public StaticBaseNetworkService {
public:
    /// The transport's error, or the tags; absent tags when the answer cannot be used.
    using Callback = std::function<void(Result<std::optional<std::vector<Tag>>, NetworkError>)>;

    using StaticBaseNetworkService::StaticBaseNetworkService;
    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::getModuleTags); }
    /// Calls back exactly once, on the network queue, unless the service is let go before.
    void getTags(const Module& module, Callback callback);
};

/// Puts tags on records of the server. What goes into the request is the caller's.
class AddTagsNS final : public StaticBaseNetworkService {
public:
    using StaticBaseNetworkService::StaticBaseNetworkService;
    std::string baseURL() const override { return networkConstants->getURL(CRMAPIs::Case::addTags); }
};

}  // namespace tarvo
