#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/FunctionRef.h"
#include "platform/Object.h"
#include "platform/SettingsStore.h"
#include "platform/Value.h"

namespace tarvo {

/// The owner of a setting: a named owner, the current account, the installation (`base`), or nobody (`none`).
class UserDefaultsGroup {
public:
    static UserDefaultsGroup other(std::string text) { return UserDefaultsGroup(Case::other, std::move(text)); }
    static UserDefaultsGroup current() { return UserDefaultsGroup(Case::current); }
    static UserDefaultsGroup base() { return UserDefaultsGroup(Case::base); }
    static UserDefaultsGroup none() { return UserDefaultsGroup(Case::none); }

    /// Returns the name by which observers know the group: the owner, the current account's id, "BaseGroup", or the
    /// empty text.
    std::string text() const;
    /// Returns the key under which a value of this group is stored. The group `current` means the account that is
    /// current at the call.
    std::string keyForKeyName(std::string_view key) const;
    bool isCurrent() const { return case_ == Case::current; }

private:
    enum class Case { other, current, base, none };
    explicit UserDefaultsGroup(Case which, std::string text = {}) : case_(which), text_(std::move(text)) {}
    Case case_;
    std::string text_;
};

/// Is notified of each new value whose key is in `observingKeys` and whose group's text is in `observingGroups`. Both
/// are asked on the thread that sets a value, and must answer at once. `newValue` runs on the bus's background queue.
/// The notice is posted before the value is written.
class UserDefaultsValueObserver : public virtual platform::Object {
public:
    virtual std::vector<std::string> observingKeys() const = 0;
    virtual std::vector<std::string> observingGroups() const = 0;
    virtual void newValue(const Value& value, const std::string& forKey, const std::string& inGroup) = 0;
};

/// Settings in groups. They may be used from any thread. A value is on the disk when its setter returns. Readers return
/// nullopt if the key is absent or its value is of another kind.
class UserDefaultsProtocol : public virtual platform::Object {
public:
    using Group = UserDefaultsGroup;

    virtual void synchronise() = 0;

    virtual void setString(const std::string& value, const std::string& forKey, const Group& forGroup) = 0;
    virtual void setSecureString(const std::string& value, const std::string& forKey, const Group& forGroup) = 0;
    /// Removes the key if `value` is nullopt.
    virtual void setSecureArray(const std::optional<ValueList>& value, const std::string& forKey,
                                const Group& forGroup) = 0;
    virtual void setSecureDictionary(const std::optional<ValueMap>& value, const std::string& forKey,
                                     const Group& forGroup) = 0;
    virtual void setInteger(std::int64_t value, const std::string& forKey, const Group& forGroup) = 0;
    virtual void setBool(bool value, const std::string& forKey, const Group& forGroup) = 0;
    virtual void setArray(const ValueList& value, const std::string& forKey, const Group& forGroup) = 0;
    virtual void setDictionary(const ValueMap& value, const std::string& forKey, const Group& forGroup) = 0;
    virtual void set(std::int64_t value, const std::string& forKey, const Group& andGroup) = 0;

    virtual std::optional<std::string> stringForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<std::string> secureStringForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<ValueList> secureArrayForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<ValueMap> secureDictionaryForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<std::int64_t> integerForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<bool> boolForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<ValueList> arrayForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<ValueMap> dictionaryForKey(const std::string& key, const Group& forGroup) const = 0;
    virtual std::optional<std::int64_t> int64(const std::string& forKey, const Group& andGroup) const = 0;

    virtual void removeValueForKey(const std::string& key, const Group& inGroup) = 0;
    virtual void removeSecureStringForKey(const std::string& key, const Group& inGroup) = 0;
    /// Removes all values but those of the group `none`.
    virtual void removeAllStoredValues() = 0;
    /// Removes the values of a group whose keys `chosen` takes, as one change. The keys come as the setters got them.
    virtual void removeValues(platform::FunctionRef<bool(std::string_view key)> chosen, const Group& inGroup) = 0;

    virtual void addObserver(const std::shared_ptr<UserDefaultsValueObserver>& observer) = 0;

    /// Replaces a value by `next(value)` under one lock, so that no change in between is lost. `next` gets null for an
    /// absent key; if it returns null, the key is removed. Returns false if the new value could not be stored.
    virtual bool update(const std::string& key, const Group& inGroup, platform::FunctionRef<Value(const Value&)> next,
                        SettingsFlush flush) = 0;
    bool update(const std::string& key, const Group& inGroup, platform::FunctionRef<Value(const Value&)> next) {
        return update(key, inGroup, next, SettingsFlush::now);
    }
};

/// The settings of the suite that `CommonConfigration.userDefaultsGroup` names when the object is made. Its file lies
/// in
/// "/settings" below `localDirectoryLocation`, beside the databases, unless the host set a folder of `SettingsStores`.
/// The two constructors differ in what the group `current` means.
class BrenUserDefaults final : public UserDefaultsProtocol {
public:
    /// The group `current` is the account that is current at each call.
    BrenUserDefaults();
    /// The group `current` is always this account. Work that belongs to an account uses it, so that a switch in the
    /// meantime does not lead it to the settings of another account.
    explicit BrenUserDefaults(std::string account);
    /// Returns settings whose group `current` is always the account that is current now.
    static std::shared_ptr<BrenUserDefaults> ofCurrentAccount();

    void synchronise() override;
    void setString(const std::string& value, const std::string& forKey, const Group& forGroup) override;
    void setSecureString(const std::string& value, const std::string& forKey, const Group& forGroup) override;
    void setSecureArray(const std::optional<ValueList>& value, const std::string& forKey,
                        const Group& forGroup) override;
    void setSecureDictionary(const std::optional<ValueMap>& value, const std::string& forKey,
                             const Group& forGroup) override;
    void setInteger(std::int64_t value, const std::string& forKey, const Group& forGroup) override;
    void setBool(bool value, const std::string& forKey, const Group& forGroup) override;
    void setArray(const ValueList& value, const std::string& forKey, const Group& forGroup) override;
    void setDictionary(const ValueMap& value, const std::string& forKey, const Group& forGroup) override;
    void set(std::int64_t value, const std::string& forKey, const Group& andGroup) override;
    std::optional<std::string> stringForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<std::string> secureStringForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<ValueList> secureArrayForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<ValueMap> secureDictionaryForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<std::int64_t> integerForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<bool> boolForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<ValueList> arrayForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<ValueMap> dictionaryForKey(const std::string& key, const Group& forGroup) const override;
    std::optional<std::int64_t> int64(const std::string& forKey, const Group& andGroup) const override;
    void removeValueForKey(const std::string& key, const Group& inGroup) override;
    void removeSecureStringForKey(const std::string& key, const Group& inGroup) override;
    void removeAllStoredValues() override;
    void removeValues(platform::FunctionRef<bool(std::string_view key)> chosen, const Group& inGroup) override;
    void addObserver(const std::shared_ptr<UserDefaultsValueObserver>& observer) override;
    using UserDefaultsProtocol::update;
    bool update(const std::string& key, const Group& inGroup, platform::FunctionRef<Value(const Value&)> next,
                SettingsFlush flush) override;

private:
    void store(Value value, const std::string& key, const Group& group);
    /// Returns the group with this object's own account in place of the current one.
    Group own(const Group& group) const;
    std::string keyOf(const std::string& key, const Group& group) const { return own(group).keyForKeyName(key); }

    const std::optional<std::string> account_;
    std::shared_ptr<platform::SettingsStore> userDefaults_;
};

}  // namespace tarvo
