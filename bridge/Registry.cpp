#include "bridge/Registry.h"

namespace tarvo::bridge {

const Registry::Start* Registry::find(std::string_view name) const {
    auto found = calls_.find(name);
    return found == calls_.end() ? nullptr : &found->second;
}

std::vector<std::string> Registry::names() const {
    std::vector<std::string> names;
    for (auto& [name, start] : calls_) names.push_back(name);
    return names;
}

}  // namespace tarvo::bridge
