#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/Rows.h"
#include "platform/dates/Dates.h"
#include "tarvobase/utils/Util.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

/// The plan by which records of one module are converted from the wire to the database: which key of a wire dictionary
/// goes into which column, by which rule. It is made once per page. Slots number the keys that are read, including
/// those of the lists of dependent records; columns number the names that are written. Immutable.
class RecordPlan {
public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    /// A conversion that a field needs in addition to that of its type.
    enum class Rule { plain, attachments, tags, noteTitle, dependentRows };

    struct Field {
        FieldDataType type;
        Rule rule;
        std::size_t slot;
        std::size_t lookupSlot;  // `none` if the display text is not stored
        std::size_t column;
        std::size_t lookupColumn;
    };

    explicit RecordPlan(const FieldList& metadata);

    const std::vector<Field>& fields() const { return fields_; }
    /// The keys of the wire dictionary by slot.
    const std::vector<std::string>& keys() const { return keys_; }
    const std::vector<std::string>& columns() const { return columns_; }
    std::size_t slotOf(const std::string& key) const {
        auto found = slots_.find(key);
        return found == slots_.end() ? none : found->second;
    }
    /// The column that identifies a record; `none` if no field fills it.
    std::size_t identifierColumn() const { return identifierColumn_; }
    std::size_t checkInSlot() const { return checkInSlot_; }
    std::size_t checkInParentSlot() const { return checkInParentSlot_; }

    const std::string& moduleName() const { return moduleName_; }
    const FieldIdentifier& naming() const { return naming_; }
    bool isNotesModule() const { return isNotesModule_; }
    bool modifySystemProperties() const { return modifySystemProperties_; }
    bool withPersonNames() const { return withPersonNames_; }

    /// Converts one record from a source into a sink. The sink receives only columns that get a value. If two fields
    /// share a column, the last one counts. A source answers by slot:
    ///
    /// - `view(slot)` returns a flat value, and null for an absent value and for a list;
    /// - `isPresent(slot)`, `isRecords(slot)` (a list of records) and `isTexts(slot)` (a list of texts).
    ///
    /// A sink takes values by column: `value(column, view)` takes a flat value. The other calls name the slot to read
    /// from: `other(column, slot)` for a value that is not flat, `rows(column, slot)` and `noRecords(column)` for
    /// records of another table, `attachments(column, slot)`, `tags(column, slot)`, and `noteTitle(column, slot)`,
    /// which returns false if there is no title.
    template <class Source, class Sink>
    void convert(const Source& source, Sink& sink) const {
        for (auto& field : fields_) {
            convertValue(field, source, sink);
            if (field.lookupSlot != none && source.isPresent(field.lookupSlot) && !source.isTexts(field.lookupSlot))
                put(source, field.lookupSlot, field.lookupColumn, sink);
        }
    }

private:
    template <class Source, class Sink>
    static void put(const Source& source, std::size_t slot, std::size_t column, Sink& sink) {
        auto view = source.view(slot);
        view.isNull() ? sink.other(column, slot) : sink.value(column, view);
    }

    template <class Source, class Sink>
    void convertValue(const Field& field, const Source& source, Sink& sink) const {
        auto text = source.view(field.slot).asText();
        if (auto seconds = text ? moment(field.type, *text) : std::nullopt)
            return sink.value(field.column, ValueView::integer(*seconds));
        bool records = source.isRecords(field.slot);
        if (field.rule == Rule::attachments && records && sink.attachments(field.column, field.slot)) return;
        if (field.rule == Rule::tags && records) return sink.tags(field.column, field.slot);
        if (field.rule == Rule::noteTitle && isCheckIn(source) && sink.noteTitle(field.column, checkInParentSlot_))
            return;
        if (field.rule == Rule::dependentRows && records) return sink.rows(field.column, field.slot);
        // The parser does not know the fields and turns an empty list into an empty text.
        if (field.rule == Rule::dependentRows && text && text->empty()) return sink.noRecords(field.column);
        if (source.isPresent(field.slot)) put(source, field.slot, field.column, sink);
    }

    template <class Source>
    bool isCheckIn(const Source& source) const {
        return source.view(checkInSlot_).asText() == "true" && source.isTexts(checkInParentSlot_);
    }

    static std::optional<std::int64_t> moment(FieldDataType type, std::string_view text) {
        if (type == FieldDataType::dateTime) return Util::DateFormatters::iso8601DateFormatter().date(text);
        if (type == FieldDataType::date) return Util::DateFormatters::dateOnlyFormatter().date(text);
        return std::nullopt;
    }

    void add(const FieldMetadata& field);
    Rule ruleOf(const FieldMetadata& field, const std::string& identifier) const;
    bool hasDisplayText(const FieldMetadata& field, const std::string& identifier) const;
    std::size_t slot(const std::string& key);
    std::size_t column(const std::string& name);

    std::string moduleName_;
    FieldIdentifier naming_;
    bool isNotesModule_, modifySystemProperties_, withPersonNames_;
    std::vector<Field> fields_;
    std::vector<std::string> keys_, columns_;
    std::unordered_map<std::string, std::size_t> slots_, columnPlaces_;
    std::size_t identifierColumn_ = none, checkInSlot_ = none, checkInParentSlot_ = none;
};

}  // namespace tarvo
