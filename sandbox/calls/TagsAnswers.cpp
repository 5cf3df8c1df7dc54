#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox::calls {

Reply moduleTags(const Call& call) {
    auto name = call.request.parameter("module").value_or("");
    const auto* module = call.data.module(name);
    if (!module) module = call.data.module(call.request.parameter("moduleAPI").value_or(""));
    if (!module)
        return Reply::of(envelope::answer(
            {envelope::failedEntry(name, "INVALID_MODULE", "There is no such module.", call.now)}, call.now));
    ValueList rows;
    for (const auto& tag : call.data.tags)
        if (tag.module == module->name) rows.push_back(ValueList{tag.id, tag.name});
    return Reply::of(envelope::answer({envelope::entry(module->name, std::move(rows), call.now)}, call.now));
}

}  // namespace tarvo::sandbox::calls
