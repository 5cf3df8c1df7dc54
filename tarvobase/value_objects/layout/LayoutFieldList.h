#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tarvobase/value_objects/field/MetadataInfoContract.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"
#include "tarvobase/value_objects/layout/SubformMetadata.h"

namespace tarvo {

/// The fields of one layout. The subclasses are the shapes that screens read. The keys of maps are identifiers of
/// fields under the naming that the list was built with.
class LayoutFieldList : public MetadataInfoContract {
public:
    using SubformInfo = std::unordered_map<std::string, SubformMetadata>;

    LayoutFieldList(std::string moduleName, std::string layoutId, PicklistsByIdentifier fieldPicklists,
                    SubformInfo subformInfo, const FieldIdentifier& naming)
        : moduleName(std::move(moduleName)),
          layoutId(std::move(layoutId)),
          fieldPicklists(std::move(fieldPicklists)),
          subformInfo(std::move(subformInfo)),
          naming(naming) {}

    std::string moduleName;
    std::string layoutId;
    PicklistsByIdentifier fieldPicklists;
    SubformInfo subformInfo;
    FieldIdentifier naming;

    const LayoutMetadata* getField(const std::string& identifier) const override = 0;
    /// Returns the fields in display order.
    virtual std::vector<const LayoutMetadata*> layoutFields() const = 0;
    std::vector<const Metadata*> allFields() const override;
    /// Returns the fields of the section with this name, in display order.
    std::vector<const LayoutMetadata*> getFieldsInSection(const std::string& name) const;

    const std::vector<PicklistMetadata>& getPicklist(const Metadata& field) const override;
    /// Returns null if the field is not a subform or the layout says nothing about it.
    const SubformMetadata* getSubformMetadata(const Metadata& field) const;
    std::optional<std::string> getSubformLayoutId(const Metadata& field) const;
};

}  // namespace tarvo
