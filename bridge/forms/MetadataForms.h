#pragma once

#include "bridge/forms/JsonForm.h"
#include "tarvobase/get_metadata/GetLayoutMetadataUC.h"
#include "tarvobase/value_objects/account/User.h"
#include "tarvobase/value_objects/layout/Layout.h"

/// The JSON forms of fields and layouts.
namespace tarvo::bridge {

/// The bits of a display mode as a number: 1 display, 2 edit, 4 create.
template <>
struct JsonForm<DisplayMode> {
    static Value write(DisplayMode mode) { return mode.rawValue; }
    static Reading read(const Value& json, DisplayMode& into) { return fromJson(json, into.rawValue); }
};

/// Returns the picklists of fields by identifier. Fields without picklist rows are left out.
template <class List>
Value picklistsOf(const List& list, const std::vector<const Metadata*>& fields, const FieldIdentifier& naming) {
    ValueMap picklists;
    for (auto field : fields)
        if (auto& rows = list.getPicklist(*field); !rows.empty())
            picklists.set(field->fieldIdentifier(naming), toJson(rows));
    return picklists;
}

template <>
struct JsonForm<FieldList> {
    static Value write(const FieldList& list) {
        ValueList fields;
        for (auto field : list.allFields()) fields.push_back(toJson(*field));
        return ValueMap{{"moduleName", toJson(list.moduleName())},
                        {"fields", std::move(fields)},
                        {"picklists", picklistsOf(list, list.allFields(), list.naming())}};
    }
};

/// Modules are written in full, their fields and users by identifier, since a layout may hold dozens of lookups.
template <>
struct JsonForm<LayoutMetadata::LookupData> {
    static Value write(const LayoutMetadata::LookupData& data) {
        if (auto lookup = data.lookup())
            return ValueMap{{"lookup", ValueMap{{"modules", toJson(lookup->modules)}, {"fields", fieldsOf(*lookup)}}}};
        auto users = data.ownerLookup()->users;
        if (!users) return ValueMap{{"ownerLookup", Value()}};
        ValueList ids;
        for (auto& user : *users) ids.push_back(toJson(user.id));
        return ValueMap{{"ownerLookup", std::move(ids)}};
    }

private:
    static ValueList fieldsOf(const LayoutMetadata::LookupData::Lookup& lookup) {
        ValueList lists;
        for (auto& list : lookup.fields) lists.push_back(list ? Value(list->orderedFields().keys()) : Value());
        return lists;
    }
};

template <>
struct JsonForm<LayoutMetadata> {
    static Value write(const LayoutMetadata& row) {
        ValueMap map;
        forEachField(row, [&](std::string_view name, const auto& member) {
            auto json = toJson(member);
            if (!json.isNull()) map.set(name, std::move(json));
        });
        if (row.addData) map.set("addData", toJson(*row.addData));
        return map;
    }
};

template <>
struct JsonForm<OrderedLayoutFieldList> {
    static Value write(const OrderedLayoutFieldList& list) {
        ValueList fields;
        ValueMap subforms;
        for (auto row : list.layoutFields()) {
            fields.push_back(toJson(*row));
            if (auto subform = list.getSubformMetadata(*row))
                subforms.set(row->fieldIdentifier(list.naming), toJson(*subform));
        }
        return ValueMap{{"moduleName", toJson(list.moduleName)},
                        {"layoutId", toJson(list.layoutId)},
                        {"fields", std::move(fields)},
                        {"picklists", picklistsOf(list, list.allFields(), list.naming)},
                        {"subforms", std::move(subforms)}};
    }
};

template <class T>
struct JsonForm<Layout<T>> {
    static Value write(const Layout<T>& layout) {
        return ValueMap{{"moduleName", toJson(layout.moduleName)},
                        {"layoutID", toJson(layout.layoutID)},
                        {"layoutName", toJson(layout.layoutName)},
                        {"isDefault", layout.isDefault},
                        {"metadata", toJson(layout.metadata)}};
    }
};

/// The layouts in their order.
template <class T>
struct JsonForm<LayoutInfo<T>> {
    static Value write(const LayoutInfo<T>& info) { return toJson(info.getAllLayouts()); }
};

/// `{"header":{..}}` or `{"item":{..}}`.
template <>
struct JsonForm<LinearLayoutMetadataItemType> {
    static Value write(const LinearLayoutMetadataItemType& line) {
        if (auto header = line.header())
            return ValueMap{{"header", ValueMap{{"sequence", header->sequence}, {"name", toJson(header->name)}}}};
        return ValueMap{{"item", toJson(*line.item())}};
    }
};

/// Sections by their sequence, written as text.
template <>
struct JsonForm<std::map<int, std::vector<LayoutMetadata>>> {
    static Value write(const std::map<int, std::vector<LayoutMetadata>>& sections) {
        ValueMap map;
        for (auto& [sequence, rows] : sections) map.set(std::to_string(sequence), toJson(rows));
        return map;
    }
};

/// The layouts under the name of their form.
template <>
struct JsonForm<LayoutResponseType> {
    static Value write(const LayoutResponseType& layouts) {
        if (auto linear = layouts.linear()) return ValueMap{{"linear", toJson(*linear)}};
        if (auto sectioned = layouts.sectioned()) return ValueMap{{"sectioned", toJson(*sectioned)}};
        return ValueMap{{"orderedList", toJson(*layouts.orderedList())}};
    }
};

}  // namespace tarvo::bridge
