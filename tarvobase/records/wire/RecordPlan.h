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

/// How the records of one module get from the wire into the database, worked out once for all of them: which key of a
/// wire dictionary goes into which column, by which rule. Slots number the keys that anything is read from, those of
/// the lists of dependent records included, columns the names that anything is written to. Immutable.
class RecordPlan {
public:
    static constexpr std::size_t none = static_cast<std::size_t>(-1);

    /// What becomes of a value, beside what its type asks for.
    enum class Rule { asItIs, attachments, tags, noteTitle, dependentRows };

    struct Field {
        FieldDataType type;
        Rule rule;
        std::size_t slot;
        std::size_t lookupSlot;  // `none` when the display text is not stored
        std::size_t column;
        std::size_t lookupColumn;
    };

    explicit RecordPlan(const FieldList& metadata);

    const std::vector<Field>& fields() const { return fields_; }
    /// Keys of the wire dictionary by slot.
    const std::vector<std::string>& keys() const { return keys_; }
    const std::vector<std::string>& columns() const { return columns_; }
    std::size_t slotOf(const std::string& key) const {
        auto found = slots_.find(key);
        return found == slots_.end() ? none : found->second;
    }
    /// The column that identifies a record; `none` when no field fills it.
    std::size_t identifierColumn() const { return identifierColumn_; }
    std::size_t checkInSlot() const { return checkInSlot_; }
    std::size_t checkInParentSlot() const { return checkInParentSlot_; }

    const std::string& moduleName() const { return moduleName_; }
    const FieldIdentifier& naming() const { return naming_; }
    bool isOfNotes() const { return isOfNotes_; }
    bool modifySystemProperties() const { return modifySystemProperties_; }
    bool namesOfPeople() const { return namesOfPeople_; }

    /// Converts one record from a source into a sink. Only columns that get a value are told to the sink, and the last
    /// of two fields that share one counts. A source answers by slot:
    ///
    /// - `view(slot)`: a flat value; null for an absent one and for a list;
    /// - `isPresent(slot)`, `isRecords(slot)` for a list of records, `isTexts(slot)` for a list of texts.
    ///
    /// A sink takes, by column: `value(column, view)` and, with the slot to read further from, `other(column, slot)`
    /// for what is not flat, `rows(column, slot)` and `noRecords(column)` for records of another table,
    /// `attachments(column, slot)`, `tags(column, slot)`, and `noteTitle(column, slot)`, which answers false when it
    /// has no title.
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
        // The parser, which knows no fields, says an empty text for an empty list.
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
    bool isOfNotes_, modifySystemProperties_, namesOfPeople_;
    std::vector<Field> fields_;
    std::vector<std::string> keys_, columns_;
    std::unordered_map<std::string, std::size_t> slots_, columnPlaces_;
    std::size_t identifierColumn_ = none, checkInSlot_ = none, checkInParentSlot_ = none;
};

}  // namespace tarvo
