#include "tarvobase/transaction/ChangeNotices.h"

#include <utility>

#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"

namespace tarvo::changeNotices {

namespace {

void notifyChangeObservers(std::function<void(ChangeQueueObserver&)> callback) {
    BrenNotificationCenter::shared().notify<ChangeQueueObserver>(true, std::move(callback));
}

}  // namespace

void saved(Change change) {
    notifyChangeObservers([change = std::move(change)](auto& observer) { observer.changeSaved(change); });
}

void notSaved(const std::string& moduleName, const std::string& recordId, ChangeNotSaved reason) {
    notifyChangeObservers(
        [moduleName, recordId, reason](auto& observer) { observer.changeNotSaved(moduleName, recordId, reason); });
}

void accepted(Change change, const std::optional<std::string>& formerRecordId) {
    notifyChangeObservers([change = std::move(change), formerRecordId](auto& observer) {
        observer.changeAccepted(change, formerRecordId);
    });
}

void cancelled(Change change) {
    notifyChangeObservers([change = std::move(change)](auto& observer) { observer.changeCancelled(change); });
}

void refused(Change change, const ErrorResponse& error) {
    change.state = Change::State::failed;
    change.error = error;
    notifyChangeObservers([change = std::move(change)](auto& observer) { observer.changeRefused(change); });
}

}  // namespace tarvo::changeNotices
