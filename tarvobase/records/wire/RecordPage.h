#pragma once

#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/JsonDocument.h"
#include "platform/Rows.h"
#include "tarvobase/value_objects/field/FieldList.h"

namespace tarvo {

/// The records of one answer as rows of the module's table, without a map per record. It holds what parsing each record
/// and converting it with `RecordConversion` would give, in the form that a table takes:
///
/// - a list of dependent records (participants, product lines, tags, rows of a subform) becomes their number;
/// - the attachments of a note become their ids joined by ",".
///
/// Any other list of records becomes its JSON text. The dependent records themselves come from `nestedRecords`. Records
/// whose identifier is not a text, or empty, are left out and counted. Immutable and safe to read from any thread; it
/// keeps the document alive.
class RecordPage final : public RowSource {
public:
    /// Reads the list under "data" of an answer, in the naming of the field list. Anything but a list gives an empty
    /// page.
    RecordPage(json::Document document, const json::Element& data, const FieldList& metadata);
    ~RecordPage() override;

    std::span<const std::string> columns() const override;
    std::size_t rowCount() const override;
    ValueView cell(std::size_t row, std::size_t column) const override;
    bool mayHoldObjects() const override { return false; }

    /// Returns whether the record of a row names a column: it has a value for it. One that names a lookup also names
    /// the column of its display text, with or without a text: that of the former lookup must not stay.
    bool names(std::size_t row, std::size_t column) const;
    /// Returns the text in the identifier column of a row.
    std::string_view recordId(std::size_t row) const;
    /// Returns the number of records of the answer that were left out.
    std::size_t leftOut() const;

    /// The dependent records of one row.
    struct Nested {
        std::size_t row;
        std::vector<ValueMap> records;  ///< wire dictionaries
    };
    /// Returns the lists under a wire name in the order of the rows: one per row that has such a list, empty ones
    /// included. The name is an API name of the field list, or one whose lists are records in every module.
    std::vector<Nested> nestedRecords(std::string_view wireName) const;

private:
    struct Content;
    std::unique_ptr<const Content> content_;
};

}  // namespace tarvo
