#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/ThreadSafety.h"
#include "sandbox/data/Records.h"
#include "sandbox/data/SharedArray.h"

namespace tarvo::sandbox {

class DataSet;
class RecordShape;
struct RecordContext;

/// Says when a record was added, edited or deleted.
struct RecordChange {
    /// Milliseconds of the server's clock; a later change has a later time.
    std::int64_t time = 0;
    std::uint32_t number = 0;
};

/// Holds what clients have changed in the records of one module. A copy costs little, however much was changed.
struct ModuleChanges {
    using Stored = std::shared_ptr<const StoredRecord>;

    /// The changed records of the snapshot by their numbers; null for a deleted one.
    SharedArray<Stored> ofSnapshot;
    /// The added records in their order; null for one that has been deleted again.
    SharedArray<Stored> added;
    std::size_t addedRecords = 0;
    /// How many rows below other records were added, in a module without lists of its own.
    std::size_t addedRows = 0;
    /// All changes in their order. A record may occur several times.
    SharedArray<RecordChange> history;
    std::size_t historySize = 0;
};

/// Holds what clients have changed in all records, by the number of the module. Not changed once others can see it.
struct RecordChanges {
    /// Differs from that of every other state of the same store.
    std::uint64_t version = 0;
    /// The time of the last change. The next one is later, whatever the clock says.
    std::int64_t lastChange = 0;
    /// Null for a module without changes.
    std::vector<std::shared_ptr<const ModuleChanges>> modules;
};

/// Gives access to the records of one module's list at one moment, by positions: those of the snapshot first, then the
/// added ones. "Activities" lists the tasks, events and calls in turn. Safe to use from any thread.
class RecordList {
public:
    using Parts = std::vector<const RecordShape*>;

    RecordList(const Parts& parts, std::shared_ptr<const RecordChanges> changes)
        : parts_(&parts), changes_(std::move(changes)) {}

    /// Returns the number of positions, including those of deleted records.
    std::size_t size() const;
    /// Returns nullopt at the position of a deleted record.
    std::optional<RecordData> at(std::size_t position) const;
    /// Returns the id of the record at a position, deleted or not.
    std::string idAt(std::size_t position) const;
    /// Returns nullopt when the list has no such record.
    std::optional<RecordData> find(std::string_view id) const;

    std::size_t snapshotSize() const;
    /// Returns a record as it was before any change; the position is below `snapshotSize`.
    RecordData snapshotAt(std::size_t position) const;
    /// Returns whether the snapshot's record at this position was edited or deleted.
    bool isTouched(std::size_t position) const;
    /// Returns the positions of the edited and added records that exist, in no particular order.
    std::vector<std::size_t> changedPositions() const;
    std::vector<std::size_t> deletedPositions() const;
    /// Returns the positions of the records that were added, edited or deleted after `time`, in milliseconds of the
    /// server's clock, in ascending order. A record that is changed later never leaves them, so that a client that
    /// pages through them by their number meets each, whatever happens meanwhile.
    std::vector<std::size_t> positionsChangedAfter(std::int64_t time) const;
    bool hasChanges() const;
    std::uint64_t version() const { return changes_->version; }

private:
    /// Says which record is at a position.
    struct Place {
        const RecordShape* shape;
        std::size_t number;
    };
    Place placeOf(std::size_t position) const;
    /// Calls `visit` with the position and the value of each changed record, which is null for a deleted one.
    template <class Visit>
    void forEachChange(Visit&& visit) const;
    const ModuleChanges* changesOf(const RecordShape& shape) const;

    const Parts* parts_;
    std::shared_ptr<const RecordChanges> changes_;
};

class RecordStore;

/// Shows the records of all modules at one moment, whatever is changed later. Valid as long as its store. Safe to use
/// from any thread.
class RecordView {
public:
    RecordView(const RecordStore& store, std::shared_ptr<const RecordChanges> changes)
        : store_(&store), changes_(std::move(changes)) {}

    /// Returns an empty list for an unknown module and for one whose rows lie under others.
    RecordList list(std::string_view module) const;
    /// Returns the record of this id in whatever module it is; nullopt when there is none.
    std::optional<RecordData> findAnywhere(std::string_view id) const;
    const RecordStore& store() const { return *store_; }
    const std::shared_ptr<const RecordChanges>& changes() const { return changes_; }

private:
    const RecordStore* store_;
    std::shared_ptr<const RecordChanges> changes_;
};

/// Holds the records of all modules: a snapshot that is made from a seed and stores no record, so that many records
/// cost as much as few, and over it the changes of clients. Safe to use from any thread.
class RecordStore {
public:
    /// `data` has its modules, metadata, users and tags already, and outlives the store. Records have
    /// the tags that exist at this moment.
    RecordStore(const DataSet& data, std::uint64_t seed, std::size_t recordsPerModule);
    ~RecordStore();

    RecordView now() const TARVO_EXCLUDES(mutex_);
    /// Returns the records as they were at `time`, in milliseconds of the server's clock, and after each change since
    /// then, the present ones last. Returns an empty list if the state of that time is forgotten.
    std::vector<RecordView> since(std::int64_t time) const TARVO_EXCLUDES(mutex_);
    /// Makes the changes visible. They were made from the latest view: one caller at a time changes records.
    void publish(std::shared_ptr<const RecordChanges> changes) TARVO_EXCLUDES(mutex_);

    /// Returns null for an unknown module and for "Activities".
    const RecordShape* shape(std::string_view module) const;

private:
    friend class RecordView;

    std::unique_ptr<const RecordContext> context_;
    std::unique_ptr<std::map<std::string, std::unique_ptr<RecordShape>, std::less<>>> shapes_;
    std::map<std::string, RecordList::Parts, std::less<>> lists_;
    mutable platform::Mutex mutex_;
    std::shared_ptr<const RecordChanges> changes_ TARVO_GUARDED_BY(mutex_);
    /// The states before `changes_`, the oldest first. They share nearly all of their memory.
    std::deque<std::shared_ptr<const RecordChanges>> formerChanges_ TARVO_GUARDED_BY(mutex_);
};

}  // namespace tarvo::sandbox
