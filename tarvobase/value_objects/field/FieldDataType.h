#pragma once

#include "platform/Describe.h"

namespace tarvo {

/// The data type of a field. The raw text is the server's name for it.
enum class FieldDataType {
    autonumber,
    bigInt,
    boolean,
    currency,
    date,
    dateTime,
    decimal,
    double_,
    email,
    fileupload,
    formula,
    eventRemainder,
    integer,
    lookup,
    multiSelectPicklist,
    multiselectlookup,
    ownerlookup,
    phone,
    picklist,
    text,
    textArea,
    userLookup,
    website,
    activityType,
    none,
    file,
    alarm,
    consent_lookup,
    profileImage,
    subform,
    eventParticipant,
    unknown
};

template <>
struct EnumCases<FieldDataType> {
    using T = FieldDataType;
    static constexpr EnumCase<T> cases[] = {{T::autonumber, "autonumber"},
                                            {T::bigInt, "bigInt", "bigint"},
                                            {T::boolean, "boolean"},
                                            {T::currency, "currency"},
                                            {T::date, "date"},
                                            {T::dateTime, "dateTime", "datetime"},
                                            {T::decimal, "decimal"},
                                            {T::double_, "double"},
                                            {T::email, "email"},
                                            {T::fileupload, "fileupload"},
                                            {T::formula, "formula"},
                                            {T::eventRemainder, "eventRemainder", "event_reminder"},
                                            {T::integer, "integer"},
                                            {T::lookup, "lookup"},
                                            {T::multiSelectPicklist, "multiSelectPicklist", "multiselectpicklist"},
                                            {T::multiselectlookup, "multiselectlookup"},
                                            {T::ownerlookup, "ownerlookup"},
                                            {T::phone, "phone"},
                                            {T::picklist, "picklist"},
                                            {T::text, "text"},
                                            {T::textArea, "textArea", "textarea"},
                                            {T::userLookup, "userLookup", "userlookup"},
                                            {T::website, "website"},
                                            {T::activityType, "activityType"},
                                            {T::none, "none", ""},
                                            {T::file, "file", "RRULE"},
                                            {T::alarm, "alarm", "ALARM"},
                                            {T::consent_lookup, "consent_lookup"},
                                            {T::profileImage, "profileImage", "profileimage"},
                                            {T::subform, "subform"},
                                            {T::eventParticipant, "eventParticipant", "event_participant"},
                                            {T::unknown, "unknown", " - "}};
};

/// The scalar type of a field's value. Dates count as 64-bit integers.
enum class FieldScalarType { text, integer, integer64, real, boolean };

constexpr FieldScalarType getType(FieldDataType type) {
    switch (type) {
        case FieldDataType::bigInt:
        case FieldDataType::date:
        case FieldDataType::dateTime:
            return FieldScalarType::integer64;
        case FieldDataType::boolean:
        case FieldDataType::eventRemainder:
            return FieldScalarType::boolean;
        case FieldDataType::currency:
        case FieldDataType::decimal:
        case FieldDataType::double_:
            return FieldScalarType::real;
        case FieldDataType::integer:
            return FieldScalarType::integer;
        default:
            return FieldScalarType::text;
    }
}

/// Returns whether a column of this type sorts as a number. Big integers do not.
constexpr bool isNumeric(FieldDataType type) {
    return getType(type) == FieldScalarType::real || getType(type) == FieldScalarType::integer;
}
constexpr bool isLookupField(FieldDataType type) {
    return type == FieldDataType::lookup || type == FieldDataType::userLookup || type == FieldDataType::ownerlookup;
}
constexpr bool isDate(FieldDataType type) { return type == FieldDataType::date || type == FieldDataType::dateTime; }
constexpr bool isPickListField(FieldDataType type) { return type == FieldDataType::picklist; }
constexpr bool isSubform(FieldDataType type) { return type == FieldDataType::subform; }

}  // namespace tarvo
