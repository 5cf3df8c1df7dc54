#include "host/commands/FieldsCommand.h"

#include "bridge/forms/JsonForm.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "platform/Json.h"
#include "platform/Text.h"

namespace tarvo::host {

namespace {

constexpr const char* tokenNeededForFields = "--token is required to sign in and fetch the fields";

struct FieldLine {
    std::string label, apiName, column, type;
    bool mandatory = false;
    static constexpr auto fields() {
        return describe(field("label", &FieldLine::label), field("apiName", &FieldLine::apiName),
                        field("column", &FieldLine::column), field("type", &FieldLine::type),
                        field("mandatory", &FieldLine::mandatory));
    }
};

struct SectionLines {
    std::string name, label;
    std::vector<FieldLine> lines;
    static constexpr auto fields() {
        return describe(field("name", &SectionLines::name), field("label", &SectionLines::label),
                        field("fields", &SectionLines::lines));
    }
};

struct LayoutLines {
    std::string id, name;
    bool isDefault = false;
    bool isAccessible = true;
    std::vector<SectionLines> sections;
    static constexpr auto fields() {
        return describe(field("id", &LayoutLines::id), field("name", &LayoutLines::name),
                        field("isDefault", &LayoutLines::isDefault), field("isAccessible", &LayoutLines::isAccessible),
                        field("sections", &LayoutLines::sections));
    }
};

FieldLine lineOf(const FieldMetadata& field, bool mandatory) {
    return {field.fieldLabel, field.fieldAPIName, field.columnCRMName, std::string(caseName(field.fieldType)),
            mandatory};
}

LayoutLines linesOf(const Layout<OrderedLayoutFieldList>& layout) {
    LayoutLines lines{layout.layoutID, layout.layoutName, layout.isDefault, layout.isAccessible, {}};
    for (auto row : layout.metadata.layoutFields()) {
        if (lines.sections.empty() || lines.sections.back().name != row->sectionName)
            lines.sections.push_back({row->sectionName, row->sectionDV, {}});
        lines.sections.back().lines.push_back(lineOf(*row, row->mandatory));
    }
    return lines;
}

/// Arranges what is listed. The fields of a module without layouts stand in one section.
std::vector<LayoutLines> listing(const FieldList& fields, const StoredLayouts& layouts) {
    std::vector<LayoutLines> listing;
    for (auto& layout : layouts) listing.push_back(linesOf(layout));
    if (!listing.empty()) return listing;
    SectionLines all{"", "All fields", {}};
    for (auto field : fields.allFields()) all.lines.push_back(lineOf(*field, false));
    return {{.name = "No layout", .sections = {std::move(all)}}};
}

std::string headingOf(const LayoutLines& layout) {
    if (layout.id.empty()) return layout.name;
    return "Layout " + layout.name + (layout.isDefault ? " (default)" : "") +
           (layout.isAccessible ? "" : " (not for this profile)");
}

/// Sets one table over all sections, so that columns align, and cuts it where headings belong.
std::string forPeople(const std::vector<LayoutLines>& listing, const std::string& module, const std::string& path) {
    std::vector<std::vector<std::string>> rows = {{"LABEL", "API NAME", "COLUMN", "TYPE", "MANDATORY"}};
    for (auto& layout : listing)
        for (auto& section : layout.sections)
            for (auto& line : section.lines)
                rows.push_back({line.label, line.apiName, line.column, line.type, line.mandatory ? "yes" : "no"});
    auto lines = text::split(tableText(rows), "\n");
    auto next = lines.begin() + 1;
    std::string output;
    for (auto& layout : listing) {
        output += tableText({{headingOf(layout)}}) + "\n";
        for (auto& section : layout.sections) {
            output += tableText({{section.label.empty() ? section.name : section.label}}) + "  " + lines.front() + "\n";
            for (std::size_t i = 0; i < section.lines.size(); ++i) output += "  " + *next++ + "\n";
            output += "\n";
        }
    }
    return output + "The fields of " + module + ", read from the encrypted database " + path + "\n";
}

std::string forPrograms(const std::vector<LayoutLines>& listing, const std::string& module, const std::string& path) {
    ValueMap map{
        {"module", bridge::toJson(module)}, {"layouts", bridge::toJson(listing)}, {"database", bridge::toJson(path)}};
    return json::write(map).value_or("") + "\n";
}

/// The stored fields and layouts of a module.
struct Stored {
    std::optional<FieldList> fields;
    StoredLayouts layouts;

    static Stored of(const std::string& module) { return {storedFields(module), storedLayouts(module)}; }
    /// Fields without layouts may have come with a module that depends on this one.
    bool isWhole() const { return fields && !layouts.empty(); }
};

/// Returns what is stored, after a fetch if something is missing or a fetch is asked for; otherwise the exit status.
/// Fields without layouts are listed even if nothing more can be fetched.
Result<Stored, int> storedOf(Host& host, const Arguments& arguments) {
    auto stored = Stored::of(arguments.module);
    if (stored.isWhole() && !arguments.fetch) return stored;
    bool mayFail = stored.fields && !arguments.fetch;
    if (!arguments.token)
        return mayFail ? Result<Stored, int>(stored) : Result<Stored, int>(fail(tokenNeededForFields, 2));
    auto failure = fetchMetadata(host, arguments.module);
    if (failure && !mayFail) return fail(*failure);
    stored = Stored::of(arguments.module);
    if (!stored.fields) return fail("the server sent no fields of " + arguments.module);
    return stored;
}

}  // namespace

int listFields(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForFields)) return *status;
    auto stored = storedOf(host, arguments);
    if (!stored) return stored.error();
    auto lines = listing(*stored->fields, stored->layouts);
    return arguments.json ? printForPrograms(forPrograms(lines, arguments.module, *path))
                          : printForPeople(forPeople(lines, arguments.module, *path));
}

}  // namespace tarvo::host
