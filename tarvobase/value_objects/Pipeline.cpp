#include "tarvobase/value_objects/Pipeline.h"

namespace tarvo {

namespace {

const auto pipelineForm = form<Pipeline, PipelineParser>(member(&Pipeline::id, &PipelineParser::Id),
                                                         member(&Pipeline::actualName, &PipelineParser::ActualName),
                                                         member(&Pipeline::displayName, &PipelineParser::DisplayName));

}  // namespace

ValueMap PipelineDBParser::getDictionary(const Pipeline& pipeline) const {
    return pipelineForm.toMap(pipeline, *this, Form::table);
}
Pipeline PipelineDBParser::getValue(const Row& row) const { return pipelineForm.read(row, *this, Form::table); }

}  // namespace tarvo
