#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <algorithm>

#include "platform/Files.h"
#include "platform/Json.h"
#include "platform/Text.h"
#include "tests/end_to_end/Process.h"
#include "tests/sandbox/Client.h"

namespace tarvo::tests {

/// Returns a member of a JSON object; null if it is absent, or if `json` is not an object.
inline Value member(const Value& json, std::string_view name) {
    return json.asMap() ? json.asMap()->valueOf(name) : Value();
}

/// The real server and the real host as processes, in a folder of their own.
class EndToEnd {
public:
    explicit EndToEnd(const std::vector<std::string>& serverArguments = {}) {
        ::signal(SIGPIPE, SIG_IGN);
        std::vector<std::string> all = {"--port", "0", "--state", folder + "/server", "--account", "42:token-of-42"};
        all.insert(all.end(), serverArguments.begin(), serverArguments.end());
        server_ = std::make_unique<Process>("tarvo-sandbox", all, folder + "/server.log");
        auto address = server_->line().value_or("");
        authority = server_->line().value_or("");
        port = static_cast<int>(text::toInteger(address.substr(address.rfind(':') + 1)).value_or(0));
        control = std::make_unique<sandbox::tests::Client>("localhost", port, authority);
    }
    ~EndToEnd() {
        stopServer();
        files::remove(folder);
    }

    void stopServer() {
        if (!server_) return;
        control.reset();
        server_->terminate();
        EXPECT_EQ(server_->finish(), 0) << server_->errors();
        server_.reset();
    }

    /// Returns the arguments that reach the server as account 42, then the given ones.
    std::vector<std::string> arguments(const std::vector<std::string>& further) const {
        std::vector<std::string> all = {
            "--home", home(),    "--account",     "42", "--token",  "token-of-42",
            "--ca",   authority, "--server-type", "0",  "--domain", "localhost:" + std::to_string(port)};
        all.insert(all.end(), further.begin(), further.end());
        return all;
    }
    std::unique_ptr<Process> host(const std::vector<std::string>& further,
                                  const std::string& passphrase = "right passphrase") const {
        return std::make_unique<Process>("tarvo-host", arguments(further), folder + "/host.log",
                                         std::vector<std::string>{"TARVO_PASSPHRASE=" + passphrase});
    }

    void setFault(const std::string& fault) {
        auto answer = control->postJson("/control/faults", fault);
        ASSERT_TRUE(answer && answer->status == 200) << fault;
    }
    std::size_t initRequests() {
        auto log = requests();
        return static_cast<std::size_t>(std::count_if(log.begin(), log.end(), [](auto& request) {
            return member(request, "path").textOr("").ends_with("/getappinitdata");
        }));
    }
    /// Returns an answer of the server's control calls.
    Value controlled(const std::string& path) const {
        auto answer = control->get(path);
        return json::parse(answer ? answer->body : "").value_or(Value());
    }
    /// Returns the requests that the server has received.
    ValueList requests() const {
        auto log = member(controlled("/control/requests"), "requests");
        return log.asList() ? *log.asList() : ValueList();
    }

    std::string home() const { return folder + "/home"; }
    std::string databasePath() const { return home() + "/Databases/TarvoDatabaseForBrenUID42.sqlite"; }
    /// Returns the content of a file, which is empty for a missing file.
    std::string content(const std::string& path) const {
        auto data = files::exists(path) ? files::read(path) : std::nullopt;
        return data ? data->text() : "";
    }

    const std::string folder = files::makeTemporaryDirectory("end_to_end");
    std::string authority;
    int port = 0;
    std::unique_ptr<sandbox::tests::Client> control;

private:
    std::unique_ptr<Process> server_;
};

/// Returns the next line of a program's output as JSON; null if there is none.
inline Value jsonLine(Process& process) {
    auto line = process.line();
    return line ? json::parse(std::string_view(*line)).value_or(Value()) : Value();
}

/// The exit status of a program and its output.
struct Ended {
    std::optional<int> status;
    std::string output;
    std::string errors;
};

inline Ended endOf(std::unique_ptr<Process> process) {
    auto status = process->finish();
    return {status, process->output(), process->errors()};
}

inline bool contains(const std::string& text, std::string_view part) { return text.find(part) != std::string::npos; }

inline bool isOneLine(const std::string& text) { return !text.empty() && text.find('\n') == text.size() - 1; }

/// Expects a command that did not do its work and says in one line why.
inline void expectRefusal(const Ended& ended, int status, std::string_view says) {
    EXPECT_EQ(ended.status, status) << says;
    EXPECT_TRUE(isOneLine(ended.errors) && contains(ended.errors, says)) << "not \"" << says << "\": " << ended.errors;
}

/// A command that is refused, with the fault that the server's call meets first, if any.
struct Refusal {
    std::vector<std::string> arguments;
    int status;
    std::string says;
    std::string fault = {};
};

inline void expectRefusals(EndToEnd& world, const std::vector<Refusal>& refusals) {
    for (auto& one : refusals) {
        SCOPED_TRACE(text::join(one.arguments, " ") + " " + one.fault);
        if (!one.fault.empty()) world.setFault(R"({"times":1,)" + one.fault + "}");
        auto ended = endOf(world.host(one.arguments));
        expectRefusal(ended, one.status, one.says);
        EXPECT_EQ(ended.output, "");
    }
}

/// Returns the last line of a program's output as JSON.
inline Value lastLineOf(const std::string& output) {
    auto lines = text::split(output, "\n");
    return lines.size() < 2 ? Value() : json::parse(lines[lines.size() - 2]).value_or(Value());
}

}  // namespace tarvo::tests
