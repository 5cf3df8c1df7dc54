#include "tarvobase/records/DependentRecords.h"

#include <algorithm>

#include "platform/Text.h"
#include "tarvobase/get_metadata/GetFieldListDM.h"
#include "tarvobase/records/RecordConversion.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/value_objects/DatabasePersistanceClass.h"
#include "tarvobase/value_objects/IdentifierConstants.h"
#include "tarvobase/value_objects/ModuleInDatabase.h"
#include "tarvobase/value_objects/Tag.h"

namespace tarvo {

namespace {

/// The column of a dependent row that holds the id of the record it hangs on.
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

/// SQLite takes names in any case of letters for one column, and a row names each once.
void setParent(ValueMap& row, const std::string& id) {
    std::vector<std::string> same;
    for (auto& entry : row)
        if (isParentColumn(entry.name)) same.emplace_back(entry.name);
    for (auto& name : same) row.remove(name);
    row.set(parentColumn, id);
}

/// One row for each tag of a record.
std::vector<ValueMap> getTagRecords(const std::vector<ValueMap>& tags, const std::string& recordId,
                                    const std::string& moduleName) {
    constexpr TagRecordDBMapper columns;
    std::vector<ValueMap> rows;
    for (auto& tag : tags) {
        ValueMap row;
        if (auto id = tag.find("id")) row.set(columns.id, *id);
        if (auto name = tag.find("name")) row.set(columns.name, *name);
        row.set(columns.moduleName, moduleName);
        row.set(columns.recordId, recordId);
        rows.push_back(std::move(row));
    }
    return rows;
}

}  // namespace

void DependentRecords::store(const FieldList& fields, const Lists& lists) const {
    auto& moduleName = fields.moduleName();
    auto rule = ruleOf(moduleName);
    if (rule) storeRows(lists(rule->wireName), std::string(rule->dependentModule), true);
    bool isOfNotes = moduleName == rawText(ModuleIdentifier::Case::notes);
    if (isOfNotes)
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

/// A subform names its module by API name. Its rows go there when that module has a table.
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
    std::vector<ValueMap> rows;
    for (auto& list : lists) {
        recordIds.push_back(list.parentId);
        for (auto& row : getTagRecords(list.records, list.parentId, moduleName)) rows.push_back(std::move(row));
    }
    std::sort(recordIds.begin(), recordIds.end());
    recordIds.erase(std::unique(recordIds.begin(), recordIds.end()), recordIds.end());
    TableAccess table(databaseAdapter_, std::string(columns.tableName));
    table.deleteObjects(columnIn(columns.recordId, recordIds));
    table.storeAccepted(MapRowSource(rows));
}

}  // namespace tarvo
