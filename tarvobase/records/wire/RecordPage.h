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

/// One answer of records as rows of the module's table, without a map a record. It holds what parsing each record and
/// converting it with `RecordConversion` would give, in the form that a table takes:
///
/// - a list of dependent records (participants, product lines, tags, rows of a subform) is their number;
/// - the attachments of a note are their ids joined by ",".
///
/// Any other list is its JSON text. The dependent records themselves come from `nestedRecords`. Records without an
/// identifier that is a text and not empty are left out and counted. Immutable and safe to read from any thread; the
/// document is held.
class RecordPage final : public RowSource {
public:
    /// From the list under "data" of an answer. What is no list is an empty page. The naming is the field list's.
    RecordPage(json::Document document, const json::Element& data, const FieldList& metadata);
    ~RecordPage() override;

    std::span<const std::string> columns() const override;
    std::size_t rowCount() const override;
    ValueView cell(std::size_t row, std::size_t column) const override;
    bool mayHoldObjects() const override { return false; }

    /// The text in the identifier column of a row.
    std::string_view recordId(std::size_t row) const;
    /// Records of the answer that were left out.
    std::size_t leftOut() const;

    /// The dependent records of one row.
    struct Nested {
        std::size_t row;
        std::vector<ValueMap> records;  ///< wire dictionaries
    };
    /// The lists that stand under a name of the wire, in the order of the rows: one for each row that has such a list,
    /// the empty ones included. The name is one of the field list's API
    /// names, or of those whose lists are records in every module.
    std::vector<Nested> nestedRecords(std::string_view wireName) const;

private:
    struct Content;
    std::unique_ptr<const Content> content_;
};

}  // namespace tarvo
