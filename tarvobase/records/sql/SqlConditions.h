#pragma once

#include <string>
#include <string_view>

#include "tarvobase/database_layer/Criteria.h"

/// Writes conditions without parameters. Columns are passed as SQL; values become literals, so that any text means
/// itself.
namespace tarvo::sql_conditions {

/// Returns a column, qualified by the table unless that is empty, and quoted where a name needs it.
std::string column(std::string_view table, std::string_view name);

/// Returns the condition that a text column contains, begins or ends with a text. The case of ASCII letters is ignored;
/// percent signs and underscores stand for themselves. As with LIKE, neither form matches a null.
std::string like(const std::string& column, bool isNegated, Criteria::StringCriteria where, std::string_view value);

/// Returns the column as a number. Columns hold the server's texts, which would sort "10" below "9". A null or empty
/// text becomes NULL.
std::string number(const std::string& column);

}  // namespace tarvo::sql_conditions
