#include "host/commands/ChangeCommands.h"

#include <algorithm>
#include <utility>

#include "bridge/forms/JsonForm.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "host/commands/NoteCommands.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/change_queues/ChangeQueues.h"
#include "tarvobase/change_queues/QueuedChanges.h"
#include "tarvobase/change_queues/RecordChangesAssembler.h"
#include "tarvobase/change_queues/WhyItWaits.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/records/wire/RecordConversion.h"

namespace tarvo::host {

namespace {

/// How long a command waits for the server's answer to a change, which is safe here already.
constexpr std::chrono::seconds answerPatience{10};
constexpr const char* tokenNeededForChange =
    "the fields of the module are not stored, and there is no token to fetch them";

QueuedChanges queuedChanges() { return QueuedChanges(Stores::current()); }
auto listedChanges() {
    auto& queues = ChangeQueues::shared();
    return queuedChanges().list(queues.status(), queues.currentStatus());
}

void waitForServer(const Arguments& arguments) {
    if (arguments.wait) waitForRestingQueues(answerPatience);
}

/// Makes the record of FIELD=VALUE. Values are read as the server writes them, dates included.
Result<Record, int> recordOf(const Arguments& arguments, const std::string& recordId, const FieldList& fields) {
    ValueMap wire{{"id", recordId}};
    std::vector<std::string> cleared;
    for (auto& pair : arguments.values) {
        auto equals = pair.find('=');
        auto name = pair.substr(0, equals);
        auto field = fieldNamed(fields, name);
        if (equals == std::string::npos) return fail("\"" + pair + "\" is not of the form FIELD=VALUE", 2);
        if (!field) return fail(arguments.module + " has no field \"" + name + "\"; the command fields lists them");
        auto value = pair.substr(equals + 1);
        if (value.empty())
            cleared.push_back(fields.identifierOf(*field));
        else
            wire.set(field->fieldAPIName, std::move(value));
    }
    auto record = recordFromNetworkDictionary(wire, fields);
    if (!record) return fail("the record cannot be made of these values");
    for (auto& column : cleared) record->set(column, Value());
    return *std::move(record);
}

/// Opens the database, finds the module, and runs `change` with its stored value.
template <class ChangeRecord>
int changed(Host& host, const Arguments& arguments, const ChangeRecord& change) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForChange)) return *status;
    auto module = Stores::current().modules()->getModule(ModuleIdentifier::fromModuleName(arguments.module));
    if (!module) return fail("the module cannot be read");
    return change(module.value());
}

int reportSaved(const Arguments& arguments, const std::string& recordId, const SavedChange& saved) {
    if (!saved) return fail("the change could not be stored");
    return reportChange(arguments, recordId, saved.value().number);
}

bool hasReason(const Change& change) {
    return change.state == Change::State::waiting || change.state == Change::State::failed;
}

int printChanges(const Arguments& arguments) {
    auto changes = listedChanges();
    if (!changes) return fail("the queue of changes cannot be read");
    if (arguments.json)
        return printForPrograms(json::write(ValueMap{{"changes", bridge::toJson(*changes)}}).value_or("") + "\n");
    if (changes->empty()) return printForPeople("The server has all changes.\n");
    std::vector<std::vector<std::string>> rows{{"No.", "Change", "Module", "Record", "State", "Attempts", "Why"}};
    for (auto& change : *changes)
        rows.push_back({std::to_string(change.number), change.kind, change.moduleName, change.recordId,
                        std::string(caseName(change.state)), std::to_string(change.attempts),
                        hasReason(change) ? whyItWaits(change) : ""});
    return printForPeople(tableText(rows));
}

std::string whatBecameOf(const QueuedChanges::Outcome& outcome) {
    switch (outcome.outcome) {
        case ChangeOutcome::accepted:
            return "was accepted by the server";
        case ChangeOutcome::merged:
            return "is part of a later change of its record";
        case ChangeOutcome::cancelled:
            return "was cancelled";
        case ChangeOutcome::queued:
        case ChangeOutcome::unknown:
            break;
    }
    return "is not known";
}

int printSentences(const Arguments& arguments, const std::vector<std::pair<std::int64_t, std::string>>& sentences) {
    std::string lines;
    ValueList reasons;
    for (auto& [number, sentence] : sentences) {
        lines += "Change " + std::to_string(number) + " " + sentence + ".\n";
        reasons.push_back(ValueMap{{"number", number}, {"why", sentence}});
    }
    if (arguments.json)
        return printForPrograms(json::write(ValueMap{{"changes", std::move(reasons)}}).value_or("") + "\n");
    return printForPeople(lines.empty() ? "The server has all changes.\n" : lines);
}

}  // namespace

