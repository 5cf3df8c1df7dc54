#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tarvobase/value_objects/field/MetadataInfoContract.h"
#include "tarvobase/value_objects/layout/LayoutMetadata.h"
#include "tarvobase/value_objects/layout/SubformMetadata.h"

namespace tarvo {

/// The fields of one layout; its subclasses are the shapes in which screens take them. Maps go by the identifier of the
/// field under the naming that the list was built with.
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
    /// In display order.
    virtual std::vector<const LayoutMetadata*> layoutFields() const = 0;
    std::vector<const Metadata*> allFields() const override;
    /// The fields of a section by its name, in display order.
    std::vector<const LayoutMetadata*> getFieldsInSection(const std::string& name) const;

    const std::vector<PicklistMetadata>& getPicklist(const Metadata& field) const override;
    /// Null for a field that is no subform, or one that the layout tells nothing about.
    const SubformMetadata* getSubformMetadata(const Metadata& field) const;
    std::optional<std::string> getSubformLayoutId(const Metadata& field) const;
};

}  // namespace tarvo
