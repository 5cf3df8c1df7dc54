#include "host/commands/ViewsCommand.h"

#include "bridge/forms/JsonForm.h"
#include "host/commands/CommandSteps.h"
#include "host/commands/Console.h"
#include "platform/Json.h"

namespace tarvo::host {

namespace {

constexpr const char* tokenNeededForViews = "--token is required to sign in and fetch the views";

struct ViewLine {
    std::string name, id;
    bool isDefault = false, isOfflineSupported = false;
    std::optional<std::string> sortBy, sortOrder;
    static constexpr auto fields() {
        return describe(field("name", &ViewLine::name), field("id", &ViewLine::id),
                        field("isDefault", &ViewLine::isDefault),
                        field("isOfflineSupported", &ViewLine::isOfflineSupported), field("sortBy", &ViewLine::sortBy),
                        field("sortOrder", &ViewLine::sortOrder));
    }

    static ViewLine of(const CustomView& view) {
        ViewLine line{view.viewName, view.viewID, view.isDefault, view.isOfflineSupported, {}, {}};
        if (auto sort = view.sortField()) {
            line.sortBy = sort->column;
            line.sortOrder = rawText(sort->isAscending ? SortOrder::ascending : SortOrder::descending);
        }
        return line;
    }
};

std::string forPeople(const std::vector<ViewLine>& views, const std::string& module, const std::string& path) {
    std::vector<std::vector<std::string>> rows = {{"NAME", "ID", "DEFAULT", "OFFLINE", "SORT"}};
    for (auto& view : views)
        rows.push_back({view.name, view.id, view.isDefault ? "yes" : "no", view.isOfflineSupported ? "yes" : "no",
                        view.sortBy ? *view.sortBy + " " + *view.sortOrder : ""});
    return tableText(rows) + "\n" + std::to_string(views.size()) + " views of " + module +
           ", read from the encrypted database " + path + "\n";
}

std::string forPrograms(const std::vector<ViewLine>& views, const std::string& module, const std::string& path) {
    ValueMap map{
        {"module", bridge::toJson(module)}, {"views", bridge::toJson(views)}, {"database", bridge::toJson(path)}};
    return json::write(map).value_or("") + "\n";
}

}  // namespace

int listViews(Host& host, const Arguments& arguments) {
    auto path = openDatabase(host, arguments);
    if (!path) return path.error();
    if (auto status = findModule(host, arguments, tokenNeededForViews)) return *status;
    auto views = neededViews(host, arguments, tokenNeededForViews);
    if (!views) return views.error();
    std::vector<ViewLine> lines;
    for (auto& view : *views) lines.push_back(ViewLine::of(view));
    return arguments.json ? printForPrograms(forPrograms(lines, arguments.module, *path))
                          : printForPeople(forPeople(lines, arguments.module, *path));
}

}  // namespace tarvo::host
