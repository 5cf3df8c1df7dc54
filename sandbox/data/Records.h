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
struct RecordWorld;

/// One value of a record: a text, a list of texts, or rows that lie below the record. Numbers, flags and times are
/// texts, as on the wire: "12.5", "true", "2024-02-29", "2024-02-29T10:00:00+05:30".
struct RecordValue {
    /// `absent` is not sent at all; an empty text is.
    enum class Kind { absent, text, texts, rows };

    Kind kind = Kind::absent;
    std::string text;
    std::vector<std::string> texts;
    std::vector<RecordRow> rows;
    /// What stands for the id of a lookup: nothing, one text, or last name, first name and both as shown.
    std::vector<std::string> shown;

    /// As people read it: the shown text of a lookup, texts joined by ",".
    std::string display() const;
    /// Makes it absent; the room for texts stays, so that one value can be filled many times.
    void clear();
    void setText(std::string_view value);
};

struct RecordEntry {
    std::string_view name;
    /// What begins the entry on the wire.
    std::string_view start;
    RecordValue value;
};

/// A row below a record: a participant, a line item, a tag.
struct RecordRow {
    std::vector<RecordEntry> entries;
};

/// One record. It holds no values: each is made when it is asked for, the same at every time, from the seed, the module
/// and the record's number. Cheap to copy; valid as long as its store. Any thread.
class RecordData {
public:
    RecordData(const RecordShape& shape, std::size_t number) : shape_(&shape), number_(number) {}

    /// The module that the record is kept in: "Tasks" for a task, in the list of activities too.
    const std::string& module() const;
    std::string id() const;
    /// Seconds since 1970.
    std::int64_t createdTime() const;
    std::int64_t modifiedTime() const;
    /// The value of a field by its API name; absent for a name that the module lacks.
    RecordValue value(std::string_view apiName) const;
    /// The same into a value that is filled many times.
    void read(std::string_view apiName, RecordValue& into) const;
    /// Appends the record to a JSON text: a list of entries of name, value and, for lookups, what is shown.
    void write(std::string& json, RecordValue& scratch) const;

    const RecordShape& shape() const { return *shape_; }
    /// Position in its module, from 0 for the oldest.
    std::size_t number() const { return number_; }

private:
    const RecordShape* shape_;
    std::size_t number_;
};

/// The records of all modules. Nothing is kept of a record that is not changed: a store of many records costs as much
/// as one of few. Immutable, any thread.
class RecordStore {
public:
    /// `data` has its modules, metadata, users and tags already, and outlives the store. The tags of records are those
    /// of this moment.
    RecordStore(const DataSet& data, std::uint64_t seed, std::size_t recordsPerModule);
    ~RecordStore();

    /// How many records a module lists; 0 for a module whose rows lie under others. Activities list the tasks, events
    /// and calls.
    std::size_t count(std::string_view module) const;
    /// A record of the module's list, below `count`.
    RecordData at(std::string_view module, std::size_t position) const;
    /// Nothing when the module has no such record.
    std::optional<RecordData> find(std::string_view module, std::string_view id) const;

private:
    const RecordShape* shape(std::string_view module) const;

    std::unique_ptr<const RecordWorld> world_;
    std::unique_ptr<std::map<std::string, std::unique_ptr<RecordShape>, std::less<>>> shapes_;
};

}  // namespace tarvo::sandbox
