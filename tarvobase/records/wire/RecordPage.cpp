#include "tarvobase/records/wire/RecordPage.h"

#include <array>
#include <deque>

#include "platform/Json.h"
#include "platform/Text.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/ModuleParser.h"
#include "tarvobase/records/wire/RecordPlan.h"
#include "tarvobase/records/wire/WireEntries.h"

namespace tarvo {

namespace {

using json::Element;

/// A value of a row, 16 bytes. Its text lies in the document or among the page's own texts.
struct Cell {
    union {
        std::int64_t integer = 0;
        const char* start;
    };
    std::uint32_t length = 0;
    ValueKind kind = ValueKind::null;
};

/// The page's own texts. A deque, so that they never move.
using Texts = std::deque<std::string>;

std::string_view keep(Texts& texts, std::string text) { return texts.emplace_back(std::move(text)); }

struct WireValue {
    enum class Kind : std::uint8_t { absent, text, records, texts };
    Kind kind = Kind::absent;
    std::string_view text;
    Element list;                // of `records`
    std::vector<Element> items;  // of `texts`
};

/// The entries of one record by the slots of a plan. It is the sink of the reader and the source of the conversion.
class WireRecord {
public:
    /// One slot per value of an entry.
    using Key = std::array<std::size_t, 4>;

    WireRecord(const RecordPlan& plan, Texts& texts) : plan_(plan), texts_(texts), values_(plan.keys().size()) {}
    void clear() {
        for (auto slot : used_) values_[slot].kind = WireValue::Kind::absent;
        used_.clear();
        entry_ = 0;
    }

    // Records of a page nearly always name the same entries in the same order, so comparing one name usually suffices.
    const Key& key(std::string_view name) {
        if (entry_ == expected_.size()) expected_.emplace_back();
        auto& expected = expected_[entry_++];
        if (!expected.key || expected.name != name) expected = {name, &keyOf(name)};
        return *expected.key;
    }
    void text(const Key& key, wire::Part part, std::string_view text) {
        if (auto value = at(key, part, WireValue::Kind::text)) value->text = text;
    }
    void list(const Key& key, wire::Part part, const std::vector<Element>& items) {
        if (auto value = at(key, part, WireValue::Kind::texts)) value->items = items;
    }
    void joined(const Key& key, const std::vector<Element>& items) {
        auto slot = slotOf(key, wire::Part::value);
        if (slot == RecordPlan::none) return;
        if (items.empty() && wire::isRecordList(plan_.keys()[slot], plan_.modifySystemProperties()))
            return records(slot, Element());
        text(key, wire::Part::value, keep(texts_, wire::joined(items)));
    }
    void nested(const Key& key, const Element& list) {
        if (auto slot = slotOf(key, wire::Part::value); slot != RecordPlan::none) records(slot, list);
    }
    void remove(const Key& key) {
        if (auto slot = slotOf(key, wire::Part::value); slot != RecordPlan::none)
            values_[slot].kind = WireValue::Kind::absent;
    }

    const WireValue& value(std::size_t slot) const { return values_[slot]; }
    ValueView view(std::size_t slot) const {
        auto& value = values_[slot];
        return value.kind == WireValue::Kind::text ? ValueView::text(value.text) : ValueView();
    }
    bool isPresent(std::size_t slot) const { return values_[slot].kind != WireValue::Kind::absent; }
    bool isRecords(std::size_t slot) const { return values_[slot].kind == WireValue::Kind::records; }
    bool isTexts(std::size_t slot) const { return values_[slot].kind == WireValue::Kind::texts; }

private:
    struct Expected {
        std::string_view name;
        const Key* key = nullptr;
    };

    static std::size_t slotOf(const Key& key, wire::Part part) { return key[static_cast<std::size_t>(part)]; }
    WireValue* at(const Key& key, wire::Part part, WireValue::Kind kind) {
        auto slot = slotOf(key, part);
        return slot == RecordPlan::none ? nullptr : &set(slot, kind);
    }
    WireValue& set(std::size_t slot, WireValue::Kind kind) {
        used_.push_back(slot);
        values_[slot].kind = kind;
        return values_[slot];
    }
    void records(std::size_t slot, const Element& list) { set(slot, WireValue::Kind::records).list = list; }

