#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"

namespace tarvo::sandbox {

class RecordShape;
struct RecordRow;

inline constexpr std::int64_t millisecondsOfSecond = 1000;

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

/// Holds all values of a record that a client has added or edited, in the order of its shape's fields. It is not
/// changed once others can see it.
struct StoredRecord {
    std::vector<RecordValue> values;
    /// Seconds since 1970.
    std::int64_t createdTime = 0;
    std::int64_t modifiedTime = 0;
    /// When the server took the record in, in milliseconds of its clock.
    std::int64_t addedAt = 0;
};

/// Refers to one record. A record that nobody has changed holds no values: each is made when a caller reads it, always
/// the same, from the seed, the module and the record's number. Cheap to copy; valid as long as the view or list that
/// it comes from. Safe to use from any thread.
class RecordData {
public:
    /// `stored` holds the values of a changed record; null for one of the snapshot.
    RecordData(const RecordShape& shape, std::size_t number, const StoredRecord* stored = nullptr)
        : shape_(&shape), number_(number), stored_(stored) {}

    /// Returns the module that the record belongs to: "Tasks" for a task, in the list of activities too.
    const std::string& module() const;
    std::string id() const;
    /// Returns seconds since 1970.
    std::int64_t createdTime() const;
    std::int64_t modifiedTime() const;
    /// Returns when the server took the record in, in milliseconds of its clock.
    std::int64_t addedAt() const;
    /// Returns the value of a field by its API name; absent for a name that the module lacks.
    RecordValue value(std::string_view apiName) const;
    /// Reads the same into a value that the caller fills many times.
    void read(std::string_view apiName, RecordValue& into) const;
    /// Reads what stands for the record in a lookup: its name, or for a person last name, first name and both.
    void readTitle(std::vector<std::string>& into) const;
    /// Returns all values, in the order of the shape's fields.
    std::vector<RecordValue> values() const;
    /// Returns the record as a row below another one.
    RecordRow row() const;
    /// Appends the record to a JSON text: a list of entries of name, value and, for lookups, what is shown.
    void write(std::string& json, RecordValue& scratch) const;
    /// Returns what `write` writes.
    Value wireForm() const;
    /// Appends the record to a JSON text as a map from API name to value: texts, lists of texts, lists of maps.
    void writeMap(std::string& json, RecordValue& scratch) const;

    const RecordShape& shape() const { return *shape_; }
    /// Returns its position in its module, from 0 for the oldest; added records have numbers of their own.
    std::size_t number() const { return number_; }

private:
    const RecordShape* shape_;
    std::size_t number_;
    const StoredRecord* stored_;
};

}  // namespace tarvo::sandbox
