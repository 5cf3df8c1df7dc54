#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

extern char** environ;

namespace tarvo::benchmarks {

/// The server in a process of its own, on a free port. Its program lies beside this one. It ends with the object.
class SandboxProcess {
public:
    SandboxProcess(const std::string& stateFolder, std::size_t recordCount) {
        std::error_code error;
        auto program =
            (std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / "tarvo-sandbox").string();
        std::vector<std::string> texts = {
            program,     "--port",        "0", "--state", stateFolder, "--records", std::to_string(recordCount),
            "--account", "42:token-of-42"};
        std::vector<char*> arguments;
        for (auto& text : texts) arguments.push_back(text.data());
        arguments.push_back(nullptr);
        int output[2];
        if (::pipe2(output, O_CLOEXEC) != 0) return;
        posix_spawn_file_actions_t actions;
        posix_spawn_file_actions_init(&actions);
        posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
        if (::posix_spawn(&pid_, program.c_str(), &actions, nullptr, arguments.data(), environ) != 0) pid_ = -1;
        posix_spawn_file_actions_destroy(&actions);
        ::close(output[1]);
        readAddress(output[0]);
    }
    ~SandboxProcess() {
        if (pid_ <= 0) return;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
    }
    SandboxProcess(const SandboxProcess&) = delete;
    SandboxProcess& operator=(const SandboxProcess&) = delete;

    bool listens() const { return !port.empty(); }
    std::string port, authority;

private:
    /// Reads the two lines that the server prints once it listens. If it ends before, so does its output.
    void readAddress(int output) {
        auto* lines = ::fdopen(output, "r");
        std::array<char, 4096> line;
        std::vector<std::string> read;
        while (read.size() < 2 && std::fgets(line.data(), line.size(), lines)) {
            read.emplace_back(line.data());
            if (read.back().ends_with('\n')) read.back().pop_back();
        }
        std::fclose(lines);
        if (read.size() < 2) return;
        port = read[0].substr(read[0].rfind(':') + 1);
        authority = read[1];
    }

    pid_t pid_ = -1;
};

}  // namespace tarvo::benchmarks
