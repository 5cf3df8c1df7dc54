#include "tarvobase/init_process/steps/GetCurrentUserDM.h"

#include "tarvobase/init_process/parsers/CurrentUserParser.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/network_layer/FirstEntry.h"

namespace tarvo {

namespace {

/// Copies the members that the step's row does not contain from the stored user.
void copyUnsentMembers(User& user, const User& stored) {
    user.isLoggedInUser = stored.isLoggedInUser;
    user.dateFormat = stored.dateFormat;
    user.timeFormat = stored.timeFormat;
    user.timeZone = stored.timeZone;
    user.nameFormat = stored.nameFormat;
}

}  // namespace

GetCurrentUserDM::GetCurrentUserDM(UserDefaultsUtil userDefaultsUtil, std::shared_ptr<GetCurrentUserNS> networkService,
                                   std::shared_ptr<UserPersistanceDelegate> userPersitanceDelegate, Scope scope)
    : FlaggedStep(std::move(userDefaultsUtil), std::move(scope)),
      networkService_(std::move(networkService)),
      userPersitanceDelegate_(std::move(userPersitanceDelegate)) {}

std::shared_ptr<GetCurrentUserDM> GetCurrentUserDM::make(const std::shared_ptr<DatabaseAdapter>& adapter,
                                                         std::shared_ptr<UserDefaultsProtocol> userDefaults,
                                                         std::shared_ptr<GetCurrentUserNS> networkService) {
    auto stores = Stores::over(adapter, userDefaults);
    return std::make_shared<GetCurrentUserDM>(stores.userDefaultsUtil(), std::move(networkService), stores.users(),
                                              stores.scope);
}

void GetCurrentUserDM::request(NetworkCompletion answered) { networkService_->getUserDetails(std::move(answered)); }

Result<bool, ParserError> GetCurrentUserDM::store(const Data& body) {
    auto user = firstEntry(CurrentUserParser(), body);
    if (!user) return user.error();
    parsedUser_ = *std::move(user);
    return true;
}

void GetCurrentUserDM::storeParsedUser() {
    auto user = std::exchange(parsedUser_, std::nullopt);
    if (!user) return;
    // The list of users has been stored by now; its rows contain more members.
    if (auto stored = userPersitanceDelegate_->getUser(user->id)) copyUnsentMembers(*user, *stored);
    if (!commit([&] { userPersitanceDelegate_->storeUser(*user); })) return reportUnstored("the user");
    setFlag();
}

}  // namespace tarvo
