#include "tarvobase/download/Downloadable.h"

#include <algorithm>

#include "platform/Log.h"

namespace tarvo {

namespace {

/// Dependencies no longer matter once a step is ready.
bool hasLeftWaiting(ProcessState state) {
    return state == ProcessState::completed || state == ProcessState::inProgress ||
           state == ProcessState::readyForExecution;
}

/// Works on steps and on dependencies.
constexpr auto hasCompleted = [](auto& one) { return one.state == ProcessState::completed; };

}  // namespace

void Downloadable::updateState() {
    if (hasLeftWaiting(state)) return;
    state = std::ranges::all_of(dependencyList, hasCompleted) ? ProcessState::readyForExecution
                                                              : ProcessState::waitingForDependency;
}

void Downloadable::updateDependency(Process process) {
    if (hasLeftWaiting(state)) return;
    bool found = false;
    for (auto& dependency : dependencyList) {
        if (dependency.processName != process) continue;
        dependency.state = ProcessState::completed;
        found = true;
    }
    if (found) updateState();
}

void Downloadable::reportUnstored(const std::string& what) {
    hasUnstoredContent_ = true;
    platform::log(platform::LogLevel::warning, "first download",
                  std::string(rawText(processName())) + ": " + what + " could not be stored");
}

bool executeProcess(const std::vector<std::shared_ptr<Downloadable>>& steps) {
    if (std::ranges::all_of(steps, [](auto& step) { return hasCompleted(*step); })) return true;
    for (auto& step : steps) {
        if (step->state != ProcessState::readyForExecution) continue;
        step->execute();
        step->state = ProcessState::inProgress;
    }
    return false;
}

}  // namespace tarvo
