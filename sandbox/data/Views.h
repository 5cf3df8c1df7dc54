#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/Value.h"
#include "sandbox/data/Generator.h"

namespace tarvo::sandbox {

class DataSet;

/// A saved filter of a module's list.
struct ViewData {
    std::string id;
    /// The module whose list it is made for. Views of tasks, events and calls are views of "Activities" that name the
    /// kind of activity in their criteria.
    std::string module;
    /// What a client knows the view by, for instance "Unread Cases".
    std::string name;
    /// What people read.
    std::string displayName;
    /// Heading under which a list of views shows it.
    std::string section;
    bool isDefault = false;
    /// False when the criteria hold what only the server can judge.
    bool isOffline = true;
    /// API name of the column that the list is sorted by; empty when it is left to the client.
    std::string sortBy;
    bool isAscending = false;
    /// API names of the columns that the list shows.
    std::vector<std::string> columns;
    /// Null for all records. Otherwise a node: a map of "field", "comparator", "value" and maybe "module", or a list of
    /// nodes with "and" or "or" between them. "${CURRENTUSER}" stands for the one who asks.
    Value criteria;
};

/// The views of all modules, each module's in the order in which they are shown.
std::vector<ViewData> makeViews(const DataSet& data, IdSequence& ids);

/// Whether the view is one of the module's list: its own, and for tasks, events and calls those of "Activities" that
/// list such records.
bool isViewOf(const ViewData& view, std::string_view module);

/// The criteria as they go out to an account: its user's id in place of "${CURRENTUSER}".
Value criteriaFor(const DataSet& data, const ViewData& view, std::string_view account);

}  // namespace tarvo::sandbox
