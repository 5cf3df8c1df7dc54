#pragma once

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "platform/Describe.h"
#include "platform/Object.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// The steps of the first download. Settings and dependencies use their names.
enum class Process { appInit, currency, permission, currentUser, metadata, customviews, initialRecords, pipelines };

template <>
struct EnumCases<Process> {
    static constexpr EnumCase<Process> cases[] = {{Process::appInit, "appInit", "getappinitdata"},
                                                  {Process::currency, "currency"},
                                                  {Process::permission, "permission"},
                                                  {Process::currentUser, "currentUser"},
                                                  {Process::metadata, "metadata"},
                                                  {Process::customviews, "customviews"},
                                                  {Process::initialRecords, "initialRecords"},
                                                  {Process::pipelines, "pipelines"}};
};

enum class ProcessState { initiated, waitingForDependency, completed, inProgress, readyForExecution };

/// A step that must be completed before another may run.
struct ProcessDependency {
    Process processName;
    ProcessState state = ProcessState::initiated;
};

class Downloadable;

/// The observer of a step. It is called on the queue on which the step works.
class DownloadProgressible : public virtual platform::Object {
public:
    virtual void didComplete(Downloadable& step, bool status) = 0;
    virtual void progressDidUpdate(Downloadable& step, int current, int total) = 0;
};

/// A step of the first download. Its state and its dependencies belong to the runner, which accesses them on one queue.
class Downloadable : public virtual platform::Object {
public:
    virtual Process processName() const = 0;
    ProcessState state = ProcessState::initiated;
    std::vector<ProcessDependency> dependencyList;
    std::weak_ptr<DownloadProgressible> delegate;
    /// Receives failures on the queue on which the step works. Set before `execute`.
    std::weak_ptr<CommonErrorProtocol> errorResponder;

    /// Prepares the step after the init data are stored. Most steps need no preparation.
    virtual void initiate() {}
    /// Returns how many units of progress the step will report.
    virtual int totalCallsCount() const { return 1; }
    /// Starts the step and returns. `didComplete` is called once, possibly before this returns.
    virtual void execute() = 0;

    /// Returns whether the step received content that the database did not store. The download is then not complete:
    /// the flags of that content stay clear, and the next run requests it again. From any thread.
    bool hasUnstoredContent() const { return hasUnstoredContent_; }

    void markCompleted() { state = ProcessState::completed; }
    /// Makes a step ready if all of its dependencies are completed, otherwise waiting. A step that is ready, in
    /// progress or completed keeps its state.
    void updateState();
    /// Marks a dependency as completed. Has no effect on a step that is already ready.
    void updateDependency(Process process);

protected:
    /// Logs what could not be stored, and marks the step.
    void reportUnstored(const std::string& what);
    /// For a step that starts another download.
    void forgetUnstored() { hasUnstoredContent_ = false; }

private:
    std::atomic<bool> hasUnstoredContent_ = false;
};

/// Executes the steps that are ready, in their order, and marks each as in progress after its `execute` has returned.
/// Returns true and does nothing if all steps are completed.
bool executeProcess(const std::vector<std::shared_ptr<Downloadable>>& steps);

}  // namespace tarvo
