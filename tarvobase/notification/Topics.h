#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "platform/Object.h"
#include "tarvobase/usecase/Describe.h"

/// Topics of the notification bus whose notices name things by their ids. An observer inherits the interface, overrides
/// what it wants to hear and registers with `BrenNotificationCenter`; every operation is empty unless overridden. The
/// queue of a notice is told by who gives it.
namespace tarvo {

/// What changed of a module.
enum class ChangeInModule { ModulePermissionChanged, ModuleNameChanged, ModuleLayoutChanged, ModuleFieldsChanged };
template <>
struct EnumCases<ChangeInModule> {
    static constexpr EnumCase<ChangeInModule> cases[] = {
        {ChangeInModule::ModulePermissionChanged, "ModulePermissionChanged"},
        {ChangeInModule::ModuleNameChanged, "ModuleNameChanged"},
        {ChangeInModule::ModuleLayoutChanged, "ModuleLayoutChanged"},
        {ChangeInModule::ModuleFieldsChanged, "ModuleFieldsChanged"}};
};

/// A record by its id and the time of its last change, seconds since 1970.
using ChangedRecord = std::pair<std::string, std::int64_t>;

/// Records of a module changed in the local database. On the main queue.
class RecordChangedObserver : public virtual platform::Object {
public:
    virtual void recordObtained(const std::string& recordID, const std::string& moduleName) {
        static_cast<void>(recordID), static_cast<void>(moduleName);
    }
    virtual void recordAdded(const std::string& moduleName, const std::vector<ChangedRecord>& recordIds) {
        static_cast<void>(moduleName), static_cast<void>(recordIds);
    }
    virtual void recordUpdated(const std::string& moduleName, const std::vector<ChangedRecord>& recordIds) {
        static_cast<void>(moduleName), static_cast<void>(recordIds);
    }
    /// A temporary id gave way to the server's.
    virtual void recordUpdated(const std::string& moduleName, const std::string& oldRecordID,
                               const std::string& newRecordID) {
        static_cast<void>(moduleName), static_cast<void>(oldRecordID), static_cast<void>(newRecordID);
    }
    virtual void recordDeleted(const std::string& moduleName, const std::vector<std::string>& recordIds) {
        static_cast<void>(moduleName), static_cast<void>(recordIds);
    }
};

/// Results of a search in a module may have moved. On the main queue.
class SearchTokenChangedObserver : public virtual platform::Object {
public:
    virtual void searchTokenChanged(const std::string& moduleName) { static_cast<void>(moduleName); }
};

/// The first download of an account is complete. On the main queue.
class InitialProcessComplete : public virtual platform::Object {
public:
    virtual void initialProcessComplete(const std::string& userId) { static_cast<void>(userId); }
};

/// The custom views of a module changed.
class CVObserver : public virtual platform::Object {
public:
    virtual void customViewsChanged(const std::string& moduleName) { static_cast<void>(moduleName); }
};
/// Views of a module were stored. On the background queue of the bus.
class CustomViewChangedObserver : public virtual platform::Object {
public:
    virtual void customViewChanged(const std::vector<std::string>& viewIDs, const std::string& moduleName) {
        static_cast<void>(viewIDs), static_cast<void>(moduleName);
    }
};

}  // namespace tarvo
