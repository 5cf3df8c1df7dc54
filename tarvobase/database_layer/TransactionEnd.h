#pragma once

#include <functional>

namespace tarvo {

/// Returns whether this thread is in a transaction of a database.
bool isInTransaction();

/// Runs `work` on this thread once the outermost transaction that it is in has ended, whether that was committed or
/// undone. Outside a transaction it runs at once. Whoever keeps a copy of a table needs it: what the table holds is
/// known only then.
void afterTransaction(std::function<void()> work);

}  // namespace tarvo
