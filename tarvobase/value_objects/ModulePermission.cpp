#include "tarvobase/value_objects/ModulePermission.h"

#include <algorithm>

namespace tarvo {

namespace {

using P = ModulePermission;
using PermissionNames = ModulePermissionConstants;

const auto permissionForm = form<P, PermissionNames>(
    member(&P::moduleName, &PermissionNames::ModuleName), member(&P::moduleAPIName, &PermissionNames::ModuleAPIName),
    member(&P::key, &PermissionNames::Key), member(&P::value, &PermissionNames::Value));

}  // namespace

bool PermissionList::hasPermission(PermissionKeys key) const {
    auto found = std::find_if(permissionList.begin(), permissionList.end(),
                              [&](auto& permission) { return permission.key == rawText(key); });
    return found != permissionList.end() && found->value;
}

ValueMap ModulePermissionConstants::getDictionary(const ModulePermission& permission) const {
    return permissionForm.toMap(permission, *this, Form::plain);
}
ModulePermission ModulePermissionConstants::getValue(const ValueMap& map) const {
    return permissionForm.read(map, *this, Form::plain);
}
ValueMap ModulePermissionDatabaseConstants::getDictionary(const ModulePermission& permission) const {
    return permissionForm.toMap(permission, *this, Form::table);
}
ModulePermission ModulePermissionDatabaseConstants::getValue(const Row& row) const {
    return permissionForm.read(row, *this, Form::table);
}

}  // namespace tarvo
