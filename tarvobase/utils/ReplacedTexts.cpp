#include "tarvobase/utils/ReplacedTexts.h"

namespace tarvo {

namespace {

bool replaceTextsIn(Value& value, const std::string& former, const std::string& replacement) {
    if (auto text = value.asText()) {
        if (*text != former) return false;
        value = Value(replacement);
        return true;
    }
    bool found = false;
    if (auto list = value.asList()) {
        auto items = *list;
        for (auto& item : items) found = replaceTextsIn(item, former, replacement) || found;
        if (found) value = Value(std::move(items));
    } else if (auto map = value.asMap()) {
        ValueMap entries = *map;
        for (auto& entry : *map) {
            Value item = entry.value;
            if (!replaceTextsIn(item, former, replacement)) continue;
            entries.set(entry.name, std::move(item));
            found = true;
        }
        if (found) value = Value(std::move(entries));
    }
    return found;
}

}  // namespace

bool replaceTexts(ValueMap& map, const std::string& former, const std::string& replacement) {
    Value value(map);
    if (!replaceTextsIn(value, former, replacement)) return false;
    map = *value.asMap();
    return true;
}

}  // namespace tarvo
