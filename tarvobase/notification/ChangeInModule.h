#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// The kind of change in a module.
enum class ChangeInModule { ModulePermissionChanged, ModuleNameChanged, ModuleLayoutChanged, ModuleFieldsChanged };
template <>
struct EnumCases<ChangeInModule> {
    static constexpr EnumCase<ChangeInModule> cases[] = {
        {ChangeInModule::ModulePermissionChanged, "ModulePermissionChanged"},
        {ChangeInModule::ModuleNameChanged, "ModuleNameChanged"},
        {ChangeInModule::ModuleLayoutChanged, "ModuleLayoutChanged"},
        {ChangeInModule::ModuleFieldsChanged, "ModuleFieldsChanged"}};
};

}  // namespace tarvo
