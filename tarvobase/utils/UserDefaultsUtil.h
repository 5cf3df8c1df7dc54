#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tarvo {

class UserDefaultsProtocol;

/// Small facts of the current account in the settings store: how far the first download and the lists are, and what the
/// user chose last. From any thread. Times are whole seconds or milliseconds as told at each operation.
class UserDefaultsUtil {
public:
    explicit UserDefaultsUtil(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// A temporary record id: "TarvoTEMPID#" and the present time in whole seconds. Never the same one twice, also
    /// after a crash: when the second was given out already, the next free number follows.
    std::string getNewRecordId();

    /// Which steps of the first download are done, and how much of it in percent; 0 before it has begun.
    bool isCurrentUserCompleted() const { return isCompleted("currentUser"); }
    void setCurrentUserCompleted() { setCompleted("currentUser"); }
    bool isCurrencyCompleted() const { return isCompleted("currency"); }
    void setCurrencyCompleted() { setCompleted("currency"); }
    bool isPipelinesCompleted() const { return isCompleted("pipelines"); }
    void setPipelinesCompleted() { setCompleted("pipelines"); }
    bool isPermissionsCompleted() const { return isCompleted("permission"); }
    void setPermissionsCompleted() { setCompleted("permission"); }
    /// The same for a step that is done module by module, under "STEP_MODULE".
    bool isCompleted(const std::string& step) const;
    void setCompleted(const std::string& step);
    int getProgressPercent() const;
    void setProgressPercent(int percent);

    /// Where a list stands: the server's time of its last download, absent when there was none, and whether the server
    /// has more of its records, which holds until it is told otherwise.
    std::optional<std::int64_t> getListFilterRecordSyncTime(const std::string& moduleName,
                                                            const std::string& criteriaId) const;
    void setListFilterRecordSyncTime(std::int64_t time, const std::string& moduleName, const std::string& criteriaId);
    bool getListFilterHasMoreRecord(const std::string& moduleName, const std::string& criteriaId) const;
    void setListFilterHasMoreRecord(bool hasMore, const std::string& moduleName, const std::string& criteriaId);
    /// Back to what holds before the first download.
    void resetListFilter(const std::string& moduleName, const std::string& criteriaId);
    /// When the views of modules changed last, in seconds.
    std::optional<std::int64_t> getListFilterLastUpdatedTime(const std::string& moduleName) const;
    void setListFilterLastUpdatedTime(std::int64_t time, const std::vector<std::string>& moduleNames);

    /// What the user's screens remember; absent until something was stored.
    std::optional<std::string> getLastSelectedModule() const;
    void setLastSelectedModule(const std::string& moduleName);
    std::optional<std::vector<std::string>> getModuleOrder() const;
    void setModuleOrder(const std::vector<std::string>& moduleNames);

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
