#include "kelva_db/QueryBuilder.h"

#include "kelva_db/Database.h"
#include "kelva_db/internal/Sql.h"
#include "platform/Text.h"

namespace kelva {

UpdateQuery& UpdateQuery::set(const ValueMap& values) {
    values_.merge(values);
    return *this;
}

UpdateQuery& UpdateQuery::filter(std::string sql, ValueList parameters) {
    filters_.push_back(std::move(sql.insert(0, 1, '(').append(1, ')')));
    filterParameters_.insert(filterParameters_.end(), parameters.begin(), parameters.end());
    return *this;
}

std::string UpdateQuery::sql() const {
    std::vector<std::string> assignments;
    for (auto& entry : values_) assignments.push_back(quotedColumn(entry.name) + " = ?");
    auto sql = "UPDATE " + quotedName(table_) + " SET " + tarvo::text::join(assignments, ", ");
    if (!filters_.empty()) sql += " WHERE " + tarvo::text::join(filters_, " AND ");
    return sql;
}

ValueList UpdateQuery::parameters() const {
    ValueList parameters;
    for (auto& entry : values_) parameters.push_back(entry.value);
    parameters.insert(parameters.end(), filterParameters_.begin(), filterParameters_.end());
    return parameters;
}

}  // namespace kelva
