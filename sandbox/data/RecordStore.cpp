#include "sandbox/data/RecordStore.h"

#include <algorithm>
#include <utility>

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

RecordList::Place RecordList::placeOf(std::size_t position) const {
    if (position < snapshotSize()) return {(*parts_)[position % parts_->size()], position / parts_->size()};
    position -= snapshotSize();
    for (const auto* part : *parts_) {
        const auto* changes = changesOf(*part);
        auto added = changes ? changes->addedRecords : 0;
        if (position < added) return {part, RecordShape::firstAddedNumber + position};
        position -= added;
    }
    return {};
}

std::optional<RecordData> RecordList::at(std::size_t position) const {
    auto place = placeOf(position);
    return place.shape ? existing(*place.shape, place.number, changesOf(*place.shape)) : std::nullopt;
}

std::string RecordList::idAt(std::size_t position) const {
    auto place = placeOf(position);
    return place.shape ? place.shape->id(place.number) : "";
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

template <class Visit>
void RecordList::forEachChange(Visit&& visit) const {
    auto firstAdded = snapshotSize();
    for (std::size_t part = 0; part < parts_->size(); ++part) {
        const auto* changes = changesOf(*(*parts_)[part]);
        if (!changes) continue;
        changes->ofSnapshot.forEach([&](std::size_t number, const ModuleChanges::Stored& stored) {
            visit(number * parts_->size() + part, stored);
        });
        changes->added.forEach(
            [&](std::size_t place, const ModuleChanges::Stored& stored) { visit(firstAdded + place, stored); });
        firstAdded += changes->addedRecords;
    }
}

std::vector<std::size_t> RecordList::changedPositions() const {
    std::vector<std::size_t> positions;
    forEachChange([&](std::size_t position, const ModuleChanges::Stored& stored) {
        if (stored) positions.push_back(position);
    });
    return positions;
}

std::vector<std::size_t> RecordList::deletedPositions() const {
    std::vector<std::size_t> positions;
    forEachChange([&](std::size_t position, const ModuleChanges::Stored& stored) {
        if (!stored) positions.push_back(position);
    });
    return positions;
}

std::vector<std::size_t> RecordList::positionsChangedAfter(std::int64_t time) const {
    std::vector<std::size_t> positions;
    if (time < RecordShape::endOfSnapshot * millisecondsOfSecond)
        for (std::size_t i = 0; i < snapshotSize(); ++i) {
            auto place = placeOf(i);
            if (place.shape->modifiedTime(place.number) * millisecondsOfSecond > time) positions.push_back(i);
        }
    auto sorted = positions.size();
    auto firstAdded = snapshotSize();
    for (std::size_t part = 0; part < parts_->size(); ++part) {
        const auto* changes = changesOf(*(*parts_)[part]);
        if (!changes) continue;
        for (auto i = changes->historySize; i-- > 0 && changes->history.find(i)->time > time;) {
            std::size_t number = changes->history.find(i)->number;
            positions.push_back(number < RecordShape::firstAddedNumber
                                    ? number * parts_->size() + part
                                    : firstAdded + (number - RecordShape::firstAddedNumber));
        }
        firstAdded += changes->addedRecords;
    }
    auto middle = positions.begin() + static_cast<std::ptrdiff_t>(sorted);
    std::sort(middle, positions.end());
    std::inplace_merge(positions.begin(), middle, positions.end());
    positions.erase(std::unique(positions.begin(), positions.end()), positions.end());
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
    constexpr std::size_t mostFormerStates = 10'000;
    platform::MutexLock lock(mutex_);
    formerChanges_.push_back(std::exchange(changes_, std::move(changes)));
    if (formerChanges_.size() > mostFormerStates) formerChanges_.pop_front();
}

std::vector<RecordView> RecordStore::since(std::int64_t time) const {
    platform::MutexLock lock(mutex_);
    std::vector<RecordView> states{{*this, changes_}};
    if (changes_->lastChange <= time) return states;
    for (auto state = formerChanges_.rbegin(); state != formerChanges_.rend(); ++state) {
        states.emplace_back(*this, *state);
        if ((*state)->lastChange > time) continue;
        std::reverse(states.begin(), states.end());
        return states;
    }
    return {};
}

}  // namespace tarvo::sandbox
