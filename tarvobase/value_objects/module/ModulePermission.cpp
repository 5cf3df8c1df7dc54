#include "tarvobase/value_objects/module/ModulePermission.h"

#include <algorithm>

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

bool PermissionList::hasPermission(PermissionKeys key) const {
    auto found = std::find_if(permissionList.begin(), permissionList.end(),
                              [&](auto& permission) { return permission.key == rawText(key); });
    return found != permissionList.end() && found->value;
}

template struct StoredNames<ModulePermissionConstants, ModulePermission>;

}  // namespace tarvo
