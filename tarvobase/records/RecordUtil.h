#pragma once

#include <array>
#include <string>
#include <string_view>

#include "tarvobase/configuration/FieldIdentifier.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/value_objects/naming/ModuleIdentifier.h"

namespace tarvo {

class Record;

/// Suffixes and joiners of the keys of records.
inline constexpr std::string_view lookupSuffix = "_LOOKUP";
inline constexpr std::string_view firstNameSuffix = "_FIRSTNAME";
inline constexpr std::string_view lastNameSuffix = "_LASTNAME";
/// Behind the key of a lookup of several records: the ids joined by ",".
inline constexpr std::string_view lookupDataSuffix = "#TarvoSeparator#Data#TarvoSeparator#";
/// Joins compound texts.
inline constexpr std::string_view separatorString = "#TarvoSeparator#";

/// The column beside a lookup that holds what is shown for it.
inline std::string getLookupColumn(std::string_view column) { return std::string(column).append(lookupSuffix); }

/// Keys that are known by their text alone.
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
        /// The ids that the queue of changes gives to new records, as a regular expression.
        static constexpr std::string_view regex = "NEW_\\d{9}";
    };
};

/// Names that follow from a module's name. From any thread.
struct RecordUtil {
    /// The record table of a module: its name and "Records"; approvals have a table of another name.
    static std::string getTableName(std::string_view moduleName);
    /// The table of a module's search tokens.
    static std::string getSearchTableName(std::string_view moduleName);
    /// The column that identifies a record of a module, in a naming that was taken earlier or in the one in force.
    static std::string_view getIdentifierFieldName(std::string_view forModule, const FieldIdentifier& naming);
    static std::string_view getIdentifierFieldName(std::string_view forModule);
    static std::string_view getIdentifierFieldName(const ModuleIdentifier& forModule);

    /// Whether the id is "NEW_" and nine digits, and nothing else.
    static bool isNewRecord(std::string_view recordId) { return isNewRecordId(recordId); }
    static bool isNewRecord(const Record& record);
};

}  // namespace tarvo
