#include "tarvobase/records/sql/DependentRecords.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/Rows.h"
#include "platform/Text.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/utils/LogOnce.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo {

namespace {

constexpr std::string_view tagList = "Tag";

struct Rule {
    std::string_view module;
    std::string_view wireName;
    std::string_view dependentModule;
};

constexpr Rule rules[] = {{"Events", FieldAPIConstant.Events.participants, "EventInvitees"},
                          {"PriceBooks", FieldAPIConstant.PriceBooks.pricingDetails, "PriceBookPricing"},
                          {"Cases", FieldAPIConstant.comments, "CustomerModuleComments"},
                          {"Solutions", FieldAPIConstant.comments, "CustomerModuleComments"},
                          {"Invoices", FieldAPIConstant.productDetails, "InventoryProducts"},
                          {"Quotes", FieldAPIConstant.productDetails, "InventoryProducts"},
                          {"PurchaseOrders", FieldAPIConstant.productDetails, "InventoryProducts"},
                          {"SalesOrders", FieldAPIConstant.productDetails, "InventoryProducts"}};

const Rule* ruleOf(std::string_view module) {
    auto found = std::find_if(std::begin(rules), std::end(rules), [&](auto& rule) { return rule.module == module; });
    return found == std::end(rules) ? nullptr : found;
}

bool isParentColumn(std::string_view name) {
    return text::equalsIgnoringAsciiCase(name, DependentRecords::parentColumn);
}

/// Sets the parent column. SQLite ignores the case of column names, and a row must name each column only once.
void setParent(ValueMap& row, const std::string& id) {
    std::vector<std::string> same;
    for (auto& entry : row)
        if (isParentColumn(entry.name)) same.emplace_back(entry.name);
    for (auto& name : same) row.remove(name);
    row.set(DependentRecords::parentColumn, id);
}

bool hasTable(DatabaseAdapter& databaseAdapter, const std::string& name) {
    if (!databaseAdapter.columnNames(name).empty()) return true;
    logOnce("the database has no table " + name + ": its rows are left out");
    return false;
}

/// Returns whether a table exists and its rows name their parent.
bool hasParentColumn(DatabaseAdapter& databaseAdapter, const std::string& table) {
    auto columns = databaseAdapter.columnNames(table);
    return std::any_of(columns.begin(), columns.end(), isParentColumn);
}

/// Returns the module whose records are the rows of a subform. A subform names it by API name.
std::optional<Module> subformModule(const FieldMetadata& field, const std::shared_ptr<DatabaseAdapter>& adapter) {
    auto target = field.getSubformModuleInfo();
    if (!target) return std::nullopt;
    ModuleDatabaseConstants constants;
    ModuleInDatabase modules(std::string(constants.TableName), adapter, constants);
    auto module = modules.getModuleByApiName(target->apiName);
    return module ? std::optional(std::move(module).value()) : std::nullopt;
}

/// One row per tag of each record, read in place. The lists and the name must outlive it.
class TagRows final : public RowSource {
public:
    TagRows(const std::vector<NestedRecords>& lists, const std::string& moduleName) : moduleName_(moduleName) {
        for (auto& list : lists)
            for (auto& tag : list.records) rows_.push_back({&tag, &list.parentId});
    }
    std::span<const std::string> columns() const override { return columns_; }
    std::size_t rowCount() const override { return rows_.size(); }
    ValueView cell(std::size_t row, std::size_t column) const override {
        auto& [tag, parentId] = rows_[row];
        if (column == 2) return ValueView::text(moduleName_);
        if (column == 3) return ValueView::text(*parentId);
        auto value = tag->find(column == 0 ? "id" : "name");
        return value ? ValueView(*value) : ValueView();
    }

private:
    static constexpr TagRecordDBMapper names_{};
    const std::string columns_[4] = {std::string(names_.id), std::string(names_.name), std::string(names_.moduleName),
                                     std::string(names_.recordId)};
    const std::string& moduleName_;
    std::vector<std::pair<const ValueMap*, const std::string*>> rows_;
};

}  // namespace

DependentRecords::DependentRecords(std::shared_ptr<DatabaseAdapter> databaseAdapter, const GetFieldListDM& fieldLists,
                                   const FieldList& fields, const Lists& lists)
    : databaseAdapter_(std::move(databaseAdapter)), moduleName_(fields.moduleName()) {
    if (!databaseAdapter_) return;
    auto rule = ruleOf(moduleName_);
    if (rule) addRows(fieldLists, lists(rule->wireName), std::string(rule->dependentModule), true);
    bool isNotesModule = moduleName_ == rawText(ModuleIdentifier::Case::notes);
    if (isNotesModule)
        addRows(fieldLists, lists(FieldAPIConstant.Notes.attachments),
                std::string(rawText(ModuleIdentifier::Case::attachments)), false);
    addSubforms(fieldLists, fields, rule ? rule->wireName : std::string_view(), lists);
    tags_ = lists(tagList);
}

