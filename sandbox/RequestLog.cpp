#include "sandbox/RequestLog.h"

#include "platform/Json.h"

namespace tarvo::sandbox {

RequestLog::RequestLog(const std::string& path, bool logValues) : logValues_(logValues) {
    if (!path.empty()) file_.open(path, std::ios::trunc);
}

// Returns a list of names, or a map from name to value, in which the last value of a repeated name counts.
Value RequestLog::describeParameters(const Request& request) const {
    ValueMap values;
    for (const auto& [name, value] : request.parameters)
        values.set(name, name == "authtoken" ? Value("(hidden)") : Value(value));
    for (const auto& file : request.files) values.set(file.field, static_cast<std::int64_t>(file.content.size()));
    if (logValues_) return values;
    ValueList names;
    for (const auto& entry : values) names.emplace_back(entry.name);
    return names;
}

void RequestLog::add(const LoggedRequest& request) {
    platform::MutexLock lock(mutex_);
    Value line = ValueMap{{"number", ++total_},
                          {"receivedAt", request.receivedAt},
                          {"method", request.method},
                          {"path", request.path},
                          {"parameters", request.parameters},
                          {"account", request.account},
                          {"organisation", request.organisation},
                          {"transactionId", request.transactionId},
                          {"status", request.status},
                          {"fault", request.fault},
                          {"ms", request.milliseconds}};
    if (file_) file_ << json::write(line).value_or("") << std::endl;
    requests_.push_back(std::move(line));
    if (requests_.size() > capacity) requests_.pop_front();
}

ValueList RequestLog::all() const {
    platform::MutexLock lock(mutex_);
    return {requests_.begin(), requests_.end()};
}

void RequestLog::clear() {
    platform::MutexLock lock(mutex_);
    requests_.clear();
}

std::int64_t RequestLog::total() const {
    platform::MutexLock lock(mutex_);
    return total_;
}

}  // namespace tarvo::sandbox