int reportChange(const Arguments& arguments, const std::string& recordId, std::int64_t number) {
    waitForServer(arguments);
    auto changes = listedChanges();
    if (!changes) return fail("the queue of changes cannot be read");
    auto found = std::find_if(changes->begin(), changes->end(), [&](auto& change) { return change.number == number; });
    bool isLeft = found != changes->end();
    auto alias = Stores::current().recordIdAliases()->realId(arguments.module, recordId);
    auto id = alias && alias.value() ? *alias.value() : recordId;
    if (isLeft && found->state == Change::State::failed)
        return fail("change " + std::to_string(number) + " " + whyItWaits(*found));
    if (!arguments.json)
        return printForPeople(arguments.module + " " + id +
                              (isLeft ? " is saved here as change " + std::to_string(number) + ", which waits\n"
                                      : " is saved, and the server has it\n"));
    ValueMap map{{"recordId", id}, {"number", number}, {"isAccepted", !isLeft}};
    return printForPrograms(json::write(map).value_or("") + "\n");
}

int addRecord(Host& host, const Arguments& arguments) {
    return changed(host, arguments, [&](const Module& module) {
        auto fields = neededFields(host, arguments, tokenNeededForChange);
        if (!fields) return fields.error();
        auto record = recordOf(arguments, Record::getNewRecord(module.moduleName).recordId(), fields.value());
        if (!record) return record.error();
        AddRecordDataManager manager(RecordChangesAssembler::parts());
        return reportSaved(arguments, record->recordId(), manager.addRecord(record.value(), module));
    });
}

int editRecord(Host& host, const Arguments& arguments) {
    return changed(host, arguments, [&](const Module& module) {
        auto fields = neededFields(host, arguments, tokenNeededForChange);
        if (!fields) return fields.error();
        auto record = recordOf(arguments, arguments.recordId, fields.value());
        if (!record) return record.error();
        if (module.identifier() == ModuleIdentifier::Case::notes) {
            auto number = editedNote(record.value());
            return number ? reportChange(arguments, record->recordId(), *number) : number.error();
        }
        EditRecordDataManager manager(RecordChangesAssembler::parts());
        return reportSaved(arguments, record->recordId(), manager.editRecord(record.value(), module));
    });
}

int deleteRecord(Host& host, const Arguments& arguments) {
    return changed(host, arguments, [&](const Module& module) {
        DeleteRecordDataManager manager(RecordChangesAssembler::parts());
        return reportSaved(arguments, arguments.recordId, manager.deleteRecord(arguments.recordId, module));
    });
}

int listPending(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    return path ? printChanges(arguments) : path.error();
}

int retryChanges(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    auto ready = queuedChanges().retry(arguments.numbers);
    if (!ready) return fail("the changes could not be made ready");
    for (auto number : arguments.numbers)
        if (std::find(ready->begin(), ready->end(), number) == ready->end())
            return fail("there is no failed change " + std::to_string(number));
    ChangeQueues::shared().start();
    waitForServer(arguments);
    return printChanges(arguments);
}

int cancelChanges(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    auto cancelled = ChangeQueues::shared().cancel({arguments.numbers, arguments.revert, arguments.withWaiters});
    return cancelled ? printChanges(arguments) : fail(cancelled.error().message());
}

/// Prints one sentence per change, in the order of the queue: of all that wait, or of those with the numbers.
int explainChanges(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    waitForServer(arguments);
    auto changes = listedChanges();
    auto outcomes = queuedChanges().outcomes(arguments.numbers);
    if (!changes || !outcomes) return fail("the queue of changes cannot be read");
    std::vector<std::pair<std::int64_t, std::string>> sentences;
    for (auto& outcome : *outcomes) {
        if (outcome.outcome == ChangeOutcome::unknown)
            return fail("there is no change " + std::to_string(outcome.number));
        if (outcome.outcome != ChangeOutcome::queued) sentences.emplace_back(outcome.number, whatBecameOf(outcome));
    }
    auto isAskedFor = [&](std::int64_t number) {
        return outcomes->empty() ||
               std::any_of(outcomes->begin(), outcomes->end(), [&](auto& outcome) { return outcome.number == number; });
    };
    for (auto& change : *changes)
        if (isAskedFor(change.number)) sentences.emplace_back(change.number, whyItWaits(change));
    return printSentences(arguments, sentences);
}

int drainChanges(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    ChangeQueues::shared().start();
    waitForServer(arguments);
    return printChanges(arguments);
}

}  // namespace tarvo::host
