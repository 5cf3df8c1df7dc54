#include "tarvobase/value_objects/module/Settings.h"

#include "platform/Text.h"
#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

std::optional<SortField> Settings::getSortField() const {
    auto parts = text::split(customSettings, ",");
    if (parts.front().empty()) return std::nullopt;
    bool isDescending = parts.size() > 1 && text::equalsIgnoringAsciiCase(parts[1], "desc");
    return SortField{parts.front(), !isDescending};
}

template struct StoredNames<SettingsConstants, Settings>;

}  // namespace tarvo
