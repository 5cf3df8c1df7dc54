#include "tarvobase/download/DownloadRecordSettingsPersistance.h"

#include "platform/Text.h"

namespace tarvo {

std::optional<std::int64_t> DownloadRecordSettingsPersistance::getMaximumRecordsToDownload(
    const std::string& moduleName) {
    return numberIn(moduleName, SettingName::userMaxRecords);
}

std::optional<std::int64_t> DownloadRecordSettingsPersistance::getDownloadRecordsSetting(
    const std::string& moduleName) {
    return numberIn(moduleName, SettingName::downloadRecords);
}

std::optional<std::int64_t> DownloadRecordSettingsPersistance::numberOfRecordsDownloaded(
    const std::string& moduleName) const {
    auto map = moduleMaps().mapOf(moduleName);
    auto number = map.find(ModuleDetailsConstants().NumberOfRecordsFetched);
    return number ? number->asInteger() : std::nullopt;
}

void DownloadRecordSettingsPersistance::storeNumberOfRecordsDownloaded(std::int64_t count, const std::string& for_) {
    moduleMaps().merge(for_, {{std::string(ModuleDetailsConstants().NumberOfRecordsFetched), count}});
}

std::optional<std::int64_t> DownloadRecordSettingsPersistance::numberIn(const std::string& moduleName,
                                                                        SettingName setting) const {
    auto stored = settingsPersistanceDelegate->getSettingsForModule(moduleName, setting);
    if (!stored) return std::nullopt;
    auto chosen = text::toInteger(stored->customSettings);
    return chosen ? chosen : text::toInteger(stored->defaultSettings);
}

}  // namespace tarvo
