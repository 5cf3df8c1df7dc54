#pragma once

#include "tarvobase/download/Downloadable.h"

namespace tarvo {

/// The runner's view of the step `currentUser`. The step runs before the account has any table, so it keeps the parsed
/// user until the tables exist.
class CurrentUserStep : public virtual Downloadable {
public:
    Process processName() const override { return Process::currentUser; }
    /// Stores the parsed user and flags the step as done, so that no later run asks again. Does nothing if there is no
    /// parsed user, because the request failed or an earlier run has stored it. Called on the queue that created the
    /// tables; blocks until the user is stored.
    virtual void storeParsedUser() = 0;
};

}  // namespace tarvo
