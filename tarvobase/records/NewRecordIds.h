#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

class UserDefaultsProtocol;

/// The ids of records that the server does not know yet: "NEW_" and a counter of nine digits, from NEW_000000001 on.
/// The counter is on the disk before an id is given out, so that no id comes twice, also after a crash and from
/// several processes. From any thread; blocks for the disk.
class NewRecordIds final : public NewRecordIdGenerator {
public:
    explicit NewRecordIds(std::shared_ptr<UserDefaultsProtocol> userDefaults);

    /// When the disk refuses, the ids go on from the last one that is known, and the log says so.
    std::string getNewRecordId() override;
    /// Begins again at 1. Only when no change with such an id is left.
    void resetRecordId() override;

private:
    std::shared_ptr<UserDefaultsProtocol> userDefaults_;
    std::atomic<std::int64_t> last_ = 0;  // given out by this object
};

}  // namespace tarvo
