#include "tarvobase/value_objects/layout/SubformLayout.h"

#include "tarvobase/storage/StoredForm.h"

namespace tarvo {

namespace {

using InfoKeys = LayoutMetadata::Constant::AdditionalInfo;

const Value* additionalInfoOf(const LayoutMetadata& row, std::string_view key) {
    return row.additionalInfo ? row.additionalInfo->find(key) : nullptr;
}

/// Reads a member of `additionalInfo`, which is stored as the server sent it: typed, or as text.
template <class T>
T additionalInfoAs(const LayoutMetadata& row, std::string_view key) {
    auto value = additionalInfoOf(row, key);
    return value ? MemberCodec<T>::read(ValueView(*value), Form::table).value_or(T()) : T();
}

}  // namespace

std::optional<SubformLayoutMetadata> SubformLayoutMetadata::of(const LayoutMetadata& subformField) {
    auto module = isSubform(subformField.fieldType) ? subformField.getSubformModuleInfo() : std::nullopt;
    if (!module) return std::nullopt;
    auto reorderRows = additionalInfoOf(subformField, InfoKeys::reorderRows);
    return SubformLayoutMetadata{.layoutID = additionalInfoAs<std::string>(subformField, InfoKeys::subformLayoutId),
                                 .moduleAPIName = module->apiName,
                                 .moduleID = module->moduleID,
                                 .maximumRows = additionalInfoAs<int>(subformField, InfoKeys::maximumRows),
                                 .canReorderRows = reorderRows && reorderRows->toText() == "true"};
}

}  // namespace tarvo
