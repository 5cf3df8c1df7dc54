#pragma once

#include <optional>
#include <vector>

#include "platform/Data.h"
#include "tarvobase/value_objects/module/Module.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo {

struct TagsNWParser {
    /// Returns the tags of the module in the server's order. Returns nullopt for a refusal and for a body that is not a
    /// list of rows of texts. A row without a name gives no tag.
    static std::optional<std::vector<Tag>> getTags(const platform::Data& data, const Module& module);
};

}  // namespace tarvo
