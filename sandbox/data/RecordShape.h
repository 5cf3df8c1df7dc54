#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "sandbox/data/DataSet.h"
#include "sandbox/data/Records.h"

namespace tarvo::sandbox {

/// What every shape of a store shares.
struct RecordWorld {
    const DataSet& data;
    std::uint64_t seed;
    std::size_t recordsPerModule;
    /// The tags of the moment at which the store was made.
    std::vector<TagData> tags;
    /// Last name, first name and both of every user.
    std::vector<std::vector<std::string>> userTitles;
};

/// How the records of one module are made. A value depends on the seed, the module, the record's number and the field
/// alone, so that any of them can be made by itself; a field that follows from another asks for that one. Immutable
/// once `connect` has run.
class RecordShape {
public:
    struct Cell;

    /// The record of this number has every value, and texts of 100,000 bytes.
    static constexpr std::size_t completeRecord = 7;
    /// Rows below a record are numbered by their parent: that many numbers each.
    static constexpr std::size_t mostRowsBelow = 8;

    /// Fills one value. The value arrives absent.
    using Make = void (*)(Cell& cell, RecordValue& into);

    struct Field {
        const FieldData* data;
        std::string name;
        /// What begins an entry of it on the wire: the bracket, the name and a comma.
        std::string entryStart;
        Make make;
        std::uint64_t salt;
        /// May be left empty or unsent.
        bool isOptional;
        /// Where a lookup points to and what rows a subform has; null for others.
        const RecordShape* target = nullptr;
    };

    /// Everything that a value is made from.
    struct Cell {
        const RecordShape& shape;
        const Field& field;
        std::size_t number;
        Generator random;
    };

    RecordShape(const RecordWorld& world, const ModuleData& module, std::size_t moduleNumber);
    RecordShape(const RecordShape&) = delete;

    using Shapes = std::map<std::string, std::unique_ptr<RecordShape>, std::less<>>;
    /// Finds the shapes that lookups and subforms point to, once all are made.
    void connect(const Shapes& shapes);

    const RecordWorld& world() const { return world_; }
    const ModuleData& module() const { return module_; }
    const std::vector<Field>& fields() const { return fields_; }
    const Field* field(std::string_view apiName) const;
    /// A shape by module name, for values that choose their module; null for an unknown one.
    const RecordShape* sibling(std::string_view module) const;
    const std::vector<const TagData*>& tags() const { return tags_; }

    void read(const Field& field, std::size_t number, RecordValue& into) const;
    RecordValue value(std::string_view apiName, std::size_t number) const;

    /// How many records stand alone.
    std::size_t count() const { return module_.standsAlone ? world_.recordsPerModule : 0; }
    std::string id(std::size_t number) const;
    void readId(std::size_t number, std::string& into) const;
    /// The number of the record with this id, or nothing when it is no id of this module.
    std::optional<std::size_t> numberOf(std::string_view id) const;
    /// A generator of its own for facts that several fields of a record share.
    Generator random(std::size_t number, std::uint64_t salt) const;

    std::int64_t createdTime(std::size_t number) const;
    std::int64_t modifiedTime(std::size_t number) const;
    /// What stands for the record in a lookup: its name, or for a person last name, first name and both.
    void readTitle(std::size_t number, std::vector<std::string>& into) const;

private:
    void addField(const FieldData& data);
    std::uint64_t firstId() const;

    const RecordWorld& world_;
    const ModuleData& module_;
    const std::size_t moduleNumber_;
    const std::uint64_t salt_;
    const std::string idPrefix_;
    std::vector<Field> fields_;
    std::unordered_map<std::string_view, std::size_t> byName_;
    const Field* title_ = nullptr;
    /// Of people alone.
    const Field* firstName_ = nullptr;
    const Field* lastName_ = nullptr;
    std::vector<const TagData*> tags_;
    const Shapes* shapes_ = nullptr;
};

/// A number that a name always gives.
std::uint64_t saltOf(std::string_view name);

}  // namespace tarvo::sandbox
