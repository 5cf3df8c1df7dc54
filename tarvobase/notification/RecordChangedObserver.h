#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/Object.h"

namespace tarvo {

/// The topic for records of a module that changed in the local database. Every operation is empty unless overridden.
class RecordChangedObserver : public virtual platform::Object {
public:
    struct RecordId {
        std::string recordID;
        std::int64_t modifiedTime = 0;  ///< seconds since 1970
        friend bool operator==(const RecordId&, const RecordId&) = default;
    };
    using RecordIds = std::vector<RecordId>;

    virtual void recordObtained(const std::string& recordID, const std::string& moduleName) {
        static_cast<void>(recordID), static_cast<void>(moduleName);
    }
    virtual void recordAdded(const std::string& moduleName, const RecordIds& recordIds) {
        static_cast<void>(moduleName), static_cast<void>(recordIds);
    }
    virtual void recordUpdated(const std::string& moduleName, const RecordIds& recordIds) {
        static_cast<void>(moduleName), static_cast<void>(recordIds);
    }
    /// A record got its id from the server.
    virtual void recordUpdated(const std::string& moduleName, const std::string& oldRecordID,
                               const std::string& newRecordID) {
        static_cast<void>(moduleName), static_cast<void>(oldRecordID), static_cast<void>(newRecordID);
    }
    virtual void recordDeleted(const std::string& moduleName, const std::vector<std::string>& recordIds) {
        static_cast<void>(moduleName), static_cast<void>(recordIds);
    }
};

}  // namespace tarvo
