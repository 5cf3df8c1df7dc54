#include "sandbox/calls/CallParameters.h"

#include "platform/Json.h"
#include "platform/Text.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox::calls {

std::optional<std::vector<std::string>> listIn(const std::string& parameter) {
    auto parsed = json::parse(parameter);
    if (!parsed || !parsed->asList()) return std::nullopt;
    std::vector<std::string> texts;
    for (const auto& item : *parsed->asList()) texts.push_back(item.textOr(""));
    return texts;
}

std::vector<std::string> namesIn(const std::string& parameter) {
    if (parameter.empty()) return {};
    auto list = listIn(parameter);
    return list ? *list : text::split(parameter, ",");
}

std::string parameter(const Call& call, std::string_view name) { return call.request.parameter(name).value_or(""); }

std::optional<std::int64_t> countIn(const Call& call, std::string_view name) {
    auto given = parameter(call, name);
    if (given.empty()) return 0;
    auto number = text::toInteger(given);
    return number && *number >= 0 ? number : std::nullopt;
}

const ModuleData* moduleOf(const Call& call, std::string_view nameParameter, std::string_view apiNameParameter) {
    const auto* module = call.data.module(parameter(call, nameParameter));
    if (!module) module = call.data.module(parameter(call, apiNameParameter));
    return module && module->hasOwnLists ? module : nullptr;
}

const ViewData* viewOf(const Call& call, const ModuleData& module, std::string_view viewId) {
    for (const auto& view : call.data.views)
        if (view.id == viewId && isViewOf(view, module.name)) return &view;
    return nullptr;
}

}  // namespace tarvo::sandbox::calls
