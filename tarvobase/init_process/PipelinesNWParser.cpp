#include "tarvobase/init_process/PipelinesNWParser.h"

#include "tarvobase/init_process/FirstEntry.h"

namespace tarvo {

namespace {

class RowsParser final : public ParserProtocol<ValueList, BaseResultInfo> {
public:
    Result<ValueList, ParserError> parseResult(const ValueList& rows, const BaseResultInfo& info) override {
        if (info.noData.value_or(false)) return ParserError(ParserError::Case::noData);
        return rows;
    }
};

const ValueList* stagesIn(const Value& row) {
    auto columns = row.asList();
    return columns && columns->size() >= 4 ? (*columns)[3].asList() : nullptr;
}

std::optional<PipelineStage> stageOf(const Value& row, const std::string& pipelineId) {
    auto texts = leadingTexts(row, 4);
    if (!texts) return std::nullopt;
    return PipelineStage{.pipelineId = pipelineId,
                         .stageId = texts->at(3),
                         .actualName = texts->at(0),
                         .displayName = texts->at(1),
                         .stageDisplayIndex = texts->at(2)};
}

std::optional<DealStage> dealStageOf(const Value& row) {
    auto texts = leadingTexts(row, 4);
    auto type = texts ? fromRawText<DealStage::StageType>(texts->at(3)) : std::nullopt;
    if (!type) return std::nullopt;
    return DealStage{texts->at(0), texts->at(1), texts->at(2), *type};
}

}  // namespace

Result<PipelinesNWParser::ParsedPipelines, ParserError> PipelinesNWParser::getParsedPipelines(
    const platform::Data& data) {
    auto rows = firstEntry(RowsParser(), data);
    if (!rows) return rows.error();
    ParsedPipelines parsed;
    for (auto& row : *rows) {
        auto stages = stagesIn(row);
        auto texts = leadingTexts(row, 3);
        if (!stages || !texts) continue;
        parsed.pipelines.push_back({texts->at(0), texts->at(1), texts->at(2)});
        for (auto& stageRow : *stages)
            if (auto stage = stageOf(stageRow, texts->at(0))) parsed.stages.push_back(*std::move(stage));
    }
    return parsed;
}

Result<std::vector<DealStage>, ParserError> PipelinesNWParser::getParsedStages(const platform::Data& data) {
    auto rows = firstEntry(RowsParser(), data);
    if (!rows) return rows.error();
    std::vector<DealStage> stages;
    for (auto& row : *rows)
        if (auto stage = dealStageOf(row)) stages.push_back(*std::move(stage));
    return stages;
}

}  // namespace tarvo
