#include "host/commands/FiltersCommand.h"

#include "bridge/forms/RecordForms.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "platform/Json.h"
#include "platform/Text.h"

namespace tarvo::host {

namespace {

constexpr const char* tokenNeededForFilters = "--token is required to sign in and fetch the fields";

std::string textOf(const ColumnFilterInputFields& part) {
    if (auto separator = std::get_if<std::string>(&part)) return *separator;
    auto& input = std::get<ColumnFilterInputType>(part);
    switch (input.which) {
        case ColumnFilterInputType::Case::picklist:
            return text::join(input.values, "|");
        case ColumnFilterInputType::Case::integer:
            return "number";
        case ColumnFilterInputType::Case::string:
            return "text";
        case ColumnFilterInputType::Case::fieldValue:
            break;
    }
    return "value";
}

std::string forPeople(const GetFilters::Filters& filters, const Metadata& field) {
    auto heading =
        field.fieldLabel + " (" + field.fieldIdentifier() + ", " + std::string(caseName(field.fieldType)) + ")\n\n";
    if (filters.empty()) return heading + "This field cannot be filtered.\n";
    std::vector<std::vector<std::string>> rows = {{"NAME", "COMPARATOR", "INPUTS"}};
    for (auto& filter : filters) {
        std::vector<std::string> inputs;
        for (auto& part : filter.filterInputs) inputs.push_back(textOf(part));
        rows.push_back({filter.filerName, comparatorOf(filter), text::join(inputs, " ")});
    }
    return heading + tableText(rows);
}

std::string forPrograms(const GetFilters::Filters& filters, const Metadata& field, const std::string& module) {
    ValueMap map{{"module", bridge::toJson(module)},
                 {"column", bridge::toJson(field.fieldIdentifier())},
                 {"filters", bridge::toJson(filters)}};
    return json::write(map).value_or("") + "\n";
}

}  // namespace

int listFilters(Host& host, const Arguments& arguments) {
    if (auto path = openDatabase(host, arguments); !path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForFilters)) return *status;
    auto fields = neededFields(host, arguments, tokenNeededForFilters);
    if (!fields) return fields.error();
    auto field = fieldNamed(*fields, arguments.field);
    if (!field)
        return fail(arguments.module + " has no field \"" + arguments.field + "\"; the command fields lists them");
    auto filters = GetFilters::getFilters(*field);
    return arguments.json ? printForPrograms(forPrograms(filters, *field, arguments.module))
                          : printForPeople(forPeople(filters, *field));
}

}  // namespace tarvo::host
