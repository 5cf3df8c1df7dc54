#pragma once

#include <string>
#include <vector>

namespace tarvo::sandbox {

class DataSet;
class IdSequence;

struct StageData {
    std::string id;
    std::string name;
    std::string displayName;
    /// "Open", "Closed Won" or "Closed Lost".
    std::string type;
};

/// Describes the stages of deals from the first talk to the close.
struct PipelineData {
    std::string id;
    std::string name;
    std::string displayName;
    /// Positions in the organisation's list of stages, in the order in which a deal goes through them.
    std::vector<std::size_t> stages;
};

struct DealStages {
    std::vector<StageData> stages;
    std::vector<PipelineData> pipelines;
};

/// Makes stages and pipelines from the picklists of the deals' fields "Stage" and "Pipeline".
DealStages makeDealStages(const DataSet& data, IdSequence& ids);

}  // namespace tarvo::sandbox
