#include "tarvobase/value_objects/ModuleLayoutInfo.h"

namespace tarvo {

namespace {

using L = ModuleLayoutInfo;
using LayoutInfoNames = ModuleLayoutInfoConstants;

const auto layoutInfoForm = form<L, LayoutInfoNames>(
    member(&L::moduleName, &LayoutInfoNames::ModuleName), member(&L::layoutID, &LayoutInfoNames::LayoutID),
    member(&L::layoutName, &LayoutInfoNames::LayoutName), member(&L::isAccessible, &LayoutInfoNames::IsAccessible),
    member(&L::isDefault, &LayoutInfoNames::IsDefault));

}  // namespace

ValueMap ModuleLayoutInfoConstants::getDictionary(const ModuleLayoutInfo& layout) const {
    return layoutInfoForm.toMap(layout, *this, Form::plain);
}
ModuleLayoutInfo ModuleLayoutInfoConstants::getValue(const ValueMap& map) const {
    return layoutInfoForm.read(map, *this, Form::plain);
}
ValueMap ModuleLayoutInfoDatabaseConstants::getDictionary(const ModuleLayoutInfo& layout) const {
    return layoutInfoForm.toMap(layout, *this, Form::table);
}
ModuleLayoutInfo ModuleLayoutInfoDatabaseConstants::getValue(const Row& row) const {
    return layoutInfoForm.read(row, *this, Form::table);
}

}  // namespace tarvo
