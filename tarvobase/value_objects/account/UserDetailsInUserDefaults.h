#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/value_objects/account/UserDetails.h"

namespace tarvo {

/// The store of the account's own details.
class UserDetailsPersistanceDelegate : public virtual platform::Object {
public:
    virtual void storeUserDetails(const UserDetails& details) = 0;
    /// Returns nullopt until the account's first download.
    virtual std::optional<UserDetails> getUserDetails() const = 0;
};

/// Keeps the details of the current account in the settings store. Any thread may use it.
class UserDetailsInUserDefaults final : public UserDetailsPersistanceDelegate {
public:
    static constexpr const char* userDetailsKey = "UserDetails";

    explicit UserDetailsInUserDefaults(std::shared_ptr<UserDefaultsProtocol> userDefaults)
        : userDefaults_(std::move(userDefaults)) {}
    void storeUserDetails(const UserDetails& details) override {
        userDefaults_->setDictionary(UserDetailsConstants().getDictionary(details), userDetailsKey,
                                     UserDefaultsGroup::current());
    }
    std::optional<UserDetails> getUserDetails() const override {
        auto stored = userDefaults_->dictionaryForKey(userDetailsKey, UserDefaultsGroup::current());
        return stored ? std::optional(UserDetailsConstants().getValue(*stored)) : std::nullopt;
    }

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
