#pragma once

#include <string>
#include <vector>

#include "platform/Value.h"

namespace tarvo::sandbox {

/// Criteria in the server's own form, for clients that leave the making of conditions to it: a condition with numbered
/// holes, "(({0} = '{1}') and ({2} like '{3}'))", and what fills them, API names of fields and values in turn.
struct ViewTemplate {
    std::string text;
    std::vector<std::string> pieces;
};

/// Empty for the view of all records. Criteria that only the server can judge have a condition too, one that nobody can
/// run: an empty one would say that all records are listed.
ViewTemplate viewTemplate(const Value& criteria);

}  // namespace tarvo::sandbox