    const Key& keyOf(std::string_view name) {
        auto [found, added] = keys_.try_emplace(name);
        if (added) {
            auto key = ModuleParser::systemKey(name, plan_.modifySystemProperties());
            auto with = [&](std::string_view suffix) { return plan_.slotOf(std::string(key).append(suffix)); };
            found->second = {with(""), with(lookupSuffix), with(firstNameSuffix), with(lastNameSuffix)};
        }
        return found->second;
    }

    const RecordPlan& plan_;
    Texts& texts_;
    std::vector<WireValue> values_;
    std::vector<std::size_t> used_;
    std::vector<Expected> expected_;
    std::size_t entry_ = 0;
    std::unordered_map<std::string_view, Key> keys_;  // by the names in the document
};

std::vector<ValueMap> recordsOf(const Element& list, const RecordPlan& plan) {
    std::vector<Element> items;
    list.items(items);
    return wire::dictionaries(items, plan.modifySystemProperties(), plan.withPersonNames());
}

std::vector<std::string> idsOf(const std::vector<ValueMap>& records) {
    std::vector<std::string> ids;
    for (auto& record : records)
        if (auto id = record.find("id"); id && id->asText()) ids.push_back(*id->asText());
    return ids;
}

/// Writes the cells of one row.
class CellSink {
public:
    CellSink(const RecordPlan& plan, const WireRecord& record, Texts& texts, std::vector<Cell>& cells)
        : plan_(plan), record_(record), texts_(texts), cells_(cells) {}
    void begin() {
        row_ = cells_.size();
        cells_.resize(row_ + plan_.columns().size());
    }
    void discard() { cells_.resize(row_); }
    const Cell& operator[](std::size_t column) const { return cells_[row_ + column]; }

    void value(std::size_t column, const ValueView& view) {
        auto& cell = cells_[row_ + column];
        cell.kind = view.kind();
        if (auto text = view.asText()) return set(cell, *text);
        cell.integer = view.asInteger().value_or(0);
    }
    /// Writes a list that no rule covers: texts are joined, records become JSON text, as the database would write them.
    void other(std::size_t column, std::size_t slot) {
        auto& list = record_.value(slot);
        if (list.kind == WireValue::Kind::texts)
            return value(column, ValueView::text(keep(texts_, wire::joined(list.items))));
        ValueList items;
        for (auto& record : recordsOf(list.list, plan_)) items.emplace_back(std::move(record));
        if (auto text = json::write(items)) value(column, ValueView::text(keep(texts_, *std::move(text))));
    }
    void rows(std::size_t column, std::size_t slot) {
        value(column, ValueView::integer(static_cast<std::int64_t>(record_.value(slot).list.leadingItems({}))));
    }
    void noRecords(std::size_t column) { value(column, ValueView::integer(0)); }
    void tags(std::size_t column, std::size_t slot) { rows(column, slot); }
    bool attachments(std::size_t column, std::size_t slot) {
        auto ids = idsOf(recordsOf(record_.value(slot).list, plan_));
        auto stored = plan_.isNotesModule() ? std::optional(text::join(ids, ",")) : json::write(Value(ids));
        auto& cell = cells_[row_ + column];
        cell.kind = plan_.isNotesModule() ? ValueKind::text : ValueKind::bytes;
        set(cell, keep(texts_, stored.value_or("[]")));
        return true;
    }
    bool noteTitle(std::size_t column, std::size_t slot) {
        ValueList names;
        for (auto& item : record_.value(slot).items) names.push_back(item.copy());
        auto title = json::write(names);
        if (title) value(column, ValueView::text(keep(texts_, *std::move(title))));
        return title.has_value();
    }

private:
    static void set(Cell& cell, std::string_view text) {
        cell.start = text.data();
        cell.length = static_cast<std::uint32_t>(text.size());
    }

