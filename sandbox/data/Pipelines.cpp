#include "sandbox/data/Pipelines.h"

#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox {
namespace {

const std::vector<PicklistValue>& dealPicklist(const DataSet& data, std::string_view apiName) {
    static const std::vector<PicklistValue> none;
    for (const auto& field : data.metadata.find("Deals")->second.fields)
        if (field.apiName == apiName) return field.picklist;
    return none;
}

// The first pipeline goes through all stages, later ones leave out the first of the open ones.
std::vector<std::size_t> stagesOf(std::size_t pipeline, std::size_t count) {
    std::vector<std::size_t> stages;
    for (std::size_t i = pipeline == 0 ? 0 : 1; i < count; ++i) stages.push_back(i);
    return stages;
}

}  // namespace

DealStages makeDealStages(const DataSet& data, IdSequence& ids) {
    DealStages made;
    for (const auto& value : dealPicklist(data, "Stage"))
        made.stages.push_back({ids.next(), value.value, value.label, value.map});
    for (const auto& value : dealPicklist(data, "Pipeline"))
        made.pipelines.push_back(
            {ids.next(), value.value, value.label, stagesOf(made.pipelines.size(), made.stages.size())});
    return made;
}

}  // namespace tarvo::sandbox
