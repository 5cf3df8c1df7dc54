#include "tarvobase/value_objects/ModuleLayoutInfo.h"

namespace tarvo {

namespace {

using L = ModuleLayoutInfo;
using Names = ModuleLayoutInfoConstants;

const auto layoutInfoForm =
    form<L, Names>(member(&L::moduleName, &Names::ModuleName), member(&L::layoutID, &Names::LayoutID),
                   member(&L::layoutName, &Names::LayoutName), member(&L::isAccessible, &Names::IsAccessible),
                   member(&L::isDefault, &Names::IsDefault));

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
