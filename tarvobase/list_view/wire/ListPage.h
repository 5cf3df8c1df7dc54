#pragma once

#include "tarvobase/records/wire/WireRecords.h"

namespace tarvo {

/// The server's answer: records of a view, and its position in the list.
struct ListPage {
    WireRecords records;
    RecordListInfo info;
    ResponseInfo responseInfo;
};

}  // namespace tarvo
