#include "tarvobase/init_process/parsers/InitDownloadParser.h"

#include <algorithm>

#include "platform/Log.h"
#include "tarvobase/init_process/parsers/InitBlocks.h"
#include "tarvobase/init_process/parsers/InitSettingsParser.h"
#include "tarvobase/network_layer/Parser.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

namespace {

/// Returns false if the block cannot be read.
using BlockReader = bool (*)(const ValueList& data, ParsedInitData& parsed);

template <class Parser, auto field>
bool readInto(const ValueList& data, ParsedInitData& parsed) {
    parsed.*field = Parser::parse(data);
    return (parsed.*field).has_value();
}

/// A block by name. If a block comes twice, the last one counts.
struct Block {
    std::string_view module;
    BlockReader read;
};

constexpr Block blocks[] = {
    {"dateTimeFormat", readInto<InitDateTimeFormatParser, &ParsedInitData::dateTimeFormat>},
    {"activeModules", readInto<InitModulesParser, &ParsedInitData::modules>},
    {"userDetails", readInto<InitUserDetailsParser, &ParsedInitData::userDetails>},
    {"activeUsers", readInto<InitUsersParser, &ParsedInitData::users>},
    {"settings", readInto<InitSettingsParser, &ParsedInitData::settings>},
    {"tables", readInto<InitTablesParser, &ParsedInitData::createTableQueries>},
    {"companyInfo", readInto<InitCompanyInfoParser, &ParsedInitData::companyInfo>},
    {"VestraOrgs", readInto<InitOrganisationParser, &ParsedInitData::organisations>},
};

void logLeftOut(const std::string& what) {
    platform::log(platform::LogLevel::warning, "init answer", what + " is left out: it cannot be read");
}

void readBlock(const ValueMap& entry, ParsedInitData& parsed) {
    auto infoValue = entry.find("info");
    auto dataValue = entry.find("data");
    auto info = infoValue ? infoValue->asMap() : nullptr;
    auto data = dataValue ? dataValue->asList() : nullptr;
    auto module = info ? readKey<std::string>(*info, "module") : std::nullopt;
    if (!module) return logLeftOut("a block without a name");
    if (readKey<bool>(*info, "nodata").value_or(false)) return;
    auto block = std::ranges::find(blocks, *module, &Block::module);
    if (block != std::end(blocks) && !(data && block->read(*data, parsed))) logLeftOut("block " + *module);
}

}  // namespace

std::optional<ParsedInitData> InitDownloadParser::parseInitData(const platform::Data& data) {
    auto json = Parser::getJSONData(data);
    if (!json || !json->result) return std::nullopt;
    ParsedInitData parsed;
    parsed.responseTime = json->responseTime / 1000;
    for (auto& entry : *json->result) readBlock(entry, parsed);
    return parsed;
}

}  // namespace tarvo
