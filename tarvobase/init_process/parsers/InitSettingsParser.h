#pragma once

#include <optional>
#include <vector>

#include "platform/Value.h"
#include "tarvobase/value_objects/module/Settings.h"

namespace tarvo {

/// Parses the block `settings` of the init answer: the application's settings by position, with a list of rows among
/// them that holds the settings of each module.
struct InitSettingsParser {
    /// The data are the list itself, or a list that contains only that list. Returns nullopt if the row of a module
    /// does not name the module. A value that is neither a text nor a list of texts makes no setting.
    static std::optional<std::vector<Settings>> parse(const ValueList& data);
};

}  // namespace tarvo
