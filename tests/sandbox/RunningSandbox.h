#pragma once

#include <gtest/gtest.h>

#include "platform/Files.h"
#include "platform/Json.h"
#include "sandbox/Certificates.h"
#include "sandbox/HttpsServer.h"
#include "sandbox/Sandbox.h"
#include "tests/sandbox/Client.h"

namespace tarvo::sandbox::tests {

/// Returns the member of a map, or null for anything else, so that tests read answers without a check at each step.
inline Value at(const Value& value, std::string_view name) {
    const auto* map = value.asMap();
    return map ? map->valueOf(name) : Value();
}

/// Runs a server on a port and in a folder of its own.
class RunningSandbox : public ::testing::Test {
protected:
    void SetUp() override {
        folder = files::makeTemporaryDirectory("sandbox");
        auto made = ensureCertificates(folder, defaultHostNames());
        ASSERT_TRUE(made) << made.error();
        certificates = *made;
        SandboxOptions options;
        options.accounts = {{"42", token}, {"43", "other-secret"}};
        options.logPath = folder + "/requests.log";
        sandbox = std::make_unique<Sandbox>(options, [this] { stopAsked = true; });
        server = std::make_unique<HttpsServer>(certificates.server,
                                               [this](const Request& request) { return sandbox->handle(request); });
        auto started = server->start(0);
        ASSERT_TRUE(started) << started.error();
        port = *started;
        client = std::make_unique<Client>("localhost", port, certificates.authority);
    }

    void TearDown() override {
        client.reset();
        if (sandbox) sandbox->endDelays();
        server.reset();
        files::remove(folder);
    }

    std::optional<ClientAnswer> init() {
        return client->post("/crm/v4/getappinitdata", {}, std::string("Nimbra-oauthtoken ") + token);
    }
    Value json(const std::optional<ClientAnswer>& answer) {
        return answer ? json::parse(answer->body).value_or(Value()) : Value();
    }
    void setFault(const std::string& fault) {
        ASSERT_EQ(client->postJson("/control/faults", fault)->status, 200) << fault;
    }

    /// Returns an entry of an answer's result; null when there is none.
    static Value entryOf(const Value& answer, std::size_t index = 0) {
        auto result = at(at(answer, "response"), "result");
        return result.asList() && index < result.asList()->size() ? result.asList()->at(index) : Value();
    }
    /// Returns the "data" of the entries of that name, one after another.
    ValueList blocks(const Value& answer, std::string_view name) {
        ValueList found;
        auto result = at(at(answer, "response"), "result");
        if (!result.asList()) return found;
        for (const auto& entry : *result.asList())
            if (at(at(entry, "info"), "module") == Value(name)) found.push_back(at(entry, "data"));
        return found;
    }
    ValueList block(const Value& answer, std::string_view name) {
        auto found = blocks(answer, name);
        return found.size() == 1 && found[0].asList() ? *found[0].asList() : ValueList();
    }

    static constexpr const char* token = "secret-of-42";
    std::string folder;
    CertificateFiles certificates;
    std::unique_ptr<Sandbox> sandbox;
    std::unique_ptr<HttpsServer> server;
    std::unique_ptr<Client> client;
    std::atomic<bool> stopAsked = false;
    int port = 0;
};

}  // namespace tarvo::sandbox::tests
