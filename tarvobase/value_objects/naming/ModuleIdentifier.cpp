#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

#include "platform/Log.h"

namespace tarvo {

namespace {

void logUnknown(const std::string& name) {
    platform::log(platform::LogLevel::warning, "values", "Un supported or new module found: " + name);
}

}  // namespace

// Every plain case can be read except `owners`, which has no module of the server.
std::optional<ModuleIdentifier> ModuleIdentifier::known(const std::string& name) {
    if (name.starts_with("CustomModule")) return custom(name);
    auto plain = fromRawText<Case>(name);
    if (!plain || *plain == Case::owners) return std::nullopt;
    return ModuleIdentifier(*plain);
}

ModuleIdentifier ModuleIdentifier::fromModuleName(const std::string& moduleName) {
    if (auto identifier = known(moduleName)) return *identifier;
    logUnknown(moduleName);
    return unsupportedOrNew(moduleName);
}

std::optional<ModuleIdentifier> ModuleIdentifier::fromRawValue(const std::string& rawValue) {
    auto identifier = known(rawValue);
    if (!identifier) logUnknown(rawValue);
    return identifier;
}

std::string ModuleIdentifier::rawValue() const {
    bool named = case_ == Case::custom || case_ == Case::unsupportedOrNew;
    return named ? name_ : std::string(rawText(case_));
}

bool ModuleIdentifier::isActivityModule() const {
    return case_ == Case::events || case_ == Case::tasks || case_ == Case::calls || case_ == Case::activities;
}

bool ModuleIdentifier::isActivityModule(std::string_view moduleName) {
    return moduleName == "Events" || moduleName == "Tasks" || moduleName == "Calls" || moduleName == "Activities";
}

bool ModuleIdentifier::isInventoryModule(std::string_view moduleName) {
    return moduleName == "Invoices" || moduleName == "Quotes" || moduleName == "PurchaseOrders" ||
           moduleName == "SalesOrders";
}

}  // namespace tarvo
