#include "tarvobase/init_process/steps/KeptInitData.h"

#include <mutex>

#include "platform/Clock.h"
#include "platform/ProcessState.h"
#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

struct OldResult {
    struct Kept {
        ParsedInitData data;
        std::optional<std::string> accountID;
    };
    std::mutex mutex;
    std::optional<Kept> kept;

    static OldResult& shared() { return platform::ProcessState::current().get<OldResult>(); }
};

constexpr std::int64_t reusedForSeconds = 59;

}  // namespace

std::optional<ParsedInitData> KeptInitData::reusable() {
    auto account = CommonConfigration::sharedInstance().getCurrentAccountID();
    auto now = platform::Clock::secondsSince1970();
    auto& old = OldResult::shared();
    std::lock_guard lock(old.mutex);
    if (!old.kept || !old.kept->accountID || old.kept->accountID != account) return std::nullopt;
    auto age = now - static_cast<std::int64_t>(old.kept->data.responseTime);
    return age >= 0 && age <= reusedForSeconds ? std::optional(old.kept->data) : std::nullopt;
}

void KeptInitData::keep(ParsedInitData data) {
    auto account = CommonConfigration::sharedInstance().getCurrentAccountID();
    auto& old = OldResult::shared();
    std::lock_guard lock(old.mutex);
    old.kept = OldResult::Kept{std::move(data), std::move(account)};
}

}  // namespace tarvo
