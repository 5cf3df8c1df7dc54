#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sandbox/data/DataSet.h"
#include "sandbox/data/Records.h"

namespace tarvo::sandbox {

/// Holds what all shapes of a store share.
struct RecordContext {
    const DataSet& data;
    std::uint64_t seed;
    std::size_t recordsPerModule;
    /// The tags that existed when the store was made.
    std::vector<TagData> tags;
    /// The last name, the first name and both of every user.
    std::vector<std::vector<std::string>> userTitles;
};

/// Makes the values of one module's records. A value depends only on the seed, the module, the record's number and the
/// field, so that each can be made by itself; a field that follows from another asks for that one. Immutable once
/// `connect` has run.
class RecordShape {
public:
    struct Cell;

    /// The record of this number has every value, and texts of 100,000 bytes.
    static constexpr std::size_t completeRecord = 7;
    /// A field that holds rows has this many numbers for them per record.
    static constexpr std::size_t maxRowsBelow = 8;
    /// Records and rows that clients add have numbers from here on, up to `numbersOfModule`. The snapshot's lie below:
    /// rows have the highest, of `maxFieldsAbove` times `maxRowsBelow` rows below each of 100,000 records.
    static constexpr std::size_t firstAddedNumber = 7'000'000;
    static constexpr std::size_t numbersOfModule = 10'000'000;
    /// The rows of a module may lie below this many fields of other modules.
    static constexpr std::size_t maxFieldsAbove = 8;

    /// Returns the number of a row below a record. `place` tells the fields apart whose rows are of the same module, so
    /// that no two rows share an id.
    static std::size_t numberBelow(std::size_t parent, std::size_t place, std::size_t row) {
        return (parent * maxFieldsAbove + place) * maxRowsBelow + row;
    }
    /// Returns the number of the record above a row.
    static std::size_t numberAbove(std::size_t row) { return row / (maxFieldsAbove * maxRowsBelow); }

    /// Fills one value, which is absent before the call.
    using Make = void (*)(Cell& cell, RecordValue& into);

    struct Field {
        const FieldData* data;
        std::string name;
        /// The beginning of its entry on the wire: the bracket, the name and a comma.
        std::string entryStart;
        Make make;
        std::uint64_t salt;
        /// Whether it may be left empty or unsent.
        bool isOptional;
        /// The shape that a lookup points to or that a subform's rows have; null for other fields.
        const RecordShape* target = nullptr;
        /// The field's place among those whose rows are of the target's module.
        std::size_t place = 0;
    };

    /// Holds everything that a value is made from.
    struct Cell {
        const RecordShape& shape;
        const Field& field;
        std::size_t number;
        Generator random;
    };

    RecordShape(const RecordContext& context, const ModuleData& module, std::size_t moduleNumber);
    RecordShape(const RecordShape&) = delete;

    using Shapes = std::map<std::string, std::unique_ptr<RecordShape>, std::less<>>;
    /// Finds the shapes that lookups and subforms point to. Called once all shapes are made.
    void connect(const Shapes& shapes);

    const RecordContext& context() const { return context_; }
    const ModuleData& module() const { return module_; }
    const std::vector<Field>& fields() const { return fields_; }
    const Field* field(std::string_view apiName) const;
    std::size_t indexOf(const Field& field) const { return static_cast<std::size_t>(&field - fields_.data()); }
    /// Returns the module's place among all modules.
    std::size_t moduleNumber() const { return moduleNumber_; }
    /// Returns a shape by module name, for values that choose their module; null for an unknown module.
    const RecordShape* sibling(std::string_view module) const;
    const std::vector<const TagData*>& tags() const { return tags_; }

    void read(const Field& field, std::size_t number, RecordValue& into) const;
    RecordValue value(std::string_view apiName, std::size_t number) const;

    /// Returns how many records the module's own lists have; 0 for rows that lie under other records.
    std::size_t count() const { return module_.hasOwnLists ? context_.recordsPerModule : 0; }
    std::string id(std::size_t number) const;
    void readId(std::size_t number, std::string& into) const;
    /// Returns the number of the record with this id, or nullopt if it is not an id of this module.
    std::optional<std::size_t> numberOf(std::string_view id) const;
    /// Returns a separate generator for facts that several fields of a record share.
    Generator random(std::size_t number, std::uint64_t salt) const;

    /// All records of a snapshot were changed before this time.
    static const std::int64_t endOfSnapshot;
    std::int64_t createdTime(std::size_t number) const;
    std::int64_t modifiedTime(std::size_t number) const;
    /// Reads what stands for the record in a lookup: its name, or for a person last name, first name and both.
    void readTitle(std::size_t number, std::vector<std::string>& into) const;
    /// Makes the same of the values that `read` reads.
    using ReadField = std::function<void(const Field& field, RecordValue& into)>;
    void readTitle(const ReadField& read, std::vector<std::string>& into) const;

private:
    void addField(const FieldData& data);
    std::uint64_t firstId() const;

    const RecordContext& context_;
    const ModuleData& module_;
    const std::size_t moduleNumber_;
    const std::uint64_t salt_;
    const std::string idPrefix_;
    std::vector<Field> fields_;
    std::unordered_map<std::string_view, std::size_t> byName_;
    const Field* title_ = nullptr;
    /// Null for modules that do not hold people.
    const Field* firstName_ = nullptr;
    const Field* lastName_ = nullptr;
    std::vector<const TagData*> tags_;
    const Shapes* shapes_ = nullptr;
    std::size_t fieldsAbove_ = 0;
};

/// Returns a number that depends only on the name.
std::uint64_t saltOf(std::string_view name);

}  // namespace tarvo::sandbox
