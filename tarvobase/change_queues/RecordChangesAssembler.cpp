#include "tarvobase/change_queues/RecordChangesAssembler.h"

#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/records/sql/RecordInDatabase.h"

namespace tarvo {

RecordChangeParts RecordChangesAssembler::parts() {
    auto stores = Stores::current();
    auto& configuration = CommonConfigration::sharedInstance();
    auto directory = configuration.localDirectoryLocation.get();
    auto wake = [scope = stores.scope] { ChangeQueues::shared().wake(scope); };
    return {.stores = stores,
            .recordPersistance = RecordInDatabase::make(stores.databaseAdapter()),
            .editRecordTransactionManager = std::make_shared<RecordTransactionManager>(stores, std::move(wake)),
            .localDirectory = directory.value_or(""),
            .voiceFileDirectory = directory ? configuration.voiceFileDirectoryLocation() : std::string(),
            .transactionManager = ChangeQueues::shared().transactionManager()};
}

std::shared_ptr<AddRecordUseCase> RecordChangesAssembler::getAddRecordsUseCase() {
    return std::make_shared<AddRecordUseCase>(std::make_shared<AddRecordDataManager>(parts()));
}
std::shared_ptr<EditRecordUseCase> RecordChangesAssembler::getEditRecordUseCase() {
    return std::make_shared<EditRecordUseCase>(std::make_shared<EditRecordDataManager>(parts()));
}
std::shared_ptr<DeleteRecordUseCase> RecordChangesAssembler::getDeleteRecordUseCase() {
    return std::make_shared<DeleteRecordUseCase>(std::make_shared<DeleteRecordDataManager>(parts()));
}

}  // namespace tarvo
