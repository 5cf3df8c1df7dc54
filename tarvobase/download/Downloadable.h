#pragma once

#include <memory>
#include <vector>

#include "platform/Describe.h"
#include "platform/Object.h"
#include "tarvobase/usecase/ErrorProtocols.h"

namespace tarvo {

/// The steps of the first download, by the names that the settings and the dependencies use.
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

/// Hears how a step goes on, on the queue of the step's work.
class DownloadProgressible : public virtual platform::Object {
public:
    virtual void didComplete(Downloadable& step, bool status) = 0;
    virtual void progressDidUpdate(Downloadable& step, int current, int total) = 0;
};

/// A step of the first download. Its state and its dependencies belong to the runner, which touches them on one queue.
class Downloadable : public virtual platform::Object {
public:
    virtual Process processName() const = 0;
    ProcessState state = ProcessState::initiated;
    std::vector<ProcessDependency> dependencyList;
    std::weak_ptr<DownloadProgressible> delegate;
    /// Who hears of failures, on the queue of the step's work. Set before `execute`.
    std::weak_ptr<CommonErrorProtocol> errorResponder;

    /// Prepares the step once the init data are stored. Empty for most.
    virtual void initiate() {}
    /// Units of progress that the step will report.
    virtual int totalCallsCount() const { return 1; }
    /// Starts the step and returns. The delegate hears `didComplete` once, perhaps before this returns.
    virtual void execute() = 0;

    void markCompleted() { state = ProcessState::completed; }
    /// Ready when every dependency is completed, else waiting. A step that is ready, runs or is completed stays so.
    void updateState();
    /// Notes that a process is completed, for a step that is not yet ready.
    void updateDependency(Process process);
};

/// Executes the steps that are ready, in their order, and marks each as in progress once its `execute` has returned.
/// True, with nothing done, when all are completed.
bool executeProcess(const std::vector<std::shared_ptr<Downloadable>>& steps);

}  // namespace tarvo
