#include "host/serve/ConfigFields.h"

#include <functional>

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo::bridge {

template <>
struct JsonForm<FieldIdentifier> {
    static Reading read(const Value& json, FieldIdentifier& into) {
        auto name = json.textOr("");
        if (name == "crmColumnNameIdentifier")
            into = FieldIdentifier::crmColumnNameIdentifier();
        else if (name == "fieldAPINameIdentifier")
            into = FieldIdentifier::fieldAPINameIdentifier();
        else
            return Misread{{}, "one of crmColumnNameIdentifier, fieldAPINameIdentifier is expected"};
        return {};
    }
};

}  // namespace tarvo::bridge

namespace tarvo::host {

namespace {

using bridge::Misread;
using bridge::Reading;
using Change = std::function<void()>;

struct ConfigField {
    std::string_view name;
    /// Reads the value and prepares the change, without making it.
    Reading (*read)(const Value& json, Change& change);
};

template <auto setting>
Reading readSetting(const Value& json, Change& change) {
    auto& configuration = CommonConfigration::sharedInstance();
    decltype((configuration.*setting).get()) value{};
    if (auto misread = bridge::fromJson(json, value)) return misread;
    change = [&configuration, value = std::move(value)] { (configuration.*setting).set(value); };
    return {};
}

using C = CommonConfigration;

// Objects of the program (adapters, queues, generators) cannot be set by a text.
constexpr ConfigField configFields[] = {
    {"photosLocation", readSetting<&C::photosLocation>},
    {"appBuildID", readSetting<&C::appBuildID>},
    {"localDirectoryLocation", readSetting<&C::localDirectoryLocation>},
    {"localCacheLocation", readSetting<&C::localCacheLocation>},
    {"networkAdapter", readSetting<&C::networkAdapter>},
    {"persistenceMode", readSetting<&C::persistenceMode>},
    {"serverType", readSetting<&C::serverType>},
    {"seModule", readSetting<&C::seModule>},
    {"attachments", readSetting<&C::attachments>},
    {"userDefaultsGroup", readSetting<&C::userDefaultsGroup>},
    {"dclBD", readSetting<&C::dclBD>},
    {"dclPrefix", readSetting<&C::dclPrefix>},
    {"verticalDomain", readSetting<&C::verticalDomain>},
    {"currentOrgID", readSetting<&C::currentOrgID>},
    {"currentOrgAPIURL", readSetting<&C::currentOrgAPIURL>},
    {"appUserAgent", readSetting<&C::appUserAgent>},
    {"servletPath", readSetting<&C::servletPath>},
    {"baseURLType", readSetting<&C::baseURLType>},
    {"initDataType", readSetting<&C::initDataType>},
    {"getMetadataApiVersion", readSetting<&C::getMetadataApiVersion>},
    {"passOrgID", readSetting<&C::passOrgID>},
    {"serverCVCriteria", readSetting<&C::serverCVCriteria>},
    {"fieldIdentifier", readSetting<&C::fieldIdentifier>},
    {"modifySystemProperties", readSetting<&C::modifySystemProperties>},
    {"maxSingleMerge", readSetting<&C::maxSingleMerge>},
    {"maxSyncAttempt", readSetting<&C::maxSyncAttempt>},
    {"maxSyncTimeInterval", readSetting<&C::maxSyncTimeInterval>},
    {"maxFileSyncTimeInterval", readSetting<&C::maxFileSyncTimeInterval>},
    {"isModuleIDSupported", readSetting<&C::isModuleIDSupported>},
    {"hasAdditionalInfoAndSubformKeysInLayoutMeta", readSetting<&C::hasAdditionalInfoAndSubformKeysInLayoutMeta>},
};

const ConfigField* fieldNamed(std::string_view name) {
    for (auto& field : configFields)
        if (field.name == name) return &field;
    return nullptr;
}

}  // namespace

Reading setConfigFields(const ValueMap& fields) {
    std::vector<Change> changes;
    for (auto& entry : fields) {
        auto field = fieldNamed(entry.name);
        if (!field) return Misread{entry.name, "there is no field of this name that can be set"};
        if (auto misread = field->read(entry.value, changes.emplace_back()))
            return std::move(*misread).below(entry.name);
    }
    for (auto& change : changes) change();
    return {};
}

}  // namespace tarvo::host
