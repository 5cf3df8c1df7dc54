#include "bridge/DelegateLines.h"
#include "bridge/calls/Calls.h"
#include "tarvobase/get_metadata/GetSettingsUseCase.h"
#include "tarvobase/get_metadata/GetUsersUseCase.h"
#include "tarvobase/init_process/StoreOrgsUseCase.h"

namespace tarvo::bridge {

namespace {

struct NoRequest {
    static constexpr auto fields() { return describe(); }
};
struct UserRequest {
    std::string userID;
    static constexpr auto fields() { return describe(field("userID", &UserRequest::userID)); }
};
struct SettingsRequest {
    std::optional<std::string> moduleName;
    std::optional<SettingName> settingsKey;
    static constexpr auto fields() {
        return describe(field("moduleName", &SettingsRequest::moduleName),
                        field("settingsKey", &SettingsRequest::settingsKey));
    }
};

class UsersLines final : public virtual DelegateLines, public GetUsersUseCaseDelegate {
public:
    void userFetched(const User& user) override { report("userFetched", {{"user", toJson(user)}}); }
    void usersFetched(const std::vector<User>& users) override { report("usersFetched", {{"users", toJson(users)}}); }
    void unableToFetchUsers() override { report("unableToFetchUsers"); }
};

class SettingsLines final : public virtual DelegateLines, public GetSettingsUseCaseDelegate {
public:
    void settingsFetched(const std::vector<Settings>& settings) override {
        report("settingsFetched", {{"settings", toJson(settings)}});
    }
    void unableToFetchSettings() override { report("unableToFetchSettings"); }
};

class OrgsLines final : public virtual DelegateLines, public StoreOrgsUseCaseDelegate {
public:
    void orgsStored() override { report("orgsStored"); }
    void noOrgsFetched() override { report("noOrgsFetched"); }
};

std::shared_ptr<GetUsersUseCase> usersFor(const CallPtr& call) {
    return answeringOnce<UsersLines>(std::make_shared<GetUsersUseCase>(), call);
}

void getSettings(const SettingsRequest& request, const CallPtr& call) {
    auto usecase = answeringOnce<SettingsLines>(std::make_shared<GetSettingsUseCase>(), call);
    if (request.moduleName && request.settingsKey)
        usecase->getSettings(*request.moduleName, *request.settingsKey);
    else if (request.moduleName)
        usecase->getSettings(*request.moduleName);
    else if (request.settingsKey)
        usecase->getAllSettings(*request.settingsKey);
    else
        usecase->getAllSettings();
}

}  // namespace

void addAccountCalls(Registry& registry) {
    registry.addOperation<NoRequest>("GetUsersUseCase.getUsers",
                                     [](NoRequest, const CallPtr& call) { usersFor(call)->getUsers(); });
    registry.addOperation<NoRequest>("GetUsersUseCase.getActiveUsers",
                                     [](NoRequest, const CallPtr& call) { usersFor(call)->getActiveUsers(); });
    registry.addOperation<NoRequest>("GetUsersUseCase.getCurrentUser",
                                     [](NoRequest, const CallPtr& call) { usersFor(call)->getCurrentUser(); });
    registry.addOperation<UserRequest>("GetUsersUseCase.getUser", [](const UserRequest& request, const CallPtr& call) {
        usersFor(call)->getUser(request.userID);
    });
    registry.addOperation<SettingsRequest>("GetSettingsUseCase.getSettings", getSettings);
    registry.addOperation<NoRequest>("StoreOrgsUseCase.storeOrgs", [](NoRequest, const CallPtr& call) {
        answeringOnce<OrgsLines>(StoreOrgsUseCase::make(), call)->storeOrgs();
    });
}

}  // namespace tarvo::bridge
