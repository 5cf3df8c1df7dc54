#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "tarvobase/database_layer/DatabaseAdapter.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo::host {

/// The outcome of the init step: its answer is stored, a failure was reported, or the database did not store the
/// answer.
struct InitOutcome {
    std::optional<CommonErrorNotice> failure{};
    bool isRefusedByDatabase = false;

    bool isStored() const { return !failure && !isRefusedByDatabase; }
};

/// Makes the init call and stores its answer. `whenEnded` is called exactly once, on the network queue, when the step
/// is over: at the latest when the request has timed out. The caller holds the returned object until then.
[[nodiscard]] std::shared_ptr<void> runInitStep(std::shared_ptr<DatabaseAdapter> database,
                                                std::function<void(InitOutcome)> whenEnded);

}  // namespace tarvo::host
