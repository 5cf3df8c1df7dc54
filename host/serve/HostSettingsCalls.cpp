#include "host/serve/HostSettingsCalls.h"

#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo::host {

namespace {

using bridge::CallPtr;

enum class Group { current, base, none, other };
enum class Action { read, write, remove, observe };

struct SettingsRequest {
    std::string key;
    Action action = Action::read;
    Group group = Group::current;
    std::string owner;  // of the group `other`
    Value value;        // to be written

    static constexpr auto fields() {
        return describe(field("key", &SettingsRequest::key), optionalField("action", &SettingsRequest::action),
                        optionalField("group", &SettingsRequest::group),
                        optionalField("owner", &SettingsRequest::owner),
                        optionalField("value", &SettingsRequest::value));
    }
};

}  // namespace
}  // namespace tarvo::host

namespace tarvo {

template <>
struct EnumCases<host::Group> {
    using G = host::Group;
    static constexpr EnumCase<G> cases[] = {
        {G::current, "current"}, {G::base, "base"}, {G::none, "none"}, {G::other, "other"}};
};
template <>
struct EnumCases<host::Action> {
    using A = host::Action;
    static constexpr EnumCase<A> cases[] = {
        {A::read, "read"}, {A::write, "write"}, {A::remove, "remove"}, {A::observe, "observe"}};
};

namespace host {

namespace {

UserDefaultsGroup groupOf(const SettingsRequest& request) {
    switch (request.group) {
        case Group::base:
            return UserDefaultsGroup::base();
        case Group::none:
            return UserDefaultsGroup::none();
        case Group::other:
            return UserDefaultsGroup::other(request.owner);
        case Group::current:
            break;
    }
    return UserDefaultsGroup::current();
}

// A setting has one kind, so at most one of the readers finds it.
Value read(const UserDefaultsProtocol& store, const std::string& key, const UserDefaultsGroup& group) {
    if (auto text = store.stringForKey(key, group)) return *text;
    if (auto number = store.integerForKey(key, group)) return *number;
    if (auto flag = store.boolForKey(key, group)) return *flag;
    if (auto list = store.arrayForKey(key, group)) return *list;
    if (auto map = store.dictionaryForKey(key, group)) return *map;
    return {};
}

bool isSetting(const Value& value) {
    return value.asText() || value.asInteger() || value.asBool() || value.asList() || value.asMap();
}

/// Stores a value, or removes the key for null. An error comes first if the disk refuses the value.
void change(const SettingsRequest& request, const Value& value, const CallPtr& call) {
    bool isStored =
        BrenUserDefaults().update(request.key, groupOf(request), [&](const Value&) -> Value { return value; });
    if (!isStored)
        call->event("onError", "error",
                    ValueMap{{"case", "notStored"},
                             {"value", ValueMap{{"message", "the setting could not be written to the disk"}}}});
    call->done();
}

void settings(const SettingsRequest& request, const CallPtr& call, bridge::Topics& topics) {
    switch (request.action) {
        case Action::read:
            return call->done(
                "response",
                ValueMap{{"value", bridge::writable(read(BrenUserDefaults(), request.key, groupOf(request)))}});
        case Action::write:
            if (!isSetting(request.value))
                return call->refuse("request.value: text, a whole number, true or false, a list or a map is expected");
            return change(request, request.value, call);
        case Action::remove:
            return change(request, Value(), call);
        case Action::observe:
            topics.change(
                {.topic = "UserDefaultsValueObserver", .keys = {request.key}, .groups = {groupOf(request).text()}},
                call->notifier());
            return call->done();
    }
}

}  // namespace

void addSettingsCalls(bridge::Registry& registry, const std::shared_ptr<bridge::Topics>& topics) {
    registry.addOperation<SettingsRequest>(
        "host.settings",
        [topics](const SettingsRequest& request, const CallPtr& call) { settings(request, call, *topics); });
}

}  // namespace host
}  // namespace tarvo
