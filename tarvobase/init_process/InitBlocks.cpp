#include "tarvobase/init_process/InitBlocks.h"

#include "platform/Text.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/network_layer/TypedReads.h"

namespace tarvo {

namespace {

std::string textAt(const ValueList& row, std::size_t index) { return readIndex<std::string>(row, index).value_or(""); }

Module moduleOf(const ValueList& row, bool isModuleIDSupported) {
    Module module;
    module.moduleName = textAt(row, 0);
    module.singularName = textAt(row, 1);
    module.pluralName = textAt(row, 2);
    module.apiName = textAt(row, 3);
    if (auto position = text::toInteger(textAt(row, 4)); position && std::in_range<int>(*position))
        module.position = static_cast<int>(*position);
    module.type = fromRawText<ModuleType>(textAt(row, 5)).value_or(ModuleType::none);
    module.id = isModuleIDSupported ? textAt(row, 6) : module.moduleName;
    return module;
}

}  // namespace

std::optional<std::vector<std::string>> InitTablesParser::parse(const ValueList& data) {
    std::vector<std::string> queries;
    for (auto& entry : data) {
        if (!entry.asText()) return std::nullopt;
        queries.push_back(*entry.asText());
    }
    return queries;
}

std::optional<ParsedInitData::DateTimeFormat> InitDateTimeFormatParser::parse(const ValueList& data) {
    for (auto& entry : data)
        if (!entry.asText()) return std::nullopt;
    if (data.size() < 2) return std::nullopt;
    return ParsedInitData::DateTimeFormat{*data[0].asText(), *data[1].asText()};
}

std::optional<std::vector<Module>> InitModulesParser::parse(const ValueList& data) {
    bool isModuleIDSupported = CommonConfigration::sharedInstance().isModuleIDSupported.get();
    std::vector<Module> modules;
    for (auto& entry : data) {
        auto row = entry.asList();
        if (!row) continue;
        auto module = moduleOf(*row, isModuleIDSupported);
        if (!module.moduleName.empty()) modules.push_back(std::move(module));
    }
    // Rows were there and none of them was one: the block is of another shape.
    if (modules.empty() && !data.empty()) return std::nullopt;
    return modules;
}

}  // namespace tarvo
