#pragma once

#include <array>
#include <string>
#include <string_view>

#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

class Record;

/// Suffixes and separators of the keys of records.
inline constexpr std::string_view lookupSuffix = "_LOOKUP";
inline constexpr std::string_view firstNameSuffix = "_FIRSTNAME";
inline constexpr std::string_view lastNameSuffix = "_LASTNAME";
/// Suffix of the key that holds the ids of a multi-select lookup, joined by ",".
inline constexpr std::string_view lookupDataSuffix = "#TarvoSeparator#Data#TarvoSeparator#";
/// Separates the pieces of compound texts.
inline constexpr std::string_view separatorString = "#TarvoSeparator#";

/// Encode and decode the commas of a text that is joined with others by commas, so that it is split where it was
/// joined.
std::string withEncodedCommas(std::string_view text);
std::string withDecodedCommas(std::string_view text);

/// Returns the name of the column that holds the display text of a lookup.
inline std::string getLookupColumn(std::string_view column) { return std::string(column).append(lookupSuffix); }

/// Keys that no metadata describes.
struct RecordConstants {
    struct FieldAPINames {
        static constexpr std::string_view Id = "id";
        static constexpr std::string_view Layout = "Layout";
        static constexpr std::string_view activityType = "Activity Type";
        static constexpr std::string_view currency = "currency";
        static constexpr std::string_view seModule = "se_module";
        static constexpr std::string_view CreatedTime = "Created_Time";
    };
    struct RelatedFieldNames {
        static constexpr std::string_view activityType = "Host_or_Participant";
    };
    struct NewRecordIdentifier {
        /// Matches the ids that the queue of changes gives to new records.
        static constexpr std::string_view regex = "NEW_\\d{9}";
    };
};

/// Derives names from a module's name. May be called from any thread.
struct RecordUtil {
    /// Returns the record table of a module: its name and "Records", except for approvals.
    static std::string getTableName(std::string_view moduleName);
    /// Returns the table of a module's search tokens.
    static std::string getSearchTableName(std::string_view moduleName);
    /// Returns the column that identifies a record of a module, in the given naming or in the one in force.
    static std::string_view getIdentifierFieldName(std::string_view forModule, const FieldIdentifier& naming);
    static std::string_view getIdentifierFieldName(std::string_view forModule);
    static std::string_view getIdentifierFieldName(const ModuleIdentifier& forModule);

    /// Returns whether the id is exactly "NEW_" and nine digits.
    static bool isNewRecord(std::string_view recordId) { return isNewRecordId(recordId); }
    static bool isNewRecord(const Record& record);
};

}  // namespace tarvo
