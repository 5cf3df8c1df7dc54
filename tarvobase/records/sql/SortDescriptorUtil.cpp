#include "tarvobase/records/sql/SortDescriptorUtil.h"

#include <algorithm>
#include <utility>

#include "kelva_db/Database.h"
#include "platform/Text.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/metadata/ModuleInfo.h"
#include "tarvobase/records/RecordUtil.h"
#include "tarvobase/records/sql/SortFieldToSortDescriptor.h"
#include "tarvobase/utils/LogOnce.h"
#include "tarvobase/value_objects/naming/IdentifierConstants.h"

namespace tarvo {

namespace {

using kelva::quotedName;

/// Makes the order of one sort field and the columns that name its sections.
class SectionSort {
public:
    SectionSort(const ModuleInfo& module, const SortField& sortField, const FieldMetadata& field,
                const std::shared_ptr<DatabaseAdapter>& database)
        : module_(module),
          names_(*module.metadata.naming().constant),
          sortField_(sortField),
          field_(field),
          database_(database) {}

    SortDescriptorUtil::SortList fieldSpecificSort() const {
        auto& column = sortField_.column;
        if (field_.fieldType == FieldDataType::dateTime)
            return {{named("(" + quotedName(column) + " / 1000)", column)}, {plain()}};
        if (field_.fieldType == FieldDataType::currency) return {{}, {byBaseCurrency()}};
        if (field_.isLookupNameField() && hasNameParts()) return {{named(personName(), column)}, {bySection(column)}};
        if (isLookupField(field_.fieldType) || (field_.isLookupNameField() && hasColumn(getLookupColumn(column))))
            return {{named(quotedName(getLookupColumn(column)), column)}, {bySection(column)}};
        if (column == names_.fullName) return byName();
        if (field_.fieldType == FieldDataType::text && isName())
            return {{named(initial(column), column)}, {asText(column)}};
        return {{}, {plain()}};
    }

private:
    static std::string sectionName(const std::string& column) {
        return quotedName(column + std::string(sectionNameSuffix));
    }
    static SortDescriptorUtil::SelectColumn named(std::string expression, const std::string& column) {
        return {std::move(expression), sectionName(column)};
    }
    static std::string initial(const std::string& column) {
        return "COALESCE(UPPER(SUBSTR(" + quotedName(column) + ", 1, 1)), '#')";
    }
    std::string firstName() const { return sortField_.column + std::string(firstNameSuffix); }
    std::string lastName() const { return sortField_.column + std::string(lastNameSuffix); }
    std::string personName() const {
        return "(COALESCE(" + quotedName(firstName()) + ", '') || ' ' || COALESCE(" + quotedName(lastName()) + ", ''))";
    }
    /// Returns whether the table stores the first and the last name of a person, which the server decides. Without them
    /// the display text is the name.
    bool hasNameParts() const { return hasColumn(firstName()) && hasColumn(lastName()); }
    bool hasColumn(const std::string& column) const {
        if (!database_) return false;
        auto columns = database_->columnNames(RecordUtil::getTableName(module_.moduleName()));
        return std::any_of(columns.begin(), columns.end(),
                           [&](auto& name) { return text::equalsIgnoringAsciiCase(name, column); });
    }
    bool isName() const { return text::asciiLowercase(sortField_.column).find("name") != std::string::npos; }

    SortDescriptor plain() const { return SortFieldToSortDescriptor::plainDescriptor(sortField_, field_); }
    SortDescriptor asText(const std::string& column) const {
        return SortDescriptor({.colName = quotedName(column), .ascending = sortField_.isAscending});
    }
    SortDescriptor bySection(const std::string& column) const {
        return SortDescriptor({.colName = sectionName(column), .ascending = sortField_.isAscending});
    }

    /// Compares amounts in the base currency, whose rate is 1. A module with one currency has no rates.
    SortDescriptor byBaseCurrency() const {
        auto rate = std::string(names_.exchangeRate);
        auto term = "CAST(" + quotedName(sortField_.column) + " AS REAL)";
        if (module_.metadata.hasField(rate))
            term += " / COALESCE(NULLIF(CAST(" + quotedName(rate) + " AS REAL), 0), 1)";
        return SortDescriptor::customOrderBy("(" + term + ")" + (sortField_.isAscending ? " ASC" : " DESC"));
    }

    SortDescriptorUtil::SortList byName() const {
        std::string first(names_.firstName), second(names_.lastName);
        if (!module_.settings.isSortByFirstNameLastName()) std::swap(first, second);
        return {{named(initial(first), first)}, {asText(first), asText(second)}};
    }

    const ModuleInfo& module_;
    const IdentifierConstants& names_;
    const SortField& sortField_;
    const FieldMetadata& field_;
    const std::shared_ptr<DatabaseAdapter>& database_;
};

}  // namespace

SortDescriptorUtil::SortList SortDescriptorUtil::getSortList(const ModuleInfo& moduleInfo,
                                                             const std::vector<SortField>& sortFields,
                                                             const std::shared_ptr<DatabaseAdapter>& database) {
    SortList list;
    for (auto& sortField : sortFields) {
        auto field = moduleInfo.metadata.getField(sortField.column);
        if (!field) {
            logOnce("no field for the sort column " + sortField.column + " of " + moduleInfo.moduleName());
            continue;
        }
        auto [columns, descriptors] = SectionSort(moduleInfo, sortField, *field, database).fieldSpecificSort();
        list.columns.insert(list.columns.end(), columns.begin(), columns.end());
        list.descriptors.insert(list.descriptors.end(), descriptors.begin(), descriptors.end());
    }
    return list;
}

}  // namespace tarvo
