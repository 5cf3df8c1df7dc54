#include "sandbox/changes/ChangeLog.h"

#include "platform/Json.h"

namespace tarvo::sandbox {

void ChangeLog::add(AppliedChange change) {
    changes_.push_back(std::move(change));
    ++total_;
    if (changes_.size() > mostPayloads) changes_[changes_.size() - mostPayloads - 1].payload = Value();
    if (changes_.size() > mostChanges) changes_.pop_front();
}

ValueList ChangeLog::all() const {
    ValueList list;
    auto number = total_ - static_cast<std::int64_t>(changes_.size());
    for (const auto& change : changes_)
        list.push_back(ValueMap{{"number", ++number},
                                {"time", change.time},
                                {"key", change.key},
                                {"call", change.call},
                                {"account", change.account},
                                {"module", change.module},
                                {"id", change.id},
                                {"kind", change.kind},
                                {"payload", change.payload}});
    return list;
}

void ChangeLog::keep(const std::string& key, const Value& answer) {
    if (key.empty()) return;
    auto [place, isNew] = answers_.emplace(key, json::write(answer).value_or("null"));
    if (!isNew) return;
    keys_.push_back(key);
    answerBytes_ += place->second.size();
    while (answerBytes_ > mostAnswerBytes && keys_.size() > 1) {
        auto oldest = answers_.find(keys_.front());
        answerBytes_ -= oldest->second.size();
        answers_.erase(oldest);
        keys_.pop_front();
    }
}

std::optional<Value> ChangeLog::answerOf(const std::string& key) const {
    auto found = answers_.find(key);
    if (key.empty() || found == answers_.end()) return std::nullopt;
    return json::parse(found->second).value_or(Value());
}

}  // namespace tarvo::sandbox
