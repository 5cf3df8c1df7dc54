#pragma once

#include <functional>

namespace tarvo {

/// Returns whether this thread is in a transaction of a database.
bool isInTransaction();

/// Runs `work` on this thread once the outermost transaction that it is in has ended, whether that was committed or
/// undone. Outside a transaction it runs at once. Whoever keeps a copy of a table needs it: what the table holds is
/// known only then.
void afterTransaction(std::function<void()> work);

/// Runs `work` in the same way, in the order of the calls, but only if the outermost transaction was committed and no
/// transaction inside it that `work` was given in was undone. Notices and wake-ups for stored rows go through it.
void afterCommit(std::function<void()> work);

}  // namespace tarvo
