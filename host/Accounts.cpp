#include "host/Accounts.h"

namespace tarvo::host {

void Accounts::signIn(const std::string& id, Account account) {
    platform::MutexLock lock(mutex_);
    accounts_.insert_or_assign(id, std::move(account));
    current_ = id;
}

bool Accounts::select(const std::string& id) {
    platform::MutexLock lock(mutex_);
    if (!accounts_.contains(id)) return false;
    current_ = id;
    return true;
}

AuthenticationType Accounts::authenticationType() {
    platform::MutexLock lock(mutex_);
    return current_ ? accounts_.at(*current_).authenticationType : AuthenticationType::oauth;
}

std::optional<std::vector<std::string>> Accounts::loggedInUsers() {
    platform::MutexLock lock(mutex_);
    if (accounts_.empty()) return std::nullopt;
    std::vector<std::string> ids;
    for (auto& [id, account] : accounts_) ids.push_back(id);
    return ids;
}

std::optional<std::string> Accounts::currentUser() {
    platform::MutexLock lock(mutex_);
    return current_;
}

void Accounts::authToken(const std::string& forUser, TokenCompletion completion) {
    std::optional<std::string> token;
    {
        platform::MutexLock lock(mutex_);
        if (auto found = accounts_.find(forUser); found != accounts_.end()) token = found->second.token;
        if (isHolding_) {
            held_.push_back([token, completion] { completion(token); });
            return;
        }
    }
    completion(std::move(token));
}

void Accounts::holdTokens() {
    platform::MutexLock lock(mutex_);
    isHolding_ = true;
}

void Accounts::releaseTokens() {
    std::vector<std::function<void()>> held;
    {
        platform::MutexLock lock(mutex_);
        isHolding_ = false;
        held.swap(held_);
    }
    for (auto& handOut : held) handOut();
}

std::size_t Accounts::heldTokens() {
    platform::MutexLock lock(mutex_);
    return held_.size();
}

void Accounts::signOut(const std::string& user) {
    platform::MutexLock lock(mutex_);
    accounts_.erase(user);
    if (current_ == user) current_.reset();
}

}  // namespace tarvo::host
