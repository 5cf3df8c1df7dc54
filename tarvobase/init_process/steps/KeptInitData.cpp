#include "tarvobase/init_process/steps/KeptInitData.h"

#include "platform/Clock.h"
#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/init_process/parsers/InitDownloadParser.h"

namespace tarvo {

namespace {

struct OldResult {
    struct Kept {
        ParsedInitData data;
        std::optional<std::string> accountID;
    };
    platform::Mutex mutex;
    std::optional<Kept> kept TARVO_GUARDED_BY(mutex);

    static OldResult& shared() { return platform::ProcessState::current().get<OldResult>(); }
};

constexpr std::int64_t reusedForSeconds = 59;

}  // namespace

std::optional<ParsedInitData> KeptInitData::reusable() {
    auto account = CommonConfigration::sharedInstance().getCurrentAccountID();
    auto now = platform::Clock::secondsSince1970();
    auto& old = OldResult::shared();
    platform::MutexLock lock(old.mutex);
    if (!old.kept || !old.kept->accountID || old.kept->accountID != account) return std::nullopt;
    auto age = now - static_cast<std::int64_t>(old.kept->data.responseTime);
    return age >= 0 && age <= reusedForSeconds ? std::optional(old.kept->data) : std::nullopt;
}

void KeptInitData::keep(ParsedInitData data) {
    auto account = CommonConfigration::sharedInstance().getCurrentAccountID();
    auto& old = OldResult::shared();
    platform::MutexLock lock(old.mutex);
    old.kept = OldResult::Kept{std::move(data), std::move(account)};
}

}  // namespace tarvo
