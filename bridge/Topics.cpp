#include "bridge/Topics.h"

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/InitialProcessComplete.h"

namespace tarvo::bridge {

namespace {

using Notify = Topics::Notify;

class TopicListener {
public:
    TopicListener(const Topics::Request& request, Notify notify) : request_(request), notify_(std::move(notify)) {}

protected:
    void report(std::string_view name, ValueMap arguments) { notify_(request_.topic, name, std::move(arguments)); }

    const Topics::Request request_;

private:
    const Notify notify_;
};

class SettingsListener final : public TopicListener, public UserDefaultsValueObserver {
public:
    using TopicListener::TopicListener;
    std::vector<std::string> observingKeys() const override { return request_.keys; }
    std::vector<std::string> observingGroups() const override { return request_.groups; }
    void newValue(const Value& value, const std::string& forKey, const std::string& inGroup) override {
        report("newValue", {{"value", value}, {"forKey", forKey}, {"inGroup", inGroup}});
    }
};

class InitialProcessListener final : public TopicListener, public InitialProcessComplete {
public:
    using TopicListener::TopicListener;
    void initialProcessComplete(const std::string& userId) override {
        report("initialProcessComplete", {{"userId", userId}});
    }
};

template <class Topic, class Listener>
std::shared_ptr<platform::Object> listener(const Topics::Request& request, const Notify& notify) {
    auto made = std::make_shared<Listener>(request, notify);
    BrenNotificationCenter::shared().add<Topic>(made);
    return made;
}

/// One row per topic.
struct Row {
    std::string_view topic;
    std::shared_ptr<platform::Object> (*listen)(const Topics::Request& request, const Notify& notify);
};
constexpr Row rows[] = {
    {"InitialProcessComplete", listener<InitialProcessComplete, InitialProcessListener>},
    {"UserDefaultsValueObserver", listener<UserDefaultsValueObserver, SettingsListener>},
};

}  // namespace

bool Topics::change(const Request& request, const Notify& notify) {
    for (auto& row : rows) {
        if (row.topic != request.topic) continue;
        listeners_.erase(request.topic);
        if (request.listen) listeners_[request.topic] = row.listen(request, notify);
        return true;
    }
    return false;
}

}  // namespace tarvo::bridge
