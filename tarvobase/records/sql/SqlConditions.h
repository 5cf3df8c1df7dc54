#pragma once

#include <string>
#include <string_view>

#include "tarvobase/database_layer/Criteria.h"

/// Conditions with values as SQL text, for where-texts without parameters. Columns are given as SQL takes them; values
/// become literals, so that any text means itself.
namespace tarvo::sql_conditions {

/// A column, behind the table when there is one, quoted where the names need it.
std::string column(std::string_view table, std::string_view name);

/// Whether a text column contains, begins or ends with a text. ASCII letters are equal in both cases, percent signs and
/// underscores stand for themselves. Like LIKE, neither form holds for a null.
std::string like(const std::string& column, bool isNegated, Criteria::StringCriteria where, std::string_view value);

/// The column as a number: columns hold the server's texts, which would sort "10" below "9". A null or empty text is
/// no number.
std::string number(const std::string& column);

}  // namespace tarvo::sql_conditions
