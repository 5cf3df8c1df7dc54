#include "tarvobase/record_changes/RecordChangeUseCases.h"

namespace tarvo {

namespace {

/// Returns the notice for the outcome of a change.
auto noticeOf(const std::string& moduleName, const std::string& recordId) {
    return [moduleName, recordId](RecordChangeDelegate& delegate, const SavedChange& saved) {
        if (saved)
            delegate.changeSaved(saved.value());
        else
            delegate.changeNotSaved(moduleName, recordId, saved.error());
    };
}

}  // namespace

void AddRecordUseCase::addRecord(const Record& record, const Module& module) {
    answer([manager = dataManager, record, module] { return manager->addRecord(record, module); },
           noticeOf(module.moduleName, record.recordId()));
}

void EditRecordUseCase::editRecord(const Record& record, const Module& module) {
    answer([manager = dataManager, record, module] { return manager->editRecord(record, module); },
           noticeOf(module.moduleName, record.recordId()));
}

void DeleteRecordUseCase::deleteRecord(const std::string& recordID, const Module& module) {
    answer([manager = dataManager, recordID, module] { return manager->deleteRecord(recordID, module); },
           noticeOf(module.moduleName, recordID));
}

}  // namespace tarvo
