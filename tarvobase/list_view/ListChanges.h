#pragma once

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"

namespace tarvo {

/// The lock for changes of lists. The map of a view is in the database and its position (whether the server has more)
/// in the settings, so code that changes both holds this lock. Otherwise the position of an answer that was stored
/// before a list was emptied could arrive after it, and the list would end there for good.
struct ListChanges {
    platform::Mutex mutex;

    static ListChanges& shared() { return platform::ProcessState::current().get<ListChanges>(); }
};

}  // namespace tarvo
