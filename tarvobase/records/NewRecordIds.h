#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

class UserDefaultsProtocol;

/// Generates the ids of records that the server does not know yet: "NEW_" and a counter of nine digits, beginning with
/// NEW_000000001. The counter is on the disk before an id is handed out, so that no id is used twice, even after a
/// crash and by several processes. May be called from any thread; blocks for the disk.
class NewRecordIds final : public NewRecordIdGenerator {
public:
    explicit NewRecordIds(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// Returns the next id. If the disk refuses the counter, the id follows the last one that is known, and a warning
    /// is logged.
    std::string getNewRecordId() override;
    /// Begins again at 1. Call it only when no change with such an id is left.
    void resetRecordId() override;

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    std::atomic<std::int64_t> last_ = 0;  // the number that this object handed out last
};

}  // namespace tarvo
