#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox::calls {
namespace {

constexpr std::int64_t noTaxes = 4832;

ValueList taxRows(const DataSet& data) {
    ValueList rows;
    for (const auto& tax : data.taxes) rows.push_back(ValueList{tax.id, tax.name, tax.rate});
    return rows;
}

ValueList currencyRows(const DataSet& data) {
    ValueList rows;
    for (const auto& currency : data.currencies)
        rows.push_back(ValueList{std::to_string(rows.size() + 1), currency.exchangeRate, currency.thousandSeparator,
                                 flag(currency.isBase), currency.isoCode, currency.id, flag(currency.isPrefixSymbol),
                                 currency.symbol, flag(currency.isActive), std::to_string(currency.decimalPlaces),
                                 currency.name, currency.decimalSeparator});
    return rows;
}

// A pipeline has a list of its stages in the fourth place.
ValueList pipelineRows(const DealStages& deals) {
    ValueList rows;
    for (const auto& pipeline : deals.pipelines) {
        ValueList stages;
        for (auto position : pipeline.stages) {
            const auto& stage = deals.stages[position];
            stages.push_back(ValueList{stage.name, stage.displayName, std::to_string(stages.size() + 1), stage.id});
        }
        rows.push_back(ValueList{pipeline.id, pipeline.name, pipeline.displayName, std::move(stages)});
    }
    return rows;
}

// The organisation's plain list of stages has the kind of the stage there.
ValueList stageRows(const DealStages& deals) {
    ValueList rows;
    for (const auto& stage : deals.stages)
        rows.push_back(ValueList{stage.id, stage.name, stage.displayName, stage.type});
    return rows;
}

}  // namespace

// An organisation that is not the default one sells without taxes.
Reply taxesAndCurrencies(const Call& call) {
    bool hasTaxes = true;
    for (const auto& organisation : call.data.organisations)
        if (organisation.id == call.request.organisation) hasTaxes = organisation.isDefault;
    auto taxes = hasTaxes ? envelope::olderPart(taxRows(call.data), call.now)
                          : envelope::olderFailedPart(noTaxes, "Taxes are not set up.", call.now);
    return Reply::of(envelope::olderAnswer({std::move(taxes), envelope::olderPart(currencyRows(call.data), call.now)}));
}

// Every layout of the deals has the same pipelines, and old clients send an id of their own, so "layoutid" is
// ignored.
Reply pipelines(const Call& call) {
    auto name = call.request.parameter("module").value_or("");
    const auto* module = call.data.module(name);
    if (!module) module = call.data.module(call.request.parameter("moduleAPI").value_or(""));
    if (!module)
        return Reply::of(envelope::answer(
            {envelope::failedEntry(name, "INVALID_MODULE", "There is no such module.", call.now)}, call.now));
    ValueList rows;
    if (module->name == "Deals") {
        rows = pipelineRows(call.data.dealStages);
        for (auto& row : stageRows(call.data.dealStages)) rows.push_back(std::move(row));
    }
    return Reply::of(envelope::answer({envelope::entry(module->name, std::move(rows), call.now)}, call.now));
}

}  // namespace tarvo::sandbox::calls
