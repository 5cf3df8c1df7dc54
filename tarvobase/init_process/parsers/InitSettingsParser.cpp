#include "tarvobase/init_process/parsers/InitSettingsParser.h"

#include <array>

#include "platform/Text.h"
#include "tarvobase/init_process/parsers/InitBlocks.h"
#include "tarvobase/network_layer/PositionalRow.h"

namespace tarvo {

namespace {

using SettingKey = SettingName;

/// The settings at the positions of the block. The list of the modules' rows stands after the texts.
constexpr std::array applicationTexts = {
    SettingKey::versionID,   SettingKey::themeID,           SettingKey::fontName,         SettingKey::fontSize,
    SettingKey::mapDistance, SettingKey::mapDistanceMetric, SettingKey::placeCalls,       SettingKey::callOption,
    SettingKey::map,         SettingKey::mailComposer,      SettingKey::weekStartsWith,   SettingKey::homeTasks,
    SettingKey::homeEvents,  SettingKey::homeCalls,         SettingKey::displayNameOrder, SettingKey::relatedListOrder};
constexpr std::size_t modulesPosition = applicationTexts.size();
constexpr std::array applicationLists = {SettingKey::supportedModules, SettingKey::whoIdModules,
                                         SettingKey::whatIdModules};

/// The plain positions of a module's row, in the order in which their settings are made.
struct Position {
    SettingName name;
    std::size_t position;
};
constexpr Position modulePositions[] = {{SettingKey::downloadRecords, 1},
                                        {SettingKey::userMaxRecords, 2},
                                        {SettingKey::search, 4},
                                        {SettingKey::display, 3}};
constexpr std::size_t sortPosition = 5;
constexpr std::size_t maxReporteesPosition = 6;
constexpr std::string_view moduleWithReportees = "Accounts";
constexpr std::array sortLevels = {SettingKey::groupBy, SettingKey::primarySort, SettingKey::secondarySort};

Settings settingOf(std::string_view moduleName, SettingName name, std::string value) {
    return {std::string(moduleName), name, value, value, true};
}

/// Returns a text unchanged and a list of texts joined with ",".
std::optional<std::string> valueAt(const PositionalRow& row, std::size_t position) {
    if (auto text = row.read<std::string>(position)) return text;
    auto texts = row.read<std::vector<std::string>>(position);
    return texts ? std::optional(text::join(*texts, ",")) : std::nullopt;
}

/// Adds one pair of column and order per level. A level without a column or without an order is an empty text.
void addSortLevels(const PositionalRow& row, std::string_view moduleName, std::vector<Settings>& settings) {
    auto texts = row.read<std::vector<std::string>>(sortPosition);
    if (!texts) return;
    for (std::size_t level = 0; level < sortLevels.size() && level * 2 < texts->size(); ++level) {
        auto& column = (*texts)[level * 2];
        bool isPair = level * 2 + 1 < texts->size() && !column.empty();
        settings.push_back(
            settingOf(moduleName, sortLevels[level], isPair ? column + "," + (*texts)[level * 2 + 1] : std::string()));
    }
}

/// Returns false if the row does not name its module.
bool addModuleRow(const Value& entry, std::vector<Settings>& settings) {
    auto row = PositionalRow::open(entry, 1, PositionalRow::Mode::lenient);
    auto moduleName = row ? row->read<std::string>(0) : std::nullopt;
    if (!moduleName) return false;
    for (auto& [name, position] : modulePositions)
        if (auto value = valueAt(*row, position)) settings.push_back(settingOf(*moduleName, name, *std::move(value)));
    addSortLevels(*row, *moduleName, settings);
    auto maxReportees = row->read<std::string>(maxReporteesPosition);
    if (maxReportees && *moduleName == moduleWithReportees)
        settings.push_back(settingOf(*moduleName, SettingKey::maxReporteesCount, *maxReportees));
    return true;
}

/// The initial order of names differs from the server's.
Settings sortOrderPreference() {
    auto first = std::string(SettingsConstants::FirstNameKey), last = std::string(SettingsConstants::LastNameKey);
    return {std::string(SettingsConstants::applicationModule), SettingKey::sortOrderPreference, first + "," + last,
            last + "," + first, true};
}

}  // namespace

std::optional<std::vector<Settings>> InitSettingsParser::parse(const ValueList& data) {
    PositionalRow row(singleRow(data), PositionalRow::Mode::lenient);
    auto application = SettingsConstants::applicationModule;
    std::vector<Settings> settings;
    for (std::size_t position = 0; position < applicationTexts.size(); ++position)
        if (auto value = row.read<std::string>(position))
            settings.push_back(settingOf(application, applicationTexts[position], *std::move(value)));
    for (auto& entry : row.read<ValueList>(modulesPosition).value_or(ValueList()))
        if (!addModuleRow(entry, settings)) return std::nullopt;
    for (std::size_t list = 0; list < applicationLists.size(); ++list)
        if (auto texts = row.read<std::vector<std::string>>(modulesPosition + 1 + list))
            settings.push_back(settingOf(application, applicationLists[list], text::join(*texts, ",")));
    settings.push_back(sortOrderPreference());
    return settings;
}

}  // namespace tarvo