void DependentRecords::keepOnly(const std::unordered_set<std::string>& recordIds) {
    for (auto& table : tables_) {
        std::size_t kept = 0;
        for (std::size_t row = 0; row < table.rows.size(); ++row) {
            if (!recordIds.contains(table.parentIds[row])) continue;
            if (kept != row) {
                table.rows[kept] = std::move(table.rows[row]);
                table.parentIds[kept] = std::move(table.parentIds[row]);
            }
            ++kept;
        }
        table.rows.resize(kept);
        table.parentIds.resize(kept);
    }
    std::erase_if(tags_, [&](auto& list) { return !recordIds.contains(list.parentId); });
}

bool DependentRecords::store() const {
    for (auto& table : tables_)
        if (!TableAccess(databaseAdapter_, table.name).storeAccepted(MapRowSource(table.rows))) return false;
    return storeTags();
}

void DependentRecords::addRows(const GetFieldListDM& fieldLists, const std::vector<NestedRecords>& lists,
                               const std::string& moduleName, bool withParent) {
    auto tableName = RecordUtil::getTableName(moduleName);
    if (lists.empty() || !hasTable(*databaseAdapter_, tableName)) return;
    auto fields = fieldLists.getFields(moduleName, std::nullopt);
    if (!fields) return;
    RecordConversion conversion(*fields);
    Table table{std::move(tableName), {}, {}};
    for (auto& list : lists)
        for (auto& record : list.records) {
            table.rows.push_back(conversion.toRow(record));
            table.parentIds.push_back(list.parentId);
            if (withParent) setParent(table.rows.back(), list.parentId);
        }
    tables_.push_back(std::move(table));
}

/// Adds the rows of subforms. Rows are stored if the subform's module has a table.
void DependentRecords::addSubforms(const GetFieldListDM& fieldLists, const FieldList& fields,
                                   std::string_view exceptWireName, const Lists& lists) {
    for (auto field : fields.getFields(FieldDataType::subform)) {
        bool isTaken = field->fieldAPIName == exceptWireName || !field->getSubformModuleInfo();
        auto nested = isTaken ? std::vector<NestedRecords>() : lists(field->fieldAPIName);
        auto module = nested.empty() ? std::nullopt : subformModule(*field, databaseAdapter_);
        if (!module) continue;
        auto table = RecordUtil::getTableName(module->moduleName);
        if (databaseAdapter_->columnNames(table).empty()) continue;
        addRows(fieldLists, nested, module->moduleName, hasParentColumn(*databaseAdapter_, table));
    }
}

std::vector<std::string> DependentRecords::tablesWithParent(const std::shared_ptr<DatabaseAdapter>& databaseAdapter,
                                                            const FieldList& fields) {
    std::vector<std::string> tables;
    auto add = [&](std::string_view moduleName) {
        auto table = RecordUtil::getTableName(moduleName);
        if (hasParentColumn(*databaseAdapter, table)) tables.push_back(std::move(table));
    };
    if (auto rule = ruleOf(fields.moduleName())) add(rule->dependentModule);
    for (auto field : fields.getFields(FieldDataType::subform))
        if (auto module = subformModule(*field, databaseAdapter)) add(module->moduleName);
    return tables;
}

bool DependentRecords::storeTags() const {
    constexpr TagRecordDBMapper columns;
    std::string tableName(columns.tableName);
    if (tags_.empty() || !hasTable(*databaseAdapter_, tableName)) return true;
    std::vector<std::string> recordIds;
    for (auto& list : tags_) recordIds.push_back(list.parentId);
    std::sort(recordIds.begin(), recordIds.end());
    recordIds.erase(std::unique(recordIds.begin(), recordIds.end()), recordIds.end());
    TableAccess table(databaseAdapter_, tableName);
    return table.deleteObjects(columnIn(columns.recordId, recordIds)) &&
           table.storeAccepted(TagRows(tags_, moduleName_)).has_value();
}

// The server's key of this table begins with the tag. Without our own index, every page of a download would scan the
// tags of all pages before it.
bool DependentRecords::isListOfRows(std::string_view moduleName, const FieldMetadata& field) {
    auto rule = ruleOf(moduleName);
    return isSubform(field.fieldType) || field.fieldType == FieldDataType::eventParticipant ||
           (rule && rule->wireName == field.fieldAPIName);
}

bool DependentRecords::createIndexes(DatabaseAdapter& databaseAdapter) {
    constexpr TagRecordDBMapper columns;
    std::string tableName(columns.tableName);
    if (!hasTable(databaseAdapter, tableName)) return true;
    return databaseAdapter.execute(
        "CREATE INDEX IF NOT EXISTS tarvo_tags_of_records ON " + tableName + " (" + std::string(columns.recordId) + ")",
        std::nullopt);
}

}  // namespace tarvo
