#pragma once

#include <string>
#include <unordered_map>
#include <vector>

#include "tarvobase/value_objects/field/FieldMetadata.h"
#include "tarvobase/value_objects/field/PicklistMetadata.h"

namespace tarvo {

/// The rows of picklists by the identifier of their field.
using PicklistsByIdentifier = std::unordered_map<std::string, std::vector<PicklistMetadata>>;

/// Groups the rows by the identifier of their field under `naming`. Each list keeps the given order.
PicklistsByIdentifier picklistsByIdentifier(std::vector<PicklistMetadata> picklists, const FieldIdentifier& naming);

/// The interface through which the formatter and the validator of records read fields, whether those of a module or of
/// one layout. Pointers to fields and rows are valid as long as the list.
class MetadataInfoContract {
public:
    virtual ~MetadataInfoContract() = default;

    /// Returns null if there is no such field.
    virtual const Metadata* getField(const std::string& identifier) const = 0;
    virtual const Metadata* getFieldByApiName(const std::string& apiName) const;
    /// Returns the fields in the order of the list.
    virtual std::vector<const Metadata*> allFields() const = 0;
    /// Returns the fields that are shown in every given mode.
    std::vector<const Metadata*> getAllFields(DisplayMode with) const;
    std::vector<const Metadata*> getFields(FieldDataType type) const;

    /// Returns the allowed values of a field; the list is empty if it has none.
    virtual const std::vector<PicklistMetadata>& getPicklist(const Metadata& field) const = 0;
    const std::vector<PicklistMetadata>& getPicklistByApiName(const std::string& apiName) const;
    /// Returns the first row with this value, or with this label; null if there is none.
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
