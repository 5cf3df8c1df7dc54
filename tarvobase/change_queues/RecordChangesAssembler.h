#pragma once

#include <memory>

#include "tarvobase/record_changes/RecordChangeUseCases.h"

namespace tarvo {

/// Puts the changes of records together for the scope that is in force.
struct RecordChangesAssembler {
    static RecordChangeParts parts();
    static std::shared_ptr<AddRecordUseCase> getAddRecordsUseCase();
    static std::shared_ptr<EditRecordUseCase> getEditRecordUseCase();
    static std::shared_ptr<DeleteRecordUseCase> getDeleteRecordUseCase();
};

}  // namespace tarvo
