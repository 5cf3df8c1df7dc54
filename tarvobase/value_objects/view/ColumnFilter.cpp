#include "tarvobase/value_objects/view/ColumnFilter.h"

#include "platform/Text.h"

namespace tarvo {

namespace {

std::string textOf(const Value& value) {
    auto list = value.asList();
    if (!list) return value.toText().value_or("");
    std::vector<std::string> items;
    for (auto& item : *list) items.push_back(item.asText() ? '"' + *item.asText() + '"' : textOf(item));
    return '[' + text::join(items, ", ") + ']';
}

}  // namespace

std::vector<ColumnFilterInputType> ColumnFilter::filterInputTypes() const {
    std::vector<ColumnFilterInputType> types;
    for (auto& input : filterInputs)
        if (auto type = std::get_if<ColumnFilterInputType>(&input)) types.push_back(*type);
    return types;
}

void ColumnFilter::setInput(const ValueList& values) {
    filterInputValues.emplace();
    for (auto& value : values) filterInputValues->push_back(textOf(value));
}

void ColumnFilter::setLookup(const std::map<int, Value>& values) {
    lookupValues.emplace();
    for (auto& [index, value] : values) lookupValues->emplace(index, textOf(value));
}

}  // namespace tarvo
