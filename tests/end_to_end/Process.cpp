#include "tests/end_to_end/Process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <array>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

extern char** environ;

namespace tarvo::tests {

namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (auto& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

bool isReady(int descriptor, std::chrono::milliseconds atMost) {
    pollfd waiting{descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, static_cast<int>(atMost.count())) == 1;
}

/// Stops the run before the first test if the folder of the programs is unknown: every test would wait for output that
/// never comes.
class ProgramsAreKnown final : public ::testing::Environment {
    void SetUp() override {
        for (auto name : {"TARVO_BIN_DIR", "TARVO_SOURCE_DIR"})
            ASSERT_TRUE(std::getenv(name))
                << name << " is not set; ctest sets it: ctest --test-dir build/dev -R end_to_end";
    }
};

[[maybe_unused]] const auto* const programsAreKnown = ::testing::AddGlobalTestEnvironment(new ProgramsAreKnown);

}  // namespace

Process::Process(const std::string& program, std::vector<std::string> arguments, const std::string& errorFile,
                 std::vector<std::string> environment)
    : errorFile_(errorFile) {
    const char* folder = std::getenv("TARVO_BIN_DIR");
    auto path = std::string(folder ? folder : ".") + "/" + program;
    arguments.insert(arguments.begin(), path);
    for (char** entry = environ; *entry; ++entry) environment.emplace_back(*entry);

    int toProgram[2], fromProgram[2];
    if (::pipe2(toProgram, O_CLOEXEC) != 0 || ::pipe2(fromProgram, O_CLOEXEC) != 0) return;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, toProgram[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fromProgram[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errorFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (::posix_spawn(&pid_, path.c_str(), &actions, nullptr, pointers(arguments).data(),
                      pointers(environment).data()) != 0)
        pid_ = -1;
    posix_spawn_file_actions_destroy(&actions);
    ::close(toProgram[0]);
    ::close(fromProgram[1]);
    input_ = toProgram[1];
    outputEnd_ = fromProgram[0];
}

Process::~Process() {
    closeInput();
    if (outputEnd_ >= 0) ::close(outputEnd_);
    kill();
}

void Process::send(const std::string& line) {
    auto text = line + "\n";
    for (std::size_t sent = 0; sent < text.size();) {
        auto count = ::write(input_, text.data() + sent, text.size() - sent);
        if (count <= 0) return;  // the missing answer fails the test
        sent += static_cast<std::size_t>(count);
    }
}

void Process::closeInput() {
    if (input_ >= 0) ::close(input_);
    input_ = -1;
}

bool Process::readMore() {
    std::array<char, 65536> buffer;
    if (!isReady(outputEnd_, patience)) return false;
    auto count = ::read(outputEnd_, buffer.data(), buffer.size());
    if (count > 0) output_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

std::optional<std::string> Process::line() {
    std::size_t end;
    while ((end = output_.find('\n')) == std::string::npos)
        if (!readMore()) return std::nullopt;
    auto line = output_.substr(0, end);
    output_.erase(0, end + 1);
    return line;
}

std::optional<int> Process::finish() {
    closeInput();
    while (readMore()) {
    }
    auto descriptor = static_cast<int>(::syscall(SYS_pidfd_open, pid_, 0));
    bool ended = isReady(descriptor, patience);
    ::close(descriptor);
    if (!ended) return std::nullopt;
    int status = 0;
    ::waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? std::optional(WEXITSTATUS(status)) : std::nullopt;
}

std::string Process::errors() const {
    std::ifstream file(errorFile_);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

bool Process::waitUntilStopped() const {
    for (std::chrono::milliseconds left = patience; left.count() > 0; left -= std::chrono::milliseconds(10)) {
        siginfo_t info{};
        if (::waitid(P_PID, static_cast<id_t>(pid_), &info, WSTOPPED | WEXITED | WNOHANG | WNOWAIT) != 0) return false;
        if (info.si_pid == pid_) return info.si_code == CLD_STOPPED;
        ::poll(nullptr, 0, 10);
    }
    return false;
}

void Process::resume() { ::kill(pid_, SIGCONT); }

void Process::terminate() {
    if (pid_ > 0) ::kill(pid_, SIGTERM);
}

void Process::kill() {
    if (pid_ <= 0) return;
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    pid_ = -1;
}

}  // namespace tarvo::tests
