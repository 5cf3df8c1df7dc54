#include "tarvobase/sync/AnswersBesideSync.h"

#include "platform/Text.h"
#include "tarvobase/sync/RecordSyncSettingsPersistance.h"
#include "tarvobase/sync/SyncRounds.h"

namespace tarvo {

void AnswersBesideSync::stored(const std::string& moduleName, std::optional<std::int64_t> responseTime) const {
    if (!responseTime) return;
    SyncRounds::shared().noteAnswer(scope_, moduleName, *responseTime);
    RecordSyncSettingsPersistance settings(userDefaults_);
    auto watermark = settings.getLastModifiedTime(moduleName);
    if (watermark && text::toInteger(*watermark).value_or(0) > *responseTime)
        settings.storeLastModifiedTime(std::to_string(*responseTime), moduleName);
}

}  // namespace tarvo
