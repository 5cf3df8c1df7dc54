#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tarvobase/utils/OrderedDictionary.h"
#include "tarvobase/value_objects/field/MetadataInfoContract.h"

namespace tarvo {

/// The fields of one module with their picklists. The value never changes: copies are cheap and share their content,
/// and pointers into it stay valid as long as any copy lives. It keeps the naming that it was built with, so that a
/// switch of naming while an operation runs never mixes two. Any thread may use it.
class FieldList final : public MetadataInfoContract {
public:
    using Fields = OrderedDictionary<std::string, FieldMetadata>;

    /// Makes a list without fields.
    FieldList();
    /// Takes the fields in the order in which lists show them. If two fields have the same identifier, the first one
    /// stays.
    FieldList(std::string moduleName, std::vector<FieldMetadata> fields, std::vector<PicklistMetadata> picklists);
    FieldList(std::string moduleName, std::vector<FieldMetadata> fields, std::vector<PicklistMetadata> picklists,
              const FieldIdentifier& naming);

    const std::string& moduleName() const { return content_->moduleName; }
    const Fields& orderedFields() const { return content_->orderedFields; }
    /// Returns the fields that share their identifier with one of `orderedFields`, such as the subjects of tasks and of
    /// events in one table. Lists do not show them, but their values are stored in the same column.
    const std::vector<FieldMetadata>& fieldsOfSharedColumns() const { return content_->sharingFields; }
    const PicklistsByIdentifier& picklistIdentifierMap() const { return content_->picklistIdentifierMap; }
    /// Returns the naming that the identifiers follow.
    const FieldIdentifier& naming() const { return content_->naming; }
    const std::string& identifierOf(const Metadata& field) const { return field.fieldIdentifier(naming()); }

    const FieldMetadata* getField(const std::string& identifier) const override {
        return content_->orderedFields.find(identifier);
    }
    /// Finds the fields of shared columns too, after the others.
    const Metadata* getFieldByApiName(const std::string& apiName) const override;
    std::vector<const Metadata*> allFields() const override;
    const std::vector<PicklistMetadata>& getPicklist(const Metadata& field) const override;

    bool hasField(const std::string& identifier) const { return getField(identifier) != nullptr; }
    /// Returns whether the list has all of these fields.
    bool hasFields(const std::vector<std::string>& identifiers) const;
    /// Returns the lookups of one record and of several.
    std::vector<const Metadata*> getAllLookupFields() const;
    std::vector<const Metadata*> getAllDateAndDateTimeFields() const;

private:
    struct Content {
        std::string moduleName;
        Fields orderedFields;
        std::vector<FieldMetadata> sharingFields;
        PicklistsByIdentifier picklistIdentifierMap;
        FieldIdentifier naming;
    };
    std::shared_ptr<const Content> content_;
};

}  // namespace tarvo
