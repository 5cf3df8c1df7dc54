#pragma once

#include <string>
#include <vector>

#include "platform/Value.h"

namespace tarvo::sandbox {

/// Holds criteria as a condition made by the server, for clients that do not make conditions themselves: a text with
/// numbered placeholders, "(({0} = '{1}') and ({2} like '{3}'))", and what fills them, API names of fields and values
/// in turn.
struct ViewTemplate {
    std::string text;
    std::vector<std::string> pieces;
};

/// Returns an empty template for the view of all records. Criteria that only the server can judge get a condition that
/// cannot run, since an empty one would say that all records are listed.
ViewTemplate viewTemplate(const Value& criteria);

}  // namespace tarvo::sandbox
