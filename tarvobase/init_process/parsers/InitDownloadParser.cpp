#include "tarvobase/init_process/parsers/InitDownloadParser.h"

#include "tarvobase/init_process/parsers/InitBlocks.h"
#include "tarvobase/init_process/parsers/InitSettingsParser.h"
#include "tarvobase/network_layer/Parser.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

namespace {

using BlockReader = void (*)(const ValueList& data, ParsedInitData& parsed);

template <class Parser, auto field>
void readInto(const ValueList& data, ParsedInitData& parsed) {
    parsed.*field = Parser::parse(data);
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

void readBlock(const ValueMap& entry, ParsedInitData& parsed) {
    auto infoValue = entry.find("info");
    auto dataValue = entry.find("data");
    auto info = infoValue ? infoValue->asMap() : nullptr;
    auto data = dataValue ? dataValue->asList() : nullptr;
    if (!info || !data) return;
    auto module = readKey<std::string>(*info, "module");
    if (!module || readKey<bool>(*info, "nodata").value_or(false)) return;
    for (auto& block : blocks)
        if (block.module == *module) block.read(*data, parsed);
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
