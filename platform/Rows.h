#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"

namespace tarvo::platform {

/// A value that is looked at where it lies: in a row, in a page that is being parsed, in a Value. It owns nothing and
/// is valid as long as what it looks into. `nested` covers the kinds that have no flat form (list, map, object).
class ValueView {
public:
    ValueView() = default;
    ValueView(const Value& value);  // NOLINT: implicit, so that a Value passes wherever a view is read
    static ValueView boolean(bool value);
    static ValueView integer(std::int64_t value);
    static ValueView real(double value);
    static ValueView text(std::string_view value);
    static ValueView bytes(std::string_view value);

    ValueKind kind() const { return kind_; }
    bool isNull() const { return kind_ == ValueKind::null; }
    std::optional<bool> asBool() const {
        return kind_ == ValueKind::boolean ? std::optional(integer_ != 0) : std::nullopt;
    }
    std::optional<std::int64_t> asInteger() const {
        return kind_ == ValueKind::integer ? std::optional(integer_) : std::nullopt;
    }
    std::optional<double> asReal() const { return kind_ == ValueKind::real ? std::optional(real_) : std::nullopt; }
    std::optional<std::string_view> asText() const {
        return kind_ == ValueKind::text ? std::optional(text_) : std::nullopt;
    }
    std::optional<std::string_view> asBytes() const {
        return kind_ == ValueKind::bytes ? std::optional(text_) : std::nullopt;
    }
    /// The Value behind the view, for the nested kinds alone.
    const Value* nested() const { return nested_; }

    /// A Value of its own with the same content.
    Value copy() const;

private:
    ValueKind kind_ = ValueKind::null;
    union {
        std::int64_t integer_ = 0;
        double real_;
    };
    std::string_view text_;
    const Value* nested_ = nullptr;
};

/// Column names of a result with their positions. Of two columns of one name the last is found, as in a map that is
/// filled from left to right.
class Columns {
public:
    explicit Columns(std::vector<std::string> names);
    const std::vector<std::string>& names() const { return names_; }
    std::size_t size() const { return names_.size(); }
    std::optional<std::size_t> find(std::string_view name) const;

private:
    std::vector<std::string> names_;
    std::vector<std::uint32_t> sorted_;  // positions in an order of their names
};

class Row;

/// The answer of a fetch: one immutable block of cells with a text arena. Copies share the block; a Row keeps it alive.
class Rows {
public:
    class Builder;

    Rows();
    std::size_t size() const;
    bool empty() const { return size() == 0; }
    const Columns& columns() const;
    Row operator[](std::size_t row) const;
    Row front() const;
    ValueView cell(std::size_t row, std::size_t column) const;
    /// Every row as a map of its own.
    std::vector<ValueMap> toMaps() const;

    class Iterator;
    Iterator begin() const;
    Iterator end() const;

private:
    friend class Row;
    struct Cell {
        union {
            std::int64_t integer;
            double real;
            std::size_t offset;  // into the arena
        };
        std::uint32_t length = 0;
        ValueKind kind = ValueKind::null;
    };
    struct Block {
        std::shared_ptr<const Columns> columns;
        std::vector<Cell> cells;  // row by row
        std::string arena;
        std::size_t rowCount = 0;
    };
    explicit Rows(std::shared_ptr<const Block> block) : block_(std::move(block)) {}

    std::shared_ptr<const Block> block_;
};

/// One row of a `Rows`, read like a map.
class Row {
public:
    Row() = default;
    /// The cell of a column, absent when there is no such column. A column that holds NULL is a null view.
    std::optional<ValueView> find(std::string_view column) const;
    bool contains(std::string_view column) const { return find(column).has_value(); }
    /// The cell as a Value; null for an absent column.
    Value valueOf(std::string_view column) const;
    ValueView cell(std::size_t column) const { return rows_.cell(row_, column); }
    const Columns& columns() const { return rows_.columns(); }
    std::size_t number() const { return row_; }
    const Rows& block() const { return rows_; }
    /// The row as a map. A column that holds NULL is present with a null value.
    ValueMap toMap() const;

private:
    friend class Rows;
    Row(Rows rows, std::size_t row) : rows_(std::move(rows)), row_(row) {}
    Rows rows_;
    std::size_t row_ = 0;
};

class Rows::Iterator {
public:
    using value_type = Row;
    using difference_type = std::ptrdiff_t;
    Iterator() = default;
    Iterator(const Rows* rows, std::size_t row) : rows_(rows), row_(row) {}
    Row operator*() const { return (*rows_)[row_]; }
    Iterator& operator++() {
        ++row_;
        return *this;
    }
    Iterator operator++(int) {
        auto before = *this;
        ++row_;
        return before;
    }
    friend bool operator==(const Iterator&, const Iterator&) = default;

private:
    const Rows* rows_ = nullptr;
    std::size_t row_ = 0;
};

/// Fills a block cell by cell, left to right and row by row; `finish` hands it out and leaves the builder empty.
class Rows::Builder {
public:
    explicit Builder(std::vector<std::string> columns);
    void addNull();
    void addInteger(std::int64_t value);
    void addReal(double value);
    void addText(std::string_view value);
    void addBytes(std::string_view value);
    Rows finish();

private:
    void addPiece(ValueKind kind, std::string_view piece);
    std::shared_ptr<Block> block_;
};

/// A batch of rows to be stored, cell by cell. A list of maps is one, a page being parsed is another: nothing has to
/// build a map a record to store a page.
class RowSource {
public:
    virtual ~RowSource() = default;
    virtual std::span<const std::string> columns() const = 0;
    virtual std::size_t rowCount() const = 0;
    /// The cell at a place, null where the row lacks the column. Valid until the next call for another row.
    virtual ValueView cell(std::size_t row, std::size_t column) const = 0;
    /// Whether every row has all columns. One that has not takes the table's default where a cell is absent.
    virtual bool isUniform() const { return true; }
    virtual bool hasCell(std::size_t /*row*/, std::size_t /*column*/) const { return true; }
    /// Whether a cell may be an object of the program, which perhaps cannot be stored. A source that knows that none is
    /// spares a look at all cells before the first is written.
    virtual bool mayHoldObjects() const { return true; }
};

/// Maps as a batch. Its columns are the names of all maps in the order of their first appearance.
class MapRowSource final : public RowSource {
public:
    /// The maps must outlive the source.
    explicit MapRowSource(std::span<const ValueMap> maps);
    std::span<const std::string> columns() const override { return columns_; }
    std::size_t rowCount() const override { return maps_.size(); }
    ValueView cell(std::size_t row, std::size_t column) const override;
    bool isUniform() const override { return uniform_; }
    bool hasCell(std::size_t row, std::size_t column) const override;
    bool mayHoldObjects() const override { return holdsObjects_; }

private:
    std::span<const ValueMap> maps_;
    std::vector<std::string> columns_;
    bool uniform_ = true;  // every map has all columns in their order
    bool holdsObjects_ = false;
};

}  // namespace tarvo::platform

namespace tarvo {
using platform::MapRowSource;
using platform::Row;
using platform::Rows;
using platform::RowSource;
using platform::ValueView;
}  // namespace tarvo
