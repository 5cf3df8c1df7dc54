#include "tarvobase/sync/wire/CVSyncParser.h"

#include <algorithm>

#include "platform/Log.h"
#include "platform/Text.h"
#include "tarvobase/configuration/Variant.h"
#include "tarvobase/network_layer/PositionalRow.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/CustomViewOfflineQueryParser.h"

namespace tarvo {

namespace {

/// Positions in a row.
enum ViewColumn : std::size_t {
    viewId,
    viewName,
    displayName,
    sectionId,
    sectionDisplayName,
    defaultFlag,
    offlineFlag,
    serverQuery,
    serverReplaceList,
    listFields,
    sortBy,
    sortOrder,
    criteria,
    columnCount
};
// Rows with the server's own criteria may be shorter; their missing columns read as empty.
constexpr std::size_t leastWithServerCriteria = serverReplaceList;

constexpr std::string_view activities = "Activities";

/// Joins a list of texts. Returns an empty text for anything else, so that bad list columns never cost a view.
std::string joined(const Value& value) {
    std::vector<std::string> texts;
    if (auto list = value.asList())
        for (auto& item : *list)
            if (item.asText()) texts.push_back(*item.asText());
    return text::join(texts, ",");
}

/// Joins the server's pieces of a template. Commas inside a piece are encoded, so that its values stay whole.
std::string joinedPieces(const Value& value) {
    std::vector<std::string> pieces;
    if (auto list = value.asList())
        for (auto& item : *list)
            if (item.asText()) pieces.push_back(withEncodedCommas(*item.asText()));
    return text::join(pieces, ",");
}

/// Activities show the views of three modules. The server marks none of them, so they are recognised by name.
bool getDefault(const CustomView& view, const std::string& flag, const std::string& moduleName) {
    if (moduleName == "Calls") return view.viewDisplayName == "My Calls";
    if (moduleName == "Events") return view.viewDisplayName == "My Events";
    if (moduleName == "Tasks") return view.viewDisplayName == "Open Tasks";
    return flag == "true";
}

std::vector<std::string> getModuleList(const CustomViewOfflineQuery& query, const std::string& defaultModule) {
    auto modules = query.moduleList.value_or(std::vector{defaultModule});
    bool isNamed = text::contains(modules, activities);
    if (defaultModule == activities && !isNamed) modules.emplace_back(activities);
    return modules;
}

/// A parsed row, before the modules to which it applies are known.
struct ReadRow {
    CustomView view;
    std::string defaultFlag;
    CustomViewOfflineQuery query;
};

void logDropped(const std::string& viewName, std::string_view why) {
    platform::log(platform::LogLevel::warning, "list view",
                  "custom view \"" + viewName + "\" is left out: " + std::string(why));
}

std::optional<ReadRow> readRow(const ValueList& values, bool hasServerCriteria) {
    PositionalRow row(values, PositionalRow::Mode::strict);
    if (row.size() < (hasServerCriteria ? leastWithServerCriteria : columnCount)) {
        platform::log(platform::LogLevel::warning, "list view", "a custom view is left out: its row is too short");
        return std::nullopt;
    }
    ReadRow read;
    auto& view = read.view;
    view.viewID = row.text(viewId);
    view.viewName = row.text(viewName);
    view.viewDisplayName = row.text(displayName);
    view.sectionID = row.text(sectionId);
    view.sectionDisplayName = row.text(sectionDisplayName);
    read.defaultFlag = row.text(defaultFlag);
    view.isOfflineSupported = row.flag(offlineFlag);
    view.listFields = joined(row.value(listFields));
    view.sortBy = row.text(sortBy);
    view.sortOrder = row.text(sortOrder);
    if (hasServerCriteria)
        read.query = {row.text(serverQuery), joinedPieces(row.value(serverReplaceList)), std::nullopt};
    else if (auto query = CustomViewOfflineQueryParser::compile(row.value(criteria)))
        read.query = *std::move(query);
    else
        return logDropped(view.viewName, "its criteria lack a field, a value or a comparator"), std::nullopt;
    if (row.error()) return logDropped(view.viewName, row.error()->logText()), std::nullopt;
    if (!read.query.isRunnable) view.isOfflineSupported = false;
    return read;
}

void append(std::vector<CustomView>& views, ReadRow row, const std::string& defaultModule) {
    row.view.offlineQuery = std::move(row.query.placeholder);
    row.view.offlineQueryReplaceInfo = std::move(row.query.replaceInfo);
    for (auto& module : getModuleList(row.query, defaultModule)) {
        auto& view = views.emplace_back(row.view);
        view.moduleName = module;
        view.isDefault = getDefault(view, row.defaultFlag, module);
    }
}

}  // namespace

Result<std::vector<CustomView>, ParserError> CVSyncParser::parseResult(const ValueList& rows,
                                                                       const ParsedPermissionInfo& info) {
    bool hasServerCriteria = variant::hasServerCriteria();
    std::vector<CustomView> views;
    for (auto& value : rows) {
        auto list = value.asList();
        if (!list) {
            platform::log(platform::LogLevel::warning, "list view", "a custom view is left out: it is not a row");
            continue;
        }
        if (auto row = readRow(*list, hasServerCriteria)) append(views, *std::move(row), info.moduleName);
    }
    return views;
}

}  // namespace tarvo
