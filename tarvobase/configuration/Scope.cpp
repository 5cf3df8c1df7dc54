#include "tarvobase/configuration/Scope.h"

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

std::string currentAccount() { return CommonConfigration::sharedInstance().getCurrentAccountID().value_or(""); }

}  // namespace

Scope Scope::current() { return over(CommonConfigration::sharedInstance().databaseAdapter.get()); }

Scope Scope::over(std::shared_ptr<DatabaseAdapter> databaseAdapter) {
    auto& configuration = CommonConfigration::sharedInstance();
    auto account = currentAccount();
    return {.account = account,
            .organisation = configuration.currentOrgID.get(),
            .databaseAdapter = std::move(databaseAdapter),
            .settings = UserDefaultsGroup::other(account),
            .naming = configuration.fieldIdentifier.get(),
            .databaseInForce = configuration.databaseAdapter.get()};
}

bool Scope::isCurrent() const {
    auto& configuration = CommonConfigration::sharedInstance();
    return account == currentAccount() && organisation == configuration.currentOrgID.get() &&
           (!databaseInForce || databaseInForce == configuration.databaseAdapter.get());
}

std::string Scope::tableName(std::string_view name) const {
    return organisation.empty() ? std::string(name) : std::string(name) + "_" + organisation;
}

}  // namespace tarvo
