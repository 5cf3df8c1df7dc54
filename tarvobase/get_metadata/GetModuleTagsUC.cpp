#include "tarvobase/get_metadata/GetModuleTagsUC.h"

#include <algorithm>

#include "platform/Clock.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/network_layer/NetworkFailure.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/RecordChangedObserver.h"
#include "tarvobase/utils/TemporaryIds.h"

namespace tarvo {

namespace {

bool isTemporary(const std::string& id) { return isTempId(id) || isNewRecordId(id); }

/// Returns whether the server cannot know the tag yet, because it was made here or because a record that waits for its
/// first upload carries it.
bool waitsForUpload(const Tag& tag, const std::vector<TagRecord>& links) {
    return isTemporary(tag.id) ||
           std::any_of(links.begin(), links.end(), [](auto& link) { return isTemporary(link.recordId); });
}

bool contains(const std::vector<Tag>& tags, const std::string& id) {
    return std::any_of(tags.begin(), tags.end(), [&](auto& tag) { return tag.id == id; });
}

void notifyOfChange(const std::string& moduleName, const std::vector<std::string>& recordIds) {
    RecordChangedObserver::RecordIds changed;
    for (auto& id : recordIds) changed.push_back({id, platform::Clock::secondsSince1970()});
    BrenNotificationCenter::shared().notify<RecordChangedObserver>(
        true, [moduleName, changed](RecordChangedObserver& observer) { observer.recordUpdated(moduleName, changed); });
}

}  // namespace

GetModuleTagsDM::GetModuleTagsDM(std::shared_ptr<TagPersistanceDelegate> tagsDBPersistance,
                                 std::shared_ptr<TagRecordsPersistanceDelegate> tagsRecordsDBPersistance,
                                 std::shared_ptr<GetModuleTagsNS> tagsNWService,
                                 std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : tagsDBPersistance(std::move(tagsDBPersistance)),
      tagsRecordsDBPersistance(std::move(tagsRecordsDBPersistance)),
      tagsNWService(std::move(tagsNWService)),
      databaseAdapter_(std::move(databaseAdapter)) {}

bool GetModuleTagsDM::getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError) {
    auto tags = tagsDBPersistance->getTags(request->module.moduleName);
    if (!tags) return false;
    onSuccess(Response(std::move(tags), ResponseSource::database));
    return true;
}

void GetModuleTagsDM::getNWResponse(const RequestPtr& request, OnNWSuccess onSuccess, OnNWError onError) {
    tagsNWService->getTags(request->module, [weak = platform::weakSelf(this), request, onSuccess = std::move(onSuccess),
                                             onError = std::move(onError)](auto answer) {
        auto self = weak.lock();
        if (!self) return;
        if (!answer) return onError(appErrorOf<GetModuleTagsOperation::DomainError>(answer.error()));
        if (*answer) self->replaceTags(request->module.moduleName, **answer);
        onSuccess(Response(*answer, ResponseSource::network));
    });
}

void GetModuleTagsDM::replaceTags(const std::string& moduleName, const std::vector<Tag>& tags) {
    std::vector<std::vector<std::string>> changedRecords;
    auto replace = [&] {
        for (auto& stored : tagsDBPersistance->getTags(moduleName).value_or(std::vector<Tag>())) {
            if (contains(tags, stored.id)) continue;
            auto links = tagsRecordsDBPersistance->getTagRecordsByTagId(stored.id);
            // If the links cannot be read, a record may be waiting, so the tag stays until the next time.
            if (!links || waitsForUpload(stored, *links)) continue;
            if (!remove(stored, *links)) return false;
            changedRecords.emplace_back();
            for (auto& link : *links) changedRecords.back().push_back(link.recordId);
        }
        return tagsDBPersistance->storeTags(tags);
    };
    if (!databaseAdapter_ || !databaseAdapter_->transaction("replace tags of " + moduleName, replace)) return;
    for (auto& records : changedRecords) notifyOfChange(moduleName, records);
}

bool GetModuleTagsDM::remove(const Tag& tag, const std::vector<TagRecord>& links) {
    return tagsDBPersistance->removeTags(tag.id) && std::all_of(links.begin(), links.end(), [&](auto& link) {
               return tagsRecordsDBPersistance->deleteTagRecordsByTagIds({tag.id}, link.recordId);
           });
}

GetModuleTagsUC::GetModuleTagsUC()
    : GetModuleTagsUC([stores = Stores::current()] {
          return std::make_shared<GetModuleTagsDM>(stores.tags(), stores.tagRecords(),
                                                   std::make_shared<GetModuleTagsNS>(), stores.databaseAdapter());
      }()) {}

}  // namespace tarvo
