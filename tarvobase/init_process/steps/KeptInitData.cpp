#include "tarvobase/init_process/steps/KeptInitData.h"

#include "platform/Clock.h"
#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/Scope.h"
#include "tarvobase/init_process/parsers/InitDownloadParser.h"

namespace tarvo {

namespace {

struct OldResult {
    struct Kept {
        ParsedInitData data;
        std::string account, organisation;
    };
    platform::Mutex mutex;
    std::optional<Kept> kept TARVO_GUARDED_BY(mutex);

    static OldResult& shared() { return platform::ProcessState::current().get<OldResult>(); }
};

constexpr std::int64_t reusedForSeconds = 59;

}  // namespace

std::optional<ParsedInitData> KeptInitData::reusable(const Scope& scope) {
    auto now = platform::Clock::secondsSince1970();
    auto& old = OldResult::shared();
    platform::MutexLock lock(old.mutex);
    bool isOfScope = old.kept && !scope.account.empty() && old.kept->account == scope.account &&
                     old.kept->organisation == scope.organisation;
    if (!isOfScope) return std::nullopt;
    auto age = now - static_cast<std::int64_t>(old.kept->data.responseTime);
    return age >= 0 && age <= reusedForSeconds ? std::optional(old.kept->data) : std::nullopt;
}

void KeptInitData::keep(const Scope& scope, ParsedInitData data) {
    if (!data.createTableQueries || !scope.isCurrent()) return;
    auto& old = OldResult::shared();
    platform::MutexLock lock(old.mutex);
    old.kept = OldResult::Kept{std::move(data), scope.account, scope.organisation};
}

}  // namespace tarvo
