#include "platform/Rows.h"

#include <algorithm>
#include <numeric>
#include <unordered_set>
#include <utility>

namespace tarvo::platform {

ValueView::ValueView(const Value& value) : kind_(value.kind()) {
    switch (kind_) {
        case ValueKind::null:
            break;
        case ValueKind::boolean:
            integer_ = *value.asBool();
            break;
        case ValueKind::integer:
            integer_ = *value.asInteger();
            break;
        case ValueKind::real:
            real_ = *value.asReal();
            break;
        case ValueKind::text:
            text_ = *value.asText();
            break;
        case ValueKind::bytes:
            text_ = value.asBytes()->bytes;
            break;
        default:
            nested_ = &value;
    }
}

ValueView ValueView::boolean(bool value) {
    ValueView view;
    view.kind_ = ValueKind::boolean;
    view.integer_ = value;
    return view;
}
ValueView ValueView::integer(std::int64_t value) {
    ValueView view;
    view.kind_ = ValueKind::integer;
    view.integer_ = value;
    return view;
}
ValueView ValueView::real(double value) {
    ValueView view;
    view.kind_ = ValueKind::real;
    view.real_ = value;
    return view;
}
ValueView ValueView::text(std::string_view value) {
    ValueView view;
    view.kind_ = ValueKind::text;
    view.text_ = value;
    return view;
}
ValueView ValueView::bytes(std::string_view value) {
    ValueView view;
    view.kind_ = ValueKind::bytes;
    view.text_ = value;
    return view;
}

Value ValueView::copy() const {
    switch (kind_) {
        case ValueKind::null:
            return {};
        case ValueKind::boolean:
            return integer_ != 0;
        case ValueKind::integer:
            return integer_;
        case ValueKind::real:
            return real_;
        case ValueKind::text:
            return text_;
        case ValueKind::bytes:
            return Bytes{std::string(text_)};
        default:
            return *nested_;
    }
}

namespace {

// By length first: most names are told apart without a look at their characters.
bool standsBefore(std::string_view a, std::string_view b) { return a.size() != b.size() ? a.size() < b.size() : a < b; }

}  // namespace

Columns::Columns(std::vector<std::string> names) : names_(std::move(names)), sorted_(names_.size()) {
    std::iota(sorted_.begin(), sorted_.end(), 0u);
    std::stable_sort(sorted_.begin(), sorted_.end(),
                     [this](auto a, auto b) { return standsBefore(names_[a], names_[b]); });
}

std::optional<std::size_t> Columns::find(std::string_view name) const {
    auto after = std::upper_bound(sorted_.begin(), sorted_.end(), name, [this](std::string_view wanted, auto position) {
        return standsBefore(wanted, names_[position]);
    });
    if (after == sorted_.begin() || names_[*std::prev(after)] != name) return std::nullopt;
    return *std::prev(after);
}

Rows::Rows() {
    static const auto nothing = [] {
        auto block = std::make_shared<Block>();
        block->columns = std::make_shared<const Columns>(std::vector<std::string>{});
        return std::shared_ptr<const Block>(block);
    }();
    block_ = nothing;
}

std::size_t Rows::size() const { return block_->rowCount; }
const Columns& Rows::columns() const { return *block_->columns; }
Row Rows::operator[](std::size_t row) const { return Row(*this, row); }
Row Rows::front() const { return (*this)[0]; }
Rows::Iterator Rows::begin() const { return {this, 0}; }
Rows::Iterator Rows::end() const { return {this, size()}; }

ValueView Rows::cell(std::size_t row, std::size_t column) const {
    const auto& cell = block_->cells[row * columns().size() + column];
    auto piece = [&] { return std::string_view(block_->arena).substr(cell.offset, cell.length); };
    switch (cell.kind) {
        case ValueKind::integer:
            return ValueView::integer(cell.integer);
        case ValueKind::real:
            return ValueView::real(cell.real);
        case ValueKind::text:
            return ValueView::text(piece());
        case ValueKind::bytes:
            return ValueView::bytes(piece());
        default:
            return {};
    }
}

std::vector<ValueMap> Rows::toMaps() const {
    std::vector<ValueMap> maps;
    maps.reserve(size());
    for (auto row : *this) maps.push_back(row.toMap());
    return maps;
}

std::optional<ValueView> Row::find(std::string_view column) const {
    auto position = columns().find(column);
    return position ? std::optional(cell(*position)) : std::nullopt;
}

Value Row::valueOf(std::string_view column) const {
    auto view = find(column);
    return view ? view->copy() : Value();
}

ValueMap Row::toMap() const {
    ValueMap map;
    map.reserve(columns().size());
    for (std::size_t i = 0; i < columns().size(); ++i) map.set(columns().names()[i], cell(i).copy());
    return map;
}

Rows::Builder::Builder(std::vector<std::string> columns) : block_(std::make_shared<Block>()) {
    block_->columns = std::make_shared<const Columns>(std::move(columns));
}

void Rows::Builder::addNull() { block_->cells.emplace_back(); }
void Rows::Builder::addInteger(std::int64_t value) {
    auto& cell = block_->cells.emplace_back();
    cell.kind = ValueKind::integer;
    cell.integer = value;
}
void Rows::Builder::addReal(double value) {
    auto& cell = block_->cells.emplace_back();
    cell.kind = ValueKind::real;
    cell.real = value;
}
void Rows::Builder::addText(std::string_view value) { addPiece(ValueKind::text, value); }
void Rows::Builder::addBytes(std::string_view value) { addPiece(ValueKind::bytes, value); }

void Rows::Builder::addPiece(ValueKind kind, std::string_view piece) {
    auto& cell = block_->cells.emplace_back();
    cell.kind = kind;
    cell.offset = block_->arena.size();
    cell.length = static_cast<std::uint32_t>(piece.size());
    block_->arena.append(piece);
}

Rows Rows::Builder::finish() {
    auto columns = block_->columns;
    block_->rowCount = columns->size() ? block_->cells.size() / columns->size() : 0;
    auto finished = std::exchange(block_, std::make_shared<Block>());
    block_->columns = columns;
    return Rows(std::shared_ptr<const Block>(std::move(finished)));
}

MapRowSource::MapRowSource(std::span<const ValueMap> maps) : maps_(maps) {
    std::unordered_set<std::string_view> known;
    for (auto& map : maps) {
        std::size_t position = 0;
        for (auto& entry : map) {
            holdsObjects_ = holdsObjects_ || entry.value.kind() == ValueKind::object;
            // Rows of one batch mostly have the same names in the same order; then no name has to be looked up.
            bool inPlace = position < columns_.size() && columns_[position] == entry.name;
            ++position;
            if (inPlace) continue;
            if (known.insert(entry.name).second) columns_.push_back(entry.name);
            if (&map != &maps.front()) uniform_ = false;
        }
        if (map.size() != columns_.size()) uniform_ = false;
    }
}

ValueView MapRowSource::cell(std::size_t row, std::size_t column) const {
    const auto& map = maps_[row];
    auto inPlace = map.begin() + static_cast<std::ptrdiff_t>(column);
    if (uniform_ || (map.size() > column && inPlace->name == columns_[column])) return ValueView(inPlace->value);
    auto value = map.find(columns_[column]);
    return value ? ValueView(*value) : ValueView();
}

bool MapRowSource::hasCell(std::size_t row, std::size_t column) const {
    return uniform_ || maps_[row].find(columns_[column]);
}

}  // namespace tarvo::platform
