#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"
#include "sandbox/data/Generator.h"

namespace tarvo::sandbox {

class DataSet;

/// Describes a saved filter of a module's list.
struct ViewData {
    std::string id;
    /// The module whose list it filters. Views of tasks, events and calls are views of "Activities" that name the
    /// kind of activity in their criteria.
    std::string module;
    /// The name by which clients know the view, for instance "Unread Cases".
    std::string name;
    /// The name that people read.
    std::string displayName;
    /// The heading under which a list of views shows it.
    std::string section;
    bool isDefault = false;
    /// False when only the server can judge the criteria.
    bool isOffline = true;
    /// The API name of the column that sorts the list; empty when the client chooses.
    std::string sortBy;
    bool isAscending = false;
    /// The API names of the columns that the list shows.
    std::vector<std::string> columns;
    /// Null for all records. Otherwise a node: a map of "field", "comparator", "value" and maybe "module", or a list of
    /// nodes with "and" or "or" between them. "${CURRENTUSER}" stands for the user who asks.
    Value criteria;
};

/// Makes the views of all modules. The views of each module come in the order in which they are shown.
std::vector<ViewData> makeViews(const DataSet& data, IdSequence& ids);

/// Returns whether the view belongs to the module's list: its own, and for tasks, events and calls those of
/// "Activities" that list such records.
bool isViewOf(const ViewData& view, std::string_view module);

/// Returns the criteria as an account receives them, with its user's id in place of "${CURRENTUSER}".
Value criteriaFor(const DataSet& data, const ViewData& view, std::string_view account);

}  // namespace tarvo::sandbox
