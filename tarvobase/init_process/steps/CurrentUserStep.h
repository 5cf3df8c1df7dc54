#pragma once

#include "tarvobase/download/Downloadable.h"

namespace tarvo {

/// The step `currentUser` as the runner sees it. It runs before the account has any table, so what it parsed is kept
/// until the tables are there.
class CurrentUserStep : public virtual Downloadable {
public:
    Process processName() const override { return Process::currentUser; }
    /// Stores the user that was parsed and notes that the step is done, so that no later run asks again. Nothing
    /// happens when there is none: the request failed, or an earlier run has stored it. On the queue of the work that
    /// made the tables; blocks until it is stored.
    virtual void storeParsedUser() = 0;
};

}  // namespace tarvo
