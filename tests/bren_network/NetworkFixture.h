#pragma once

#include <gtest/gtest.h>

#include <future>

#include "bren_network/BrenNetworkManager.h"
#include "platform/Files.h"
#include "tests/bren_network/Servers.h"
#include "tests/support/LogWatch.h"

namespace bren::test {

/// What a completion was given.
struct Answer {
    Data data;
    std::optional<URLResponse> response;
    std::optional<NetworkError> error;
    int taskNumber = 0;
};

inline std::string kindOf(const Answer& answer) {
    return answer.error ? std::string(kindName(answer.error->kind)) : "none";
}

/// The client of the process, freshly started, trusting the test authority, with a log that is kept.
class NetworkTest : public ::testing::Test {
protected:
    using Task = BrenNetworkManager::Task;

    NetworkTest() {
        manager.restart();
        EXPECT_TRUE(manager.setFurtherAuthorityFile(SecureServer::authorityFile()));
    }
    ~NetworkTest() override {
        manager.shutDown();
        manager.queue()->sync([] {});
        manager.setFurtherAuthorityFile("");
    }

    static Task taskFor(std::string url, std::string method = "GET") {
        Task task;
        task.request.url = std::move(url);
        task.request.method = std::move(method);
        return task;
    }

    /// Gives a request to the client, whose completion comes later.
    void give(const std::string& url, decltype(Task::completion) completion,
              BrenTaskPriority priority = Task().priority) {
        auto task = taskFor(url);
        task.completion = std::move(completion);
        task.priority = priority;
        manager.send(std::move(task));
    }
    /// Gives the request to the client and waits for its completion.
    Answer ask(Task task) { return fetch(std::move(task), {}, false); }
    Answer upload(Task task, std::vector<BrenFileUploadInfo> files) { return fetch(std::move(task), files, true); }

    void expectWarning(std::string part) { log_.expectWarning(std::move(part)); }

    std::string log() {
        manager.shutDown();
        manager.queue()->sync([] {});
        std::string text;
        for (auto& line : log_.lines()) text.append(line).append("\n");
        return text;
    }

    BrenNetworkManager& manager = BrenNetworkManager::sharedInstance();

private:
    Answer fetch(Task task, std::vector<BrenFileUploadInfo> files, bool isUpload) {
        auto answered = std::make_shared<std::promise<Answer>>();
        auto answer = answered->get_future();
        // A second completion would throw here, which the queue reports as a programming error.
        task.completion = [answered](Data data, auto response, auto error, int number) {
            answered->set_value({std::move(data), std::move(response), std::move(error), number});
        };
        if (isUpload)
            manager.sendUploadRequest(std::move(task), std::move(files));
        else
            manager.send(std::move(task));
        return answer.get();
    }

    tarvo::LogWatch log_;
};

}  // namespace bren::test
