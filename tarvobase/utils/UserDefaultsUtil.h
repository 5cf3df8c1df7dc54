#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace tarvo {

class UserDefaultsProtocol;

/// Small facts about the current account in the settings store: the progress of the first download and of the lists,
/// and what the user chose last. Any thread may use it. Times are whole seconds or milliseconds, as each operation
/// says.
class UserDefaultsUtil {
public:
    explicit UserDefaultsUtil(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Returns a temporary record id: "TarvoTEMPID#" and the present time in whole seconds. No id is returned twice,
    /// even after a crash: if the second has been used, the next free number is.
    std::string getNewRecordId();

    /// Say which steps of the first download are done, and how much of it in percent; 0 before it has begun.
    bool isCurrentUserCompleted() const { return isCompleted("currentUser"); }
    void setCurrentUserCompleted() { setCompleted("currentUser"); }
    bool isCurrencyCompleted() const { return isCompleted("currency"); }
    void setCurrencyCompleted() { setCompleted("currency"); }
    bool isPipelinesCompleted() const { return isCompleted("pipelines"); }
    void setPipelinesCompleted() { setCompleted("pipelines"); }
    bool isPermissionsCompleted() const { return isCompleted("permission"); }
    void setPermissionsCompleted() { setCompleted("permission"); }
    /// The same for any step. A step that is done per module has the key "STEP_MODULE".
    bool isCompleted(const std::string& step) const;
    void setCompleted(const std::string& step);
    /// Notes which of these steps were flagged as done although the server sent no usable content, and takes the notes
    /// of the others back.
    void noteMissing(const std::vector<std::string>& steps, const std::set<std::string>& missing);
    /// Clears the flags of the noted steps, so that the next download requests exactly these again.
    void requestMissingAgain();
    /// Forgets which steps are done and where the lists stand, for a database that does not hold their content.
    void forgetContent();
    int getProgressPercent() const;
    void setProgressPercent(int percent);

    /// The state of a list: the server's time of its last download in milliseconds, or nullopt if there was none, and
    /// whether the server has more of its records, which is true until it is set.
    std::optional<std::int64_t> getListFilterRecordSyncTime(const std::string& moduleName,
                                                            const std::string& criteriaId) const;
    void setListFilterRecordSyncTime(std::int64_t time, const std::string& moduleName, const std::string& criteriaId);
    bool getListFilterHasMoreRecord(const std::string& moduleName, const std::string& criteriaId) const;
    void setListFilterHasMoreRecord(bool hasMore, const std::string& moduleName, const std::string& criteriaId);
    /// The number of the last record added here that the server had accepted when it was asked for the beginning of the
    /// list that is stored (`RecordIdAliases::lastNumber`); 0 until it is set. That answer decided on all of them.
    std::int64_t getListFilterLastAddedRecord(const std::string& moduleName, const std::string& criteriaId) const;
    void setListFilterLastAddedRecord(std::int64_t number, const std::string& moduleName,
                                      const std::string& criteriaId);
    /// Returns whether pages after the first one have been stored since the time of the list: what changed before their
    /// time may have shifted them.
    bool getListFilterHasLaterPages(const std::string& moduleName, const std::string& criteriaId) const;
    void setListFilterHasLaterPages(bool hasLaterPages, const std::string& moduleName, const std::string& criteriaId);
    /// Restores the state before the first download.
    void resetListFilter(const std::string& moduleName, const std::string& criteriaId);
    /// The time in seconds when the views of modules changed last.
    std::optional<std::int64_t> getListFilterLastUpdatedTime(const std::string& moduleName) const;
    void setListFilterLastUpdatedTime(std::int64_t time, const std::vector<std::string>& moduleNames);

    /// What the user's screens remember; nullopt until something has been stored.
    std::optional<std::string> getLastSelectedModule() const;
    void setLastSelectedModule(const std::string& moduleName);
    std::optional<std::vector<std::string>> getModuleOrder() const;
    void setModuleOrder(const std::vector<std::string>& moduleNames);

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
};

}  // namespace tarvo
