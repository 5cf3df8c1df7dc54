#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/Value.h"
#include "tarvobase/database_layer/DatabaseAdapter.h"

namespace tarvo::host {

/// How the init step ended: the one operation of its delegates that it called.
struct InitOutcome {
    std::string notice;
    ValueMap arguments;

    bool isStored() const;
};

/// Makes the init call and stores what it brings. `whenEnded` is called exactly once, on the network queue, when the
/// step is over: at the latest when the request has timed out. The answer must be held until then.
[[nodiscard]] std::shared_ptr<void> runInitStep(std::shared_ptr<DatabaseAdapter> database,
                                                std::function<void(InitOutcome)> whenEnded);

}  // namespace tarvo::host
