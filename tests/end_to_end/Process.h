#pragma once

#include <sys/types.h>
#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace tarvo::tests {

/// A program that was started, with pipes to its input and output. Every wait has a deadline, after which the program
/// is taken to hang and killed. What it says on standard error goes into a file.
class Process {
public:
    /// The program is a name in the folder of the built programs. "NAME=value" texts are added to its environment.
    Process(const std::string& program, std::vector<std::string> arguments, const std::string& errorFile,
            std::vector<std::string> environment = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    bool started() const { return pid_ > 0; }
    void send(const std::string& line);
    void closeInput();
    /// The next line of its output; nothing at the end of the output or after the deadline.
    std::optional<std::string> line();
    /// All further output, then its exit status; nothing when it hangs or ended by a signal.
    std::optional<int> finish();
    const std::string& output() const { return output_; }
    std::string errors() const;
    void terminate();
    /// Ends it at once, without a chance to tidy up.
    void kill();

private:
    bool readMore();

    static constexpr std::chrono::seconds patience{90};
    pid_t pid_ = -1;
    int input_ = -1;
    int outputEnd_ = -1;
    std::string output_;  // read and not yet given
    const std::string errorFile_;
};

}  // namespace tarvo::tests
