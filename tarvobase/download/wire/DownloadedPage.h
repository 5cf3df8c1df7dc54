#pragma once

#include "tarvobase/records/wire/WireRecords.h"

namespace tarvo {

/// A page of a module's records, in the server's order.
struct DownloadedPage {
    WireRecords records;
    RecordListInfo info;
};

}  // namespace tarvo
