#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>

#include "tarvobase/metadata/Stores.h"

namespace tarvo {

class GetFieldListDM;

/// Tells the fields into which people write what they like from those that name records. A text of the former may look
/// like a temporary id: it holds up nothing, and stays as it was written. A field that is not known may name a record.
/// The fields of a module are read when it is first asked for. Use it on one thread, for one pass over a queue.
class FreeText {
public:
    /// Makes one that knows no field.
    FreeText() = default;
    explicit FreeText(const Stores& stores);

    /// Returns whether a field, by its API name, is free text.
    bool holds(const std::string& moduleName, std::string_view apiName) const;
    /// Returns the same for a column of the module's table.
    bool holdsColumn(const std::string& moduleName, std::string_view column) const;

private:
    struct Names {
        std::set<std::string, std::less<>> apiNames, columns;
    };
    const Names& namesOf(const std::string& moduleName) const;

    std::shared_ptr<GetFieldListDM> fieldLists_;
    mutable std::map<std::string, Names> known_;
};

}  // namespace tarvo
