#pragma once

#include <memory>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/FlaggedStep.h"
#include "tarvobase/init_process/steps/CurrentUserStep.h"
#include "tarvobase/init_process/steps/GetCurrentUserNS.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// The step `currentUser`: downloads the row of the signed-in user. It runs before the account has any table, so the
/// step completes when the user is parsed; `storeParsedUser` stores the row and sets the flag.
class GetCurrentUserDM final : public FlaggedStep, public CurrentUserStep {
public:
    GetCurrentUserDM(UserDefaultsUtil userDefaultsUtil, std::shared_ptr<GetCurrentUserNS> networkService,
                     std::shared_ptr<UserPersistanceDelegate> userPersitanceDelegate, Scope scope);

    /// Makes a step over an adapter and the settings store.
    static std::shared_ptr<GetCurrentUserDM> make(
        const std::shared_ptr<DatabaseAdapter>& adapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<GetCurrentUserNS> networkService = std::make_shared<GetCurrentUserNS>());

    void storeParsedUser() override;

protected:
    void request(NetworkCompletion answered) override;
    Result<bool, ParserError> store(const Data& body) override;
    void markStored() override {}

private:
    const std::shared_ptr<GetCurrentUserNS> networkService_;
    const std::shared_ptr<UserPersistanceDelegate> userPersitanceDelegate_;
    std::optional<User> parsedUser_;  ///< kept until it is stored
};

}  // namespace tarvo
