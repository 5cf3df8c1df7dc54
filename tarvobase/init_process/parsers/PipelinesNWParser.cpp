#include "tarvobase/init_process/parsers/PipelinesNWParser.h"

#include "tarvobase/network_layer/FirstEntry.h"
#include "tarvobase/network_layer/PositionalRow.h"

namespace tarvo {

namespace {

constexpr std::size_t stagesColumn = 3;

std::optional<PipelineStage> stageOf(const PositionalRow& row, const std::string& pipelineId) {
    auto texts = row.leadingTexts(4);
    if (!texts) return std::nullopt;
    return PipelineStage{.pipelineId = pipelineId,
                         .stageId = texts->at(3),
                         .actualName = texts->at(0),
                         .displayName = texts->at(1),
                         .stageDisplayIndex = texts->at(2)};
}

std::optional<DealStage> dealStageOf(const PositionalRow& row) {
    auto texts = row.leadingTexts(4);
    auto type = texts ? fromRawText<DealStage::StageType>(texts->at(3)) : std::nullopt;
    if (!type) return std::nullopt;
    return DealStage{texts->at(0), texts->at(1), texts->at(2), *type};
}

}  // namespace

Result<PipelinesNWParser::ParsedPipelines, ParserError> PipelinesNWParser::getParsedPipelines(
    const platform::Data& data) {
    auto rows = firstRows(data);
    if (!rows) return rows.error();
    ParsedPipelines parsed;
    parsed.pipelines = readUsableRows(*rows, [&](const PositionalRow& row) -> std::optional<Pipeline> {
        auto stages = row.value(stagesColumn).asList();
        auto texts = row.leadingTexts(stagesColumn);
        if (!stages || !texts) return std::nullopt;
        for (auto& stage : readUsableRows(*stages, [&](auto& row) { return stageOf(row, texts->at(0)); }))
            parsed.stages.push_back(std::move(stage));
        return Pipeline{texts->at(0), texts->at(1), texts->at(2)};
    });
    return parsed;
}

Result<std::vector<DealStage>, ParserError> PipelinesNWParser::getParsedStages(const platform::Data& data) {
    auto rows = firstRows(data);
    if (!rows) return rows.error();
    return readUsableRows(*rows, dealStageOf);
}

}  // namespace tarvo
