#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "sandbox/changes/RecordEditor.h"
#include "sandbox/data/Generator.h"

namespace tarvo::sandbox {

/// Changes records as many people would in the course of time: it adds, edits and deletes records of all kinds, those
/// that clients have added included, and sets fields of every type, tags and rows below records. The same seed makes
/// the same changes of the same records. A caller holds the server's lock.
class RandomChanges {
public:
    /// The modules take records and outlive the object, as the data set and the editor do.
    RandomChanges(const DataSet& data, RecordEditor& editor, std::uint64_t seed,
                  std::vector<const ModuleData*> modules);

    /// Makes one change. Returns why it was refused; nullopt when it was made.
    std::optional<Refusal> change();

    struct Counts {
        std::int64_t added = 0, edited = 0, deleted = 0;
    };
    const Counts& counts() const { return counts_; }

private:
    bool isOneIn(std::uint64_t count) { return random_.below(count) == 0; }
    std::optional<Refusal> add(const ModuleData& module);
    std::optional<Refusal> edit(const ModuleData& module, const RecordData& record);
    std::optional<Refusal> remove(const ModuleData& module, const RecordData& record);

    /// Returns any record of a list; nullopt when it is empty.
    std::optional<RecordData> anyRecord(const RecordList& list);
    /// Returns the id of any record of a module; empty when there is none.
    std::string anyId(std::string_view module);
    std::string anyPerson();
    /// Returns a value for a field as a payload has it. `before` is null for a new record.
    Value valueFor(const RecordShape& shape, const RecordShape::Field& field, const RecordValue* before);
    Value rowsFor(const RecordShape& rows, const RecordValue* before);
    Value generatedFor(const RecordShape& shape, const RecordShape::Field& field);

    const DataSet& data_;
    RecordEditor& editor_;
    Generator random_;
    const std::vector<const ModuleData*> modules_;
    Counts counts_;
};

}  // namespace tarvo::sandbox
