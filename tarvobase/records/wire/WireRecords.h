#pragma once

#include "platform/JsonDocument.h"
#include "tarvobase/network_layer/ParserProtocol.h"

namespace tarvo {

/// The records of one entry of an answer, where the parser left them: nothing has been made of them yet. Cheap to copy;
/// copies share the document. A null list is an entry without records ("nodata").
struct WireRecords {
    json::Document document;
    json::Element list;
};

/// Reads what `RecordParser` reads, with the same outcome for each entry, but leaves the records in the document: for
/// pages on their way into tables. Stateless: any thread.
struct WireRecordsParser {
    using Response = ParsedResponse<WireRecords, RecordListInfo>;
    static Result<Response, ParserError> parse(const platform::Data& data);
};

}  // namespace tarvo
