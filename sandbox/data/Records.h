#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarvo::sandbox {

class DataSet;
class RecordShape;
struct FieldData;
struct ModuleData;
struct RecordRow;
struct RecordContext;

/// Holds one value of a record: a text, a list of texts, or rows that lie below the record. Numbers, flags and times
/// are texts, as on the wire: "12.5", "true", "2024-02-29", "2024-02-29T10:00:00+05:30".
struct RecordValue {
    /// A value of the kind `absent` is not sent at all; an empty text is.
    enum class Kind { absent, text, texts, rows };

    Kind kind = Kind::absent;
    std::string text;
    std::vector<std::string> texts;
    std::vector<RecordRow> rows;
    /// What people see in place of the id of a lookup: empty, one text, or last name, first name and both.
    std::vector<std::string> shown;

    /// Returns what people read: the shown text of a lookup, or texts joined by ",".
    std::string display() const;
    /// Makes it absent and keeps the memory of its texts, so that one value can be filled many times.
    void clear();
    void setText(std::string_view value);
};

struct RecordEntry {
    std::string_view name;
    /// The beginning of the entry on the wire.
    std::string_view start;
    RecordValue value;
};

/// Holds a row below a record: a participant, a line item, a tag.
struct RecordRow {
    std::vector<RecordEntry> entries;
};

/// Refers to one record. It holds no values: each is made when a caller reads it, always the same, from the seed, the
/// module and the record's number. Cheap to copy; valid as long as its store. Safe to use from any thread.
class RecordData {
public:
    RecordData(const RecordShape& shape, std::size_t number) : shape_(&shape), number_(number) {}

    /// Returns the module that the record belongs to: "Tasks" for a task, in the list of activities too.
    const std::string& module() const;
    std::string id() const;
    /// Returns seconds since 1970.
    std::int64_t createdTime() const;
    std::int64_t modifiedTime() const;
    /// Returns the value of a field by its API name; absent for a name that the module lacks.
    RecordValue value(std::string_view apiName) const;
    /// Reads the same into a value that the caller fills many times.
    void read(std::string_view apiName, RecordValue& into) const;
    /// Appends the record to a JSON text: a list of entries of name, value and, for lookups, what is shown.
    void write(std::string& json, RecordValue& scratch) const;

    const RecordShape& shape() const { return *shape_; }
    /// Returns its position in its module, from 0 for the oldest.
    std::size_t number() const { return number_; }

private:
    const RecordShape* shape_;
    std::size_t number_;
};

/// Gives access to the records of all modules. It stores none of them, so a store of many records costs as much as one
/// of few. Immutable and safe to use from any thread.
class RecordStore {
public:
    /// `data` has its modules, metadata, users and tags already, and outlives the store. Records have
    /// the tags that exist at this moment.
    RecordStore(const DataSet& data, std::uint64_t seed, std::size_t recordsPerModule);
    ~RecordStore();

    /// Returns how many records a module lists; 0 for a module whose rows lie under others. Activities list the tasks,
    /// events and calls.
    std::size_t count(std::string_view module) const;
    /// Returns a record of the module's list; the position is below `count`.
    RecordData at(std::string_view module, std::size_t position) const;
    /// Returns nullopt when the module has no such record.
    std::optional<RecordData> find(std::string_view module, std::string_view id) const;

private:
    const RecordShape* shape(std::string_view module) const;

    std::unique_ptr<const RecordContext> context_;
    std::unique_ptr<std::map<std::string, std::unique_ptr<RecordShape>, std::less<>>> shapes_;
};

}  // namespace tarvo::sandbox
