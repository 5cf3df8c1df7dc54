#include "tarvobase/records/wire/RecordParser.h"

namespace tarvo {

DownloadedRecords GetRecordsParser::parse(const ValueMap& entry, RecordListInfo info) {
    DownloadedRecords downloaded;
    downloaded.error = readKey<ValueList>(entry, "error");
    downloaded.data = readKey<ValueList>(entry, "data");
    if (downloaded.data)
        downloaded.records = ModuleParser::parseRecord(*downloaded.data, info.moduleName.value_or("")).records;
    else if (info.noData == true)
        downloaded.records.emplace();
    downloaded.info = std::move(info);
    return downloaded;
}

}  // namespace tarvo
