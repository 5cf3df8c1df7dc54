#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/field/PicklistMetadata.h"

namespace tarvo {

/// Rows of picklists by the identifier of their field.
using PicklistsByIdentifier = std::unordered_map<std::string, std::vector<PicklistMetadata>>;

/// The rows by the identifier of their field under a naming, each list in the order given.
PicklistsByIdentifier picklistsByIdentifier(std::vector<PicklistMetadata> picklists, const FieldIdentifier& naming);

/// What the formatter and the validator of records ask of fields, be they those of a module or of one layout. Fields
/// and rows are handed out where they lie: they are valid as long as the list.
class MetadataInfoContract {
public:
    virtual ~MetadataInfoContract() = default;

    /// Null when there is no such field.
    virtual const Metadata* getField(const std::string& identifier) const = 0;
    const Metadata* getFieldByApiName(const std::string& apiName) const;
    /// In the order of the list.
    virtual std::vector<const Metadata*> allFields() const = 0;
    /// The fields that are shown in every wanted mode.
    std::vector<const Metadata*> getAllFields(DisplayMode with) const;
    std::vector<const Metadata*> getFields(FieldDataType type) const;

    /// The allowed values of a field; empty for one that has none.
    virtual const std::vector<PicklistMetadata>& getPicklist(const Metadata& field) const = 0;
    const std::vector<PicklistMetadata>& getPicklistByApiName(const std::string& apiName) const;
    /// The first row with this value, or with this label; null when there is none.
    const PicklistMetadata* getPicklistByActualValue(const Metadata& field, std::string_view actualValue) const;
    const PicklistMetadata* getPicklistByDisplayValue(const Metadata& field, std::string_view displayValue) const;

protected:
    MetadataInfoContract() = default;
    MetadataInfoContract(const MetadataInfoContract&) = default;
    MetadataInfoContract& operator=(const MetadataInfoContract&) = default;
    static const std::vector<PicklistMetadata>& picklistIn(const PicklistsByIdentifier& picklists,
                                                           const std::string& identifier);
};

}  // namespace tarvo
