#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/Log.h"
#include "tarvobase/configuration/CommonConfigration.h"
#include "tarvobase/database_layer/KelvaDatabasePersistance.h"
#include "tarvobase/network_layer/NetworkAdapter.h"

namespace tarvo {

/// An account that is signed in. It may have a token or not.
class SignedIn final : public AuthenticationProtocol {
public:
    explicit SignedIn(std::optional<std::string> user, std::optional<std::string> token = "secret-token",
                      AuthenticationType type = AuthenticationType::oauth)
        : user(std::move(user)), token(std::move(token)), type(type) {}

    AuthenticationType authenticationType() override { return type; }
    std::optional<std::vector<std::string>> loggedInUsers() override {
        return user ? std::optional(std::vector{*user}) : std::nullopt;
    }
    std::optional<std::string> currentUser() override { return user; }
    void authToken(const std::string&, TokenCompletion completion) override { completion(token); }

    std::optional<std::string> user;
    std::optional<std::string> token;
    AuthenticationType type;
};

/// Records calls instead of sending them, and answers each with the next scripted answer on a queue like the real one.
class ScriptedNetworkAdapter final : public NetworkAdapter {
public:
    struct Answer {
        std::string body;
        std::optional<NetworkError> error = std::nullopt;
    };
    void answer(std::string body) { push({std::move(body)}); }
    void fail(NetworkError::Kind kind) { push({"", NetworkError{kind, "scripted"}}); }

    void send(NetworkCall call) override { take(std::move(call)); }
    void download(NetworkCall call) override { take(std::move(call)); }
    void upload(NetworkUpload upload) override {
        std::lock_guard lock(mutex_);
        uploads_.push_back(std::move(upload));
    }

    /// Runs before each answer, on the queue of the answers. Set before the first call.
    std::function<void()> beforeAnswer = [] {};
    /// Makes the answers in place of the script, one after another. Set before the first call.
    std::function<Answer(const NetworkCall&)> respond;

    std::vector<NetworkCall> calls() const {
        std::lock_guard lock(mutex_);
        return calls_;
    }
    std::vector<NetworkUpload> uploads() const {
        std::lock_guard lock(mutex_);
        return uploads_;
    }

private:
    void push(Answer answer) {
        std::lock_guard lock(mutex_);
        answers_.push_back(std::move(answer));
    }
    void take(NetworkCall call) {
        Answer answer;
        {
            std::lock_guard lock(mutex_);
            calls_.push_back(call);
            // What a completion holds may hold this adapter.
            calls_.back().completionHandler = {};
            if (respond) {
                answer = respond(call);
            } else if (!answers_.empty()) {
                answer = std::move(answers_.front());
                answers_.pop_front();
            }
        }
        queue_->async([call = std::move(call), answer = std::move(answer), before = beforeAnswer] {
            before();
            if (call.completionHandler)
                call.completionHandler(
                    {.body = Data(answer.body), .identifier = call.identifier, .error = answer.error, .taskNumber = 1});
        });
    }

    std::shared_ptr<DispatchQueue> queue_ = DispatchQueue::serial("tests.network");
    mutable std::mutex mutex_;
    std::deque<Answer> answers_;
    std::vector<NetworkCall> calls_;
    std::vector<NetworkUpload> uploads_;
};

/// A process state of its own, a folder of its own, an account that is signed in, and the test's thread as the main
/// thread. At the end no contract may have been broken and no secret may stand in the log.
class FoundationTest : public ::testing::Test {
protected:
    FoundationTest();
    void SetUp() override;
    void TearDown() override;

    CommonConfigration& configuration() { return CommonConfigration::sharedInstance(); }
    const std::string& folder() const { return folder_; }
    void signIn(std::optional<std::string> user, std::optional<std::string> token = "secret-token",
                AuthenticationType type = AuthenticationType::oauth) {
        configuration().authentication = std::make_shared<SignedIn>(std::move(user), std::move(token), type);
    }

    /// Opens the account's encrypted database and sets it in the configuration. It is closed at the end of the test.
    std::shared_ptr<KelvaDatabasePersistance> openDatabase(const std::string& passphrase = "a passphrase");

    /// Lets a database grow no further, as on a full disk, or lets it grow again.
    static void setFull(DatabaseAdapter& database, bool isFull);
    /// A text that needs pages of its own, so that a full database cannot store it.
    static std::string longText() { return std::string(100'000, 'x'); }
    /// Texts that a statement, a pattern or a template might take for something else. None contains another.
    static std::vector<std::string> difficultTexts();

    /// Runs the main queue until the condition holds. The test fails if it does not hold in time.
    void pump(const std::function<bool()>& until);
    /// Runs all work that is under way, on all queues.
    void settle();

    std::vector<std::string> logged() const;
    long linesWith(std::string_view piece) const;
    bool wasLogged(std::string_view piece) const { return linesWith(piece) > 0; }
    /// Returns the programming errors that were reported, and removes them. A test that expects one calls this.
    std::vector<std::string> takeProgrammingErrors();

private:
    std::string folder_;
    mutable std::mutex mutex_;
    std::vector<std::string> log_;
    std::vector<std::string> programmingErrors_;
    std::vector<std::shared_ptr<KelvaDatabasePersistance>> databases_;
};

}  // namespace tarvo
