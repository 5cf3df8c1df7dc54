#include "platform/ProcessState.h"

#include <atomic>

namespace tarvo::platform {

namespace {

// Held through a pointer that is never destroyed: work that still runs while the program leaves `main` finds a state.
std::atomic<ProcessState*>& held() {
    static auto* state = new std::atomic<ProcessState*>(new ProcessState);
    return *state;
}

}  // namespace

ProcessState& ProcessState::current() { return *held().load(); }

void ProcessState::installFresh() { delete held().exchange(new ProcessState); }

}  // namespace tarvo::platform
