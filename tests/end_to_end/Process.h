#pragma once

#include <sys/types.h>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tarvo::tests {

/// A started program with pipes to its input and output. Every wait has a deadline, after which the program counts as
/// hanging and is killed. Its standard error goes into a file.
class Process {
public:
    /// Starts a program in the folder that TARVO_BIN_DIR names. "NAME=value" texts are added to its environment.
    Process(const std::string& program, std::vector<std::string> arguments, const std::string& errorFile,
            std::vector<std::string> environment = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return pid_; }
    void send(const std::string& line);
    void closeInput();
    /// Returns the next line of its output; nullopt at the end of the output or after the deadline.
    std::optional<std::string> line();
    /// Reads all further output and returns the exit status; nullopt if the program hangs or was ended by a signal.
    std::optional<int> finish();
    const std::string& output() const { return output_; }
    std::string errors() const;
    /// Waits until the program has stopped itself. Returns false if it ends instead, or after the deadline.
    bool waitUntilStopped() const;
    /// Lets a stopped program go on.
    void resume();
    void terminate();
    /// Ends the program at once, without a chance to tidy up.
    void kill();

private:
    bool readMore();

    static constexpr std::chrono::seconds patience{90};
    pid_t pid_ = -1;
    int input_ = -1;
    int outputEnd_ = -1;
    std::string output_;  // read and not yet returned
    const std::string errorFile_;
};

}  // namespace tarvo::tests
