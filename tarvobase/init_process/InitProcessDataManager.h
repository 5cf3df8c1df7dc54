#pragma once

#include <memory>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"

namespace tarvo {

class InitProcessDataManagerProtocol : public virtual platform::Object {
public:
    /// Records across launches that the first download of an account is complete.
    virtual void initProcessCompleteForUser(const std::string& with) = 0;
    /// Takes that record back, if there is one, so that the next launch downloads what is missing.
    virtual void initProcessIncompleteForUser(const std::string& with) = 0;
};

/// Keeps the record in the settings store.
class InitProcessDataManager final : public InitProcessDataManagerProtocol {
public:
    explicit InitProcessDataManager(std::shared_ptr<UserDefaultsProtocol> userDefaultsAdapter)
        : userDefaultsAdapter_(std::move(userDefaultsAdapter)) {}

    void initProcessCompleteForUser(const std::string& with) override;
    void initProcessIncompleteForUser(const std::string& with) override;

private:
    const std::shared_ptr<UserDefaultsProtocol> userDefaultsAdapter_;
};

}  // namespace tarvo
