#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/transaction/IdCounter.h"

namespace tarvo {

/// The ids of records that the server does not know yet: "NEW_" and a counter of nine digits. An id is above the
/// counter and above every id that a queue or the table of former ids has, so that no record takes the changes of
/// another one. Any thread may use it; each call blocks its caller.
class RecordIds final : public NewRecordIdGenerator {
public:
    /// The settings keep the counter. Without a database it alone counts.
    RecordIds(const Stores& stores, std::shared_ptr<UserDefaultsProtocol> userDefaults);
    std::string getNewRecordId() override;
    /// Begins again above what is stored.
    void resetRecordId() override { counter_.reset(); }

private:
    std::int64_t highestStored() const;

    const Stores stores_;
    IdCounter counter_;
};

}  // namespace tarvo
