#include "sandbox/data/RecordStore.h"

#include <algorithm>

#include "sandbox/data/RecordShape.h"

namespace tarvo::sandbox {
namespace {

// The list of activities goes through its modules in turn.
constexpr std::string_view activityParts[] = {"Tasks", "Events", "Calls"};

bool isActivities(std::string_view module) { return module == "Activities"; }

/// Returns the record of this number as the changes leave it; nullopt when it was deleted or never existed.
std::optional<RecordData> existing(const RecordShape& shape, std::size_t number, const ModuleChanges* changes) {
    bool isAdded = number >= RecordShape::firstAddedNumber;
    const ModuleChanges::Stored* changed = nullptr;
    if (changes)
        changed =
            isAdded ? changes->added.find(number - RecordShape::firstAddedNumber) : changes->ofSnapshot.find(number);
    if (!changed) return !isAdded && number < shape.count() ? std::optional(RecordData(shape, number)) : std::nullopt;
    return *changed ? std::optional(RecordData(shape, number, changed->get())) : std::nullopt;
}

std::vector<std::vector<std::string>> titlesOf(const std::vector<UserData>& users) {
    std::vector<std::vector<std::string>> titles;
    for (const auto& user : users) titles.push_back({user.lastName, user.firstName, user.name()});
    return titles;
}

}  // namespace

const ModuleChanges* RecordList::changesOf(const RecordShape& shape) const {
    return changes_->modules[shape.moduleNumber()].get();
}

std::size_t RecordList::snapshotSize() const { return parts_->empty() ? 0 : parts_->size() * parts_->front()->count(); }

std::size_t RecordList::size() const {
    auto size = snapshotSize();
    for (const auto* part : *parts_)
        if (const auto* changes = changesOf(*part)) size += changes->addedRecords;
    return size;
}

RecordData RecordList::snapshotAt(std::size_t position) const {
    return {*(*parts_)[position % parts_->size()], position / parts_->size()};
}

std::optional<RecordData> RecordList::at(std::size_t position) const {
    if (position < snapshotSize()) {
        auto record = snapshotAt(position);
        return existing(record.shape(), record.number(), changesOf(record.shape()));
    }
    position -= snapshotSize();
    for (const auto* part : *parts_) {
        const auto* changes = changesOf(*part);
        auto added = changes ? changes->addedRecords : 0;
        if (position < added) return existing(*part, RecordShape::firstAddedNumber + position, changes);
        position -= added;
    }
    return std::nullopt;
}

std::optional<RecordData> RecordList::find(std::string_view id) const {
    for (const auto* part : *parts_)
        if (auto number = part->numberOf(id)) return existing(*part, *number, changesOf(*part));
    return std::nullopt;
}

bool RecordList::isTouched(std::size_t position) const {
    auto record = snapshotAt(position);
    const auto* changes = changesOf(record.shape());
    return changes && changes->ofSnapshot.find(record.number());
}

std::vector<std::size_t> RecordList::changedPositions() const {
    std::vector<std::size_t> positions;
    auto firstAdded = snapshotSize();
    for (std::size_t part = 0; part < parts_->size(); ++part) {
        const auto* changes = changesOf(*(*parts_)[part]);
        if (!changes) continue;
        changes->ofSnapshot.forEach([&](std::size_t number, const ModuleChanges::Stored& stored) {
            if (stored) positions.push_back(number * parts_->size() + part);
        });
        changes->added.forEach([&](std::size_t place, const ModuleChanges::Stored& stored) {
            if (stored) positions.push_back(firstAdded + place);
        });
        firstAdded += changes->addedRecords;
    }
    return positions;
}

bool RecordList::hasChanges() const {
    return std::any_of(parts_->begin(), parts_->end(), [&](const auto* part) { return changesOf(*part); });
}

RecordList RecordView::list(std::string_view module) const {
    static const RecordList::Parts none;
    auto found = store_->lists_.find(module);
    return {found == store_->lists_.end() ? none : found->second, changes_};
}

std::optional<RecordData> RecordView::findAnywhere(std::string_view id) const {
    for (const auto& [module, parts] : store_->lists_)
        if (auto found = RecordList(parts, changes_).find(id)) return found;
    return std::nullopt;
}

RecordStore::RecordStore(const DataSet& data, std::uint64_t seed, std::size_t recordsPerModule)
    : context_(new RecordContext{data, seed, recordsPerModule, data.tags, titlesOf(data.users)}),
      shapes_(new RecordShape::Shapes) {
    for (std::size_t i = 0; i < data.modules.size(); ++i) {
        const auto& module = data.modules[i];
        if (!isActivities(module.name))
            shapes_->emplace(module.name, std::make_unique<RecordShape>(*context_, module, i));
    }
    for (auto& [name, shape] : *shapes_) {
        shape->connect(*shapes_);
        if (shape->module().hasOwnLists) lists_[name] = {shape.get()};
    }
    for (auto part : activityParts)
        if (const auto* known = shape(part)) lists_["Activities"].push_back(known);
    auto none = std::make_shared<RecordChanges>();
    none->modules.resize(data.modules.size());
    changes_ = std::move(none);
}

RecordStore::~RecordStore() = default;

const RecordShape* RecordStore::shape(std::string_view module) const {
    auto found = shapes_->find(module);
    return found == shapes_->end() ? nullptr : found->second.get();
}

RecordView RecordStore::now() const {
    platform::MutexLock lock(mutex_);
    return {*this, changes_};
}

void RecordStore::publish(std::shared_ptr<const RecordChanges> changes) {
    platform::MutexLock lock(mutex_);
    changes_ = std::move(changes);
}

}  // namespace tarvo::sandbox
