#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/JsonDocument.h"
#include "tarvobase/network_layer/ParserProtocol.h"
#include "tarvobase/records/Record.h"

namespace tarvo {

class FieldList;

/// The records of one entry of an answer, still in the parsed document. Cheap to copy; copies share the document. A
/// null list stands for an entry without records ("nodata").
struct WireRecords {
    json::Document document;
    json::Element list;
};

/// Reads what `RecordParser` reads, with the same outcome per entry, but leaves the records in the document. Used for
/// pages that are stored. Stateless, may be used from any thread.
struct WireRecordsParser {
    using Response = ParsedResponse<WireRecords, RecordListInfo>;
    static Result<Response, ParserError> parse(const platform::Data& data);
};

/// Returns records by the module's fields, as `recordFromNetworkDictionary` makes them. Returns nullopt if there are no
/// fields.
std::optional<std::vector<Record>> recordsOf(const WireRecords& wireRecords, const FieldList& fields);

/// Returns how many records there are; 0 for an absent list.
std::size_t recordCount(const std::optional<WireRecords>& wireRecords);

/// Returns the ids that records bring, in their order. Records without one are left out.
std::vector<std::string> idsOf(const WireRecords& wireRecords);

}  // namespace tarvo
