#pragma once

#include <memory>
#include <string>

#include "tarvobase/configuration/UserDefaults.h"
#include "tarvobase/download/FlaggedStep.h"
#include "tarvobase/init_process/steps/GetPermissionsNS.h"
#include "tarvobase/value_objects/account/UserPersistanceDelegate.h"
#include "tarvobase/value_objects/module/ModulePermissionsPersistanceDelegate.h"

namespace tarvo {

class DatabaseAdapter;

/// The step `permission`: downloads what the profile of the current user may do with each module. A user who is not
/// stored has an empty profile. The step fails if the answer contains no permissions, since every profile has some.
class InitGetPermissionsDM final : public FlaggedStep {
public:
    InitGetPermissionsDM(std::shared_ptr<GetPermissionsNSP> networkService,
                         std::shared_ptr<UserPersistanceDelegate> usersPersistance,
                         std::shared_ptr<ModulePermissionsPersistanceDelegate> permssionDAO,
                         UserDefaultsUtil userDefaultsUtil, Scope scope);

    /// Makes a step over an adapter and the settings store.
    static std::shared_ptr<InitGetPermissionsDM> make(
        const std::shared_ptr<DatabaseAdapter>& adapter, std::shared_ptr<UserDefaultsProtocol> userDefaults,
        std::shared_ptr<GetPermissionsNSP> networkService = std::make_shared<GetPermissionsNS>());

    Process processName() const override { return Process::permission; }

protected:
    void request(NetworkCompletion answered) override;
    Result<bool, ParserError> store(const Data& body) override;

private:
    std::string profileID() const;

    const std::shared_ptr<GetPermissionsNSP> networkService_;
    const std::shared_ptr<UserPersistanceDelegate> usersPersistance_;
    const std::shared_ptr<ModulePermissionsPersistanceDelegate> permssionDAO_;
};

}  // namespace tarvo
