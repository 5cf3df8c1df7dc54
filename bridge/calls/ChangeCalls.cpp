#include "bridge/DelegateLines.h"
#include "bridge/calls/Calls.h"
#include "bridge/forms/JsonForm.h"
#include "bridge/forms/RecordForms.h"
#include "tarvobase/change_queues/RecordChangesAssembler.h"
#include "tarvobase/metadata/Stores.h"

namespace tarvo::bridge {

namespace {

struct ChangeRequest {
    JsonRecord record;
    static constexpr auto fields() { return describe(field("record", &ChangeRequest::record)); }
};
struct DeletionRequest {
    std::string moduleName;
    std::string recordID;
    static constexpr auto fields() {
        return describe(field("moduleName", &DeletionRequest::moduleName),
                        field("recordID", &DeletionRequest::recordID));
    }
};

class ChangeLines final : public DelegateLines, public RecordChangeDelegate {
public:
    void changeSaved(const Change& change) override { report("changeSaved", {{"change", toJson(change)}}); }
    void changeNotSaved(const std::string& moduleName, const std::string& recordId, ChangeNotSaved reason) override {
        report("changeNotSaved",
               {{"moduleName", moduleName}, {"recordId", recordId}, {"reason", std::string(caseName(reason))}});
    }
};

/// Runs `ask` with the stored module, or refuses the call.
template <class UseCase, class Ask>
void change(const std::shared_ptr<UseCase>& usecase, const std::string& moduleName, const CallPtr& call, Ask ask) {
    auto module = Stores::current().modules()->getModule(ModuleIdentifier::fromModuleName(moduleName));
    if (!module) return call->refuse("no module " + moduleName + " is stored");
    ask(*answeringOnce<ChangeLines>(usecase, call), module.value());
}

}  // namespace

void addChangeCalls(Registry& registry) {
    using Assembler = RecordChangesAssembler;
    registry.addOperation<ChangeRequest>(
        "AddRecordUseCase.addRecord", [](const ChangeRequest& request, const CallPtr& call) {
            auto form = request.record;
            if (form.recordId.empty()) form.recordId = Record::getNewRecord(form.moduleName).recordId();
            change(Assembler::getAddRecordsUseCase(), form.moduleName, call,
                   [&](auto& usecase, auto& module) { usecase.addRecord(form.record(), module); });
        });
    registry.addOperation<ChangeRequest>(
        "EditRecordUseCase.editRecord", [](const ChangeRequest& request, const CallPtr& call) {
            change(Assembler::getEditRecordUseCase(), request.record.moduleName, call,
                   [&](auto& usecase, auto& module) { usecase.editRecord(request.record.record(), module); });
        });
    registry.addOperation<DeletionRequest>(
        "DeleteRecordUseCase.deleteRecord", [](const DeletionRequest& request, const CallPtr& call) {
            change(Assembler::getDeleteRecordUseCase(), request.moduleName, call,
                   [&](auto& usecase, auto& module) { usecase.deleteRecord(request.recordID, module); });
        });
}

}  // namespace tarvo::bridge