    const RecordPlan& plan_;
    const WireRecord& record_;
    Texts& texts_;
    std::vector<Cell>& cells_;
    std::size_t row_ = 0;
};

ValueView viewOf(const Cell& cell) {
    switch (cell.kind) {
        case ValueKind::integer:
            return ValueView::integer(cell.integer);
        case ValueKind::text:
            return ValueView::text({cell.start, cell.length});
        case ValueKind::bytes:
            return ValueView::bytes({cell.start, cell.length});
        default:
            return {};
    }
}

}  // namespace

struct RecordPage::Content {
    struct NestedList {
        std::size_t row, slot;
        Element list;
    };

    Content(json::Document document, const FieldList& metadata)
        : document(std::move(document)), plan(metadata), lookupColumns(plan.columns().size(), RecordPlan::none) {
        for (auto& field : plan.fields())
            if (field.lookupColumn != RecordPlan::none) lookupColumns[field.lookupColumn] = field.column;
    }
    void read(const Element& data);
    void keepNested(const WireRecord& record);

    json::Document document;
    RecordPlan plan;
    std::vector<std::size_t> lookupColumns;  // by the columns of display texts; `none` for other columns
    Texts texts;
    std::vector<Cell> cells;
    std::vector<NestedList> nested;  // row by row
    std::size_t rowCount = 0, leftOut = 0;
};

void RecordPage::Content::read(const Element& data) {
    std::vector<Element> records;
    data.items(records);
    cells.reserve(records.size() * plan.columns().size());
    wire::RecordReader<Element> reader(plan.withPersonNames());
    WireRecord record(plan, texts);
    CellSink row(plan, record, texts, cells);
    for (auto& item : records) {
        record.clear();
        row.begin();
        bool isRecord = reader.read(item, record);
        if (isRecord) plan.convert(record, row);
        auto identifier = plan.identifierColumn();
        if (!isRecord || identifier == RecordPlan::none || row[identifier].kind != ValueKind::text ||
            row[identifier].length == 0) {
            row.discard();
            ++leftOut;
            continue;
        }
        keepNested(record);
        ++rowCount;
    }
}

void RecordPage::Content::keepNested(const WireRecord& record) {
    for (std::size_t slot = 0; slot < plan.keys().size(); ++slot)
        if (record.isRecords(slot)) nested.push_back({rowCount, slot, record.value(slot).list});
}

RecordPage::RecordPage(json::Document document, const json::Element& data, const FieldList& metadata) {
    auto content = std::make_unique<Content>(std::move(document), metadata);
    content->read(data);
    content_ = std::move(content);
}
RecordPage::~RecordPage() = default;

std::span<const std::string> RecordPage::columns() const { return content_->plan.columns(); }
std::size_t RecordPage::rowCount() const { return content_->rowCount; }
std::size_t RecordPage::leftOut() const { return content_->leftOut; }

ValueView RecordPage::cell(std::size_t row, std::size_t column) const {
    return viewOf(content_->cells[row * content_->plan.columns().size() + column]);
}

bool RecordPage::names(std::size_t row, std::size_t column) const {
    auto isSet = [cells = &content_->cells[row * content_->plan.columns().size()]](std::size_t place) {
        return cells[place].kind != ValueKind::null;
    };
    auto lookup = content_->lookupColumns[column];
    return isSet(column) || (lookup != RecordPlan::none && isSet(lookup));
}

std::string_view RecordPage::recordId(std::size_t row) const {
    return cell(row, content_->plan.identifierColumn()).asText().value_or("");
}

std::vector<RecordPage::Nested> RecordPage::nestedRecords(std::string_view wireName) const {
    auto& plan = content_->plan;
    std::vector<Nested> found;
    auto slot = plan.slotOf(ModuleParser::systemKey(wireName, plan.modifySystemProperties()));
    for (auto& list : content_->nested)
        if (list.slot == slot) found.push_back({list.row, recordsOf(list.list, plan)});
    return found;
}

}  // namespace tarvo
