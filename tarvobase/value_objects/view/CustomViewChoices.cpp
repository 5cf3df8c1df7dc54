#include "tarvobase/value_objects/view/CustomViewChoices.h"

#include "tarvobase/storage/DatabasePersistanceClass.h"

namespace tarvo {

namespace {

constexpr const char *choiceViewId = "view_id", *choiceModule = "module_name", *choiceDefault = "is_default",
                     *choiceSortBy = "sort_by", *choiceSortOrder = "sort_order";

EnsuredTable::Declaration choiceTable() {
    return {.columns = {{choiceViewId, "TEXT"},
                        {choiceModule, "TEXT"},
                        {choiceDefault, "INTEGER"},
                        {choiceSortBy, "TEXT"},
                        {choiceSortOrder, "TEXT"}},
            .keys = std::string("UNIQUE (") + choiceViewId + ", " + choiceModule + ")"};
}

Criteria oneChoice(const std::string& viewID, const std::string& moduleName) {
    return Criteria::and_({columnIs(choiceViewId, viewID), columnIs(choiceModule, moduleName)});
}

}  // namespace

CustomViewChoices::CustomViewChoices(std::shared_ptr<DatabaseAdapter> databaseAdapter)
    : table_(std::move(databaseAdapter), "TARVO_VIEW_CHOICES", choiceTable()) {}

bool CustomViewChoices::setDefault(const std::string& viewID, const std::string& moduleName) const {
    auto clear = UpdateQuery(table_.name(), ValueMap{{choiceDefault, 0}}).filter(columnIs(choiceModule, moduleName));
    return table_.execute(clear) && set({{choiceDefault, 1}}, viewID, moduleName);
}

bool CustomViewChoices::setOrder(const SortField& order, const std::string& viewID,
                                 const std::string& moduleName) const {
    auto direction = rawText(order.isAscending ? SortOrder::ascending : SortOrder::descending);
    return set({{choiceSortBy, order.column}, {choiceSortOrder, std::string(direction)}}, viewID, moduleName);
}

bool CustomViewChoices::set(ValueMap columns, const std::string& viewID, const std::string& moduleName) const {
    RawQuery ensureRow(
        "INSERT OR IGNORE INTO " + table_.name() + " (" + choiceViewId + ", " + choiceModule + ") VALUES (?, ?)",
        {viewID, moduleName});
    return table_.execute(ensureRow) && table_.update(std::move(columns), oneChoice(viewID, moduleName));
}

std::optional<std::vector<CustomViewChoices::Choice>> CustomViewChoices::of(
    const std::vector<std::string>& moduleNames) const {
    auto rows = table_.fetch(columnIn(choiceModule, moduleNames));
    if (!rows) return std::nullopt;
    std::vector<Choice> choices;
    for (auto row : *rows) {
        auto text = [&](const char* column) -> std::optional<std::string> {
            auto value = row.valueOf(column);
            return value.asText() ? std::optional(std::string(*value.asText())) : std::nullopt;
        };
        choices.push_back({.viewID = text(choiceViewId).value_or(""),
                           .moduleName = text(choiceModule).value_or(""),
                           .isDefault = row.valueOf(choiceDefault).asInteger() == 1,
                           .sortBy = text(choiceSortBy),
                           .sortOrder = text(choiceSortOrder)});
    }
    return choices;
}

}  // namespace tarvo
