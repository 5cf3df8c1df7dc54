#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "sandbox/data/RecordStore.h"

namespace tarvo::sandbox {

/// Collects changes of records that become visible together or not at all. Used by one thread; of each store only one
/// draft exists at a time, which the server's lock ensures.
class RecordDraft {
public:
    explicit RecordDraft(RecordStore& store);

    /// Shows the records with the changes so far. Valid as long as the draft.
    RecordView view() const { return {store_, state_}; }

    /// Gives what follows this time of the server's clock, or the next free one when it is not later than all before.
    void beginChange(std::int64_t time);
    /// Returns whether the module has no ids left for new records, or for new rows.
    bool isFull(const RecordShape& shape) const;
    /// Returns the number that the next record of the module will have.
    std::size_t nextNumber(const RecordShape& shape) const;
    /// Adds a record under the next id. What is returned is valid until the record is changed again.
    RecordData add(const RecordShape& shape, StoredRecord record);
    RecordData edit(const RecordData& record, StoredRecord changed);
    void remove(const RecordData& record);
    /// Returns the id of a new row below a record.
    std::string newRowId(const RecordShape& rows);

    /// Makes all changes visible. No call may follow.
    void publish() { store_.publish(std::move(state_)); }

private:
    const ModuleChanges* known(const RecordShape& shape) const;
    ModuleChanges& change(const RecordShape& shape);
    void set(const RecordData& record, ModuleChanges::Stored stored);
    void note(ModuleChanges& changes, std::size_t number);

    RecordStore& store_;
    std::shared_ptr<RecordChanges> state_;
    /// The changes that belong to this draft alone, by module; null for those that are still shared.
    std::vector<ModuleChanges*> own_;
};

}  // namespace tarvo::sandbox
