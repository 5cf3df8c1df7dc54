#include <thread>

#include "tests/sandbox/RunningSandbox.h"

namespace tarvo::sandbox::tests {
namespace {

class FaultsTests : public RunningSandbox {
protected:
    ValueList log() {
        Client control("localhost", port, certificates.authority);
        return *at(json(control.get("/control/requests")), "requests").asList();
    }
};

TEST_F(FaultsTests, EachFaultShowsOnTheWire) {
    auto whole = init()->body.size();
    const std::tuple<std::string, bool, bool, int> rows[] = {
        {"delay", true, true, 200},        {"dropBefore", false, false, 0},    {"dropAfter", false, false, 0},
        {"truncate", false, false, 200},   {"nonJson", true, false, 200},      {"errorEnvelope", true, true, 200},
        {"wrongTypes", true, true, 200},   {"missingBlocks", true, true, 200}, {"shortRows", true, true, 200},
        {"repeatBlocks", true, true, 200},
    };
    for (const auto& [fault, isAnswered, isJson, loggedStatus] : rows) {
        setFault(R"({"call":"getappinitdata","times":1,"fault":")" + fault + "\"}");
        auto answer = init();
        EXPECT_EQ(answer.has_value(), isAnswered) << fault;
        EXPECT_EQ(answer && json::parse(answer->body), isJson) << fault;
        auto last = log().back();
        EXPECT_EQ(at(last, "fault"), Value(fault));
        EXPECT_EQ(at(last, "status"), Value(loggedStatus)) << fault;
        if (!answer) {
            EXPECT_EQ(client->received(), fault == "truncate" ? whole / 2 : 0) << fault;
        }
        EXPECT_FALSE(block(json(init()), "tables").empty()) << "used up after " << fault;
    }
}

TEST_F(FaultsTests, ADelayEndsWhenItIsReleased) {
    setFault(R"({"call":"getappinitdata","fault":"delay","milliseconds":600000,"times":1})");
    std::optional<ClientAnswer> answer;
    std::thread caller([&] { answer = init(); });
    Client control("localhost", port, certificates.authority);
    // A release that comes before the delay has begun ends nothing, so it is repeated.
    while (log().empty()) ASSERT_EQ(control.postJson("/control/release", "{}")->status, 200);
    caller.join();
    EXPECT_FALSE(block(json(answer), "tables").empty());
}

TEST_F(FaultsTests, FaultsLieInARowAndEndByTheirTimes) {
    setFault(R"({"call":"getappinitdata","fault":"nonJson","times":2})");
    setFault(R"({"call":"*","fault":"errorEnvelope","code":"LIMIT","message":"later"})");
    EXPECT_TRUE(json(init()).isNull());
    EXPECT_TRUE(json(init()).isNull());
    for (int i = 0; i < 2; ++i) EXPECT_EQ(at(at(json(init()), "error").asList()->at(0), "code"), Value("LIMIT"));
    ASSERT_EQ(client->remove("/control/faults")->status, 200);
    EXPECT_FALSE(block(json(init()), "tables").empty());
}

TEST_F(FaultsTests, TheLogHoldsNoTokenAndNoValue) {
    init();
    client->post("/crm/v4/getappinitdata?authtoken=other-secret", {{"orgid", "value-of-orgid"}});
    client->post("/crm/v4/getappinitdata", {{"authtoken", "wrong-secret"}});
    auto answer = client->get("/control/requests")->body;
    auto file = files::read(folder + "/requests.log")->text();
    for (const auto& log : {answer, file})
        for (auto secret : {token, "other-secret", "wrong-secret", "value-of-orgid"})
            EXPECT_EQ(log.find(secret), std::string::npos) << log;

    auto requests = log();
    ASSERT_EQ(requests.size(), 3u);
    EXPECT_EQ(at(requests[1], "account"), Value("43"));
    EXPECT_EQ(at(requests[1], "parameters"), Value(ValueList{"authtoken", "orgid"}));
    EXPECT_EQ(at(requests[2], "status"), Value(401));
    EXPECT_EQ(client->remove("/control/requests")->status, 200);
    EXPECT_TRUE(log().empty());
}

TEST_F(FaultsTests, AServerThatEndsDoesNotWaitForDelays) {
    setFault(R"({"fault":"delay","milliseconds":600000})");
    std::thread waiting([this] {
        Client other("localhost", port, certificates.authority);
        other.post("/crm/v4/getappinitdata", {}, token);
    });
    // The fault is set, so the request waits in the server as soon as it is counted.
    while (at(json(client->get("/control/faults")), "hits").asInteger().value_or(0) == 0) std::this_thread::yield();
    EXPECT_FALSE(stopAsked);
    ASSERT_EQ(client->postJson("/control/stop", "{}")->status, 200);
    EXPECT_TRUE(stopAsked);
    sandbox->endDelays();
    server->stop();
    waiting.join();
}

}  // namespace
}  // namespace tarvo::sandbox::tests
