#include "sandbox/changes/RecordDraft.h"

#include <algorithm>

#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {

RecordDraft::RecordDraft(RecordStore& store)
    : store_(store), state_(std::make_shared<RecordChanges>(*store.now().changes())), own_(state_->modules.size()) {
    ++state_->version;
}

const ModuleChanges* RecordDraft::known(const RecordShape& shape) const {
    return state_->modules[shape.moduleNumber()].get();
}

void RecordDraft::beginChange(std::int64_t time) { state_->lastChange = std::max(time, state_->lastChange + 1); }

void RecordDraft::note(ModuleChanges& changes, std::size_t number) {
    changes.history.set(changes.historySize++, {state_->lastChange, static_cast<std::uint32_t>(number)});
}

// Copies what others may be reading, once per module.
ModuleChanges& RecordDraft::change(const RecordShape& shape) {
    auto& own = own_[shape.moduleNumber()];
    if (!own) {
        const auto* before = known(shape);
        auto copy = before ? std::make_shared<ModuleChanges>(*before) : std::make_shared<ModuleChanges>();
        own = copy.get();
        state_->modules[shape.moduleNumber()] = std::move(copy);
    }
    return *own;
}

bool RecordDraft::isFull(const RecordShape& shape) const {
    const auto* changes = known(shape);
    auto used = changes ? std::max(changes->addedRecords, changes->addedRows) : 0;
    return RecordShape::firstAddedNumber + used >= RecordShape::numbersOfModule;
}

std::size_t RecordDraft::nextNumber(const RecordShape& shape) const {
    const auto* changes = known(shape);
    return RecordShape::firstAddedNumber + (changes ? changes->addedRecords : 0);
}

RecordData RecordDraft::add(const RecordShape& shape, StoredRecord record) {
    auto number = nextNumber(shape);
    if (const auto* id = shape.field("id")) record.values[shape.indexOf(*id)].setText(shape.id(number));
    record.addedAt = state_->lastChange;
    auto stored = std::make_shared<const StoredRecord>(std::move(record));
    auto& changes = change(shape);
    changes.added.set(changes.addedRecords++, stored);
    note(changes, number);
    return {shape, number, stored.get()};
}

void RecordDraft::set(const RecordData& record, ModuleChanges::Stored stored) {
    auto& changes = change(record.shape());
    if (record.number() >= RecordShape::firstAddedNumber)
        changes.added.set(record.number() - RecordShape::firstAddedNumber, std::move(stored));
    else
        changes.ofSnapshot.set(record.number(), std::move(stored));
    note(changes, record.number());
}

RecordData RecordDraft::edit(const RecordData& record, StoredRecord changed) {
    changed.addedAt = record.addedAt();
    auto stored = std::make_shared<const StoredRecord>(std::move(changed));
    set(record, stored);
    return {record.shape(), record.number(), stored.get()};
}

void RecordDraft::remove(const RecordData& record) { set(record, nullptr); }

std::string RecordDraft::newRowId(const RecordShape& rows) {
    return rows.id(RecordShape::firstAddedNumber + change(rows).addedRows++);
}

}  // namespace tarvo::sandbox
