#include "tarvobase/records/sql/DependentRecords.h"

#include <algorithm>
#include <span>
#include <utility>

#include "platform/Rows.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/Statements.h"
#include "tarvobase/metadata/GetFieldListDM.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/wire/RecordConversion.h"
#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"
#include "tarvobase/value_objects/tag/Tag.h"

namespace tarvo {

namespace {

/// The column of a dependent row that holds the id of its parent record.
constexpr std::string_view parentColumn = "record_id";
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

bool isParentColumn(std::string_view name) { return text::equalsIgnoringAsciiCase(name, parentColumn); }

/// Sets the parent column. SQLite ignores the case of column names, and a row must name each column only once.
void setParent(ValueMap& row, const std::string& id) {
    std::vector<std::string> same;
    for (auto& entry : row)
        if (isParentColumn(entry.name)) same.emplace_back(entry.name);
    for (auto& name : same) row.remove(name);
    row.set(parentColumn, id);
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

void DependentRecords::store(const FieldList& fields, const Lists& lists) const {
    auto& moduleName = fields.moduleName();
    auto rule = ruleOf(moduleName);
    if (rule) storeRows(lists(rule->wireName), std::string(rule->dependentModule), true);
    bool isNotesModule = moduleName == rawText(ModuleIdentifier::Case::notes);
    if (isNotesModule)
        storeRows(lists(FieldAPIConstant.Notes.attachments), std::string(rawText(ModuleIdentifier::Case::attachments)),
                  false);
    storeSubforms(fields, rule ? rule->wireName : std::string_view(), lists);
    storeTags(lists(tagList), moduleName);
}

void DependentRecords::storeRows(const std::vector<NestedRecords>& lists, const std::string& moduleName,
                                 bool withParent) const {
    if (lists.empty()) return;
    auto fields = fieldLists_.getFields(moduleName, std::nullopt);
    if (!fields) return;
    RecordConversion conversion(*fields);
    std::vector<ValueMap> rows;
    for (auto& list : lists)
        for (auto& record : list.records) {
            rows.push_back(conversion.toRow(record));
            if (withParent) setParent(rows.back(), list.parentId);
        }
    TableAccess(databaseAdapter_, RecordUtil::getTableName(moduleName)).storeAccepted(MapRowSource(rows));
}

/// Stores the rows of subforms. A subform names its module by API name; its rows are stored if that module has a
/// table.
void DependentRecords::storeSubforms(const FieldList& fields, std::string_view exceptWireName,
                                     const Lists& lists) const {
    for (auto field : fields.getFields(FieldDataType::subform)) {
        auto target = field->fieldAPIName == exceptWireName ? std::nullopt : field->getSubformModuleInfo();
        auto nested = target ? lists(field->fieldAPIName) : std::vector<NestedRecords>();
        if (nested.empty()) continue;
        ModuleDatabaseConstants constants;
        auto module = ModuleInDatabase(std::string(constants.TableName), databaseAdapter_, constants)
                          .getModuleByApiName(target->apiName);
        if (!module) continue;
        auto columns = databaseAdapter_->columnNames(RecordUtil::getTableName(module->moduleName));
        if (columns.empty()) continue;
        bool withParent = std::any_of(columns.begin(), columns.end(), isParentColumn);
        storeRows(nested, module->moduleName, withParent);
    }
}

void DependentRecords::storeTags(const std::vector<NestedRecords>& lists, const std::string& moduleName) const {
    if (lists.empty()) return;
    constexpr TagRecordDBMapper columns;
    std::vector<std::string> recordIds;
    for (auto& list : lists) recordIds.push_back(list.parentId);
    std::sort(recordIds.begin(), recordIds.end());
    recordIds.erase(std::unique(recordIds.begin(), recordIds.end()), recordIds.end());

    // The server's key of this table begins with the tag. Without our own index, every page of a download would scan
    // the tags of all pages before it.
    std::string tableName(columns.tableName);
    DeleteQuery former(tableName, columnIn(columns.recordId, recordIds));
    databaseAdapter_->execute({{"CREATE INDEX IF NOT EXISTS tarvo_tags_of_records ON " + tableName + " (" +
                                    std::string(columns.recordId) + ")",
                                std::nullopt},
                               {former.sql(), former.parameters()}});
    TableAccess(databaseAdapter_, tableName).storeAccepted(TagRows(lists, moduleName));
}

}  // namespace tarvo
