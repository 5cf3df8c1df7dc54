#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo::host {

/// How the init step ended: what it brought is stored, or a failure was reported.
struct InitOutcome {
    std::optional<CommonErrorNotice> failure{};

    bool isStored() const { return !failure; }
};

/// Makes the init call and stores what it brings. `whenEnded` is called exactly once, on the network queue, when the
/// step is over: at the latest when the request has timed out. The answer must be held until then.
[[nodiscard]] std::shared_ptr<void> runInitStep(std::shared_ptr<DatabaseAdapter> database,
                                                std::function<void(InitOutcome)> whenEnded);

}  // namespace tarvo::host
