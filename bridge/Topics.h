#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "platform/Describe.h"
#include "platform/Object.h"
#include "platform/Value.h"

namespace tarvo::bridge {

/// The topics of the notification bus that a session listens to. Each notice becomes a line. Main queue.
class Topics {
public:
    /// Called from any thread.
    using Notify = std::function<void(std::string_view topic, std::string_view name, ValueMap arguments)>;

    struct Request {
        std::string topic;
        bool listen = true;
        /// The settings that `UserDefaultsValueObserver` observes; other topics have neither.
        std::vector<std::string> keys;
        std::vector<std::string> groups;

        static constexpr auto fields() {
            return describe(field("topic", &Request::topic), optionalField("listen", &Request::listen),
                            optionalField("keys", &Request::keys), optionalField("groups", &Request::groups));
        }
    };

    /// Starts or stops listening; starting again replaces the former keys and groups. Returns false if there is no such
    /// topic.
    bool change(const Request& request, const Notify& notify);

private:
    std::map<std::string, std::shared_ptr<platform::Object>> listeners_;  // the bus holds them weakly
};

}  // namespace tarvo::bridge
