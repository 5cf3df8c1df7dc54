#pragma once

#include <optional>
#include <string>
#include <vector>

#include "tarvobase/storage/EnsuredTable.h"
#include "tarvobase/value_objects/view/FilterProtocol.h"

namespace tarvo {

/// What the user chose for views here: a default view per module, and the order of a view. No server knows it, so it
/// has a table of its own beside the views, which the server's rows replace with each sync. Writes return whether they
/// were stored; a caller joins their statements in one transaction. Any thread may use it.
class CustomViewChoices {
public:
    struct Choice {
        std::string viewID;
        std::string moduleName;
        bool isDefault = false;
        std::optional<std::string> sortBy{}, sortOrder{};  ///< both or neither
    };

    /// The adapter may be null.
    explicit CustomViewChoices(std::shared_ptr<DatabaseAdapter> databaseAdapter);

    bool setDefault(const std::string& viewID, const std::string& moduleName) const;
    bool setOrder(const SortField& order, const std::string& viewID, const std::string& moduleName) const;
    /// Returns the choices for the views of modules, or nullopt if the database cannot be read.
    std::optional<std::vector<Choice>> of(const std::vector<std::string>& moduleNames) const;

private:
    bool set(ValueMap columns, const std::string& viewID, const std::string& moduleName) const;

    EnsuredTable table_;
};

}  // namespace tarvo
