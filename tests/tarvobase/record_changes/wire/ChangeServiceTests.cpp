#include "platform/Json.h"
#include "tarvobase/record_changes/wire/AddEditRecordNetworkService.h"
#include "tarvobase/record_changes/wire/ChangeAnswerParser.h"
#include "tarvobase/record_changes/wire/DeleteRecordNetworkService.h"
#include "tarvobase/record_changes/wire/UploadAttachmentNetworkService.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

std::string entry(const std::string& members) { return R"({"response":{"result":[{)" + members + "}]}}"; }

NetworkAnswer answered(const std::string& body, int status = 200) {
    return {.body = Data(body), .response = URLResponse{.statusCode = status, .url = "", .headers = {}}};
}

/// An answer in one line: its outcome, the id, the record's fields or the refusal, and the reason of silence.
std::string shown(const ChangeAnswer& answer) {
    std::string line = answer.isUnsent ? "unsent" : std::string(caseName(answer.outcome));
    if (!answer.recordId.empty()) line += " " + answer.recordId;
    if (answer.record) line += " " + *json::write(Value(*answer.record));
    if (answer.refusal) line += " " + *json::write(Value(answer.refusal->toJSON()));
    if (answer.silence) line += " " + std::string(caseName(*answer.silence));
    return line;
}

TEST(ChangeAnswerTest, AnAddIsAcceptedInEveryFormThatHasAServersId) {
    struct {
        std::string members, expected;
    } cases[] = {
        {R"("info":{"nodata":0},"data":[[["id","7"],["Company","A"]]])", R"(accepted 7 {"id":"7","Company":"A"})"},
        {R"("info":{"nodata":0},"data":[[["id","7"]]])", "accepted 7"},
        {R"("info":{},"data":[["id","7"]])", "accepted 7"},
        {R"("info":{},"data":[{"id":"7"}])", "accepted 7"},
        {R"("info":{"recordId":"7"})", "accepted 7"},
        {R"("info":{"recordId":7},"data":[])", "accepted 7"},
        {R"("data":["7","2026-01-01T00:00:00Z","2026-01-01T00:00:00Z"])", "accepted 7"},
        {R"("info":{"recordId":"7"},"data":[{"id":"7"}],"error":[])", "accepted 7"},
        // No id, a temporary one, or two that differ.
        {R"("info":{},"data":[])", "unreadable"},
        {R"("info":{},"data":[[["Company","A"]]])", "unreadable"},
        {R"("data":["7","2026-01-01T00:00:00Z"])", "unreadable"},
        {R"("info":{"recordId":""})", "unreadable"},
        {R"("info":{"recordId":"NEW_123456789"})", "unreadable"},
        {R"("info":{"recordId":"TarvoTEMPID#1"})", "unreadable"},
        {R"("info":{"recordId":"8"},"data":[{"id":"7"}])", "unreadable"},
        {R"("info":[],"data":"7")", "unreadable"},
    };
    for (auto& one : cases)
        EXPECT_EQ(shown(ChangeAnswerParser::ofAdd(answered(entry(one.members)))), one.expected) << one.members;
}

TEST(ChangeAnswerTest, AnAnswerToANoteHasItsTimes) {
    const std::string times = R"({"Created_Time":"2026-01-01T00:00:00Z","Modified_Time":"2026-01-02T00:00:00Z"})";
    struct {
        std::string members, expected;
    } cases[] = {
        {R"("data":["7","2026-01-01T00:00:00Z","2026-01-02T00:00:00Z"])", "accepted 7 " + times},
        {R"("data":[[["id","7"],["Note_Title","A"],["Created_Time","2026-01-01T00:00:00Z"],)"
         R"(["Modified_Time","2026-01-02T00:00:00Z"]]])",
         "accepted 7 " + times},
        {R"("info":{"recordId":"7"})", "accepted 7"},
        {R"("data":["7","2026-01-01T00:00:00Z"])", "unreadable"},
        {R"("info":{"recordId":"7"},"data":["7","2026-01-01T00:00:00Z"])", "unreadable"},
        {R"("data":["7","2026-01-01T00:00:00Z","soon"])", "unreadable"},
    };
    for (auto& one : cases) {
        EXPECT_EQ(shown(ChangeAnswerParser::ofAddedNote(answered(entry(one.members)))), one.expected) << one.members;
        EXPECT_EQ(shown(ChangeAnswerParser::ofEditedNote(answered(entry(one.members)), "7")), one.expected);
        EXPECT_EQ(shown(ChangeAnswerParser::ofEditedNote(answered(entry(one.members)), "8")), "unreadable");
    }
}

TEST(ChangeAnswerTest, AnErrorListIsARefusalIfItHasCodeAndMessage) {
    const std::string refused = R"(refused {"code":"C","message":"M"})";
    struct {
        std::string body, expected;
    } cases[] = {
        {entry(R"("info":{"recordId":"7"},"error":["C","M"])"), refused},
        {entry(R"("info":{"details":{"api_name":"Email"}},"error":["C","M"])"),
         R"(refused {"code":"C","message":"M","details":{"api_name":"Email"}})"},
        {entry(R"("error":[{"code":"C","message":"M"},{"code":"D","message":"N"}])"), refused},
        {entry(R"("info":{"details":{"a":1}},"error":[1,{"code":"C","message":"M","details":{"b":2}}])"),
         R"(refused {"code":"C","message":"M","details":{"b":2}})"},
        {R"({"error":[{"code":"C","message":"M"}]})", refused},
        {R"({"error":["C","M"]})", refused},
        {R"({"response":{"error":{"code":"C","message":"M"}}})", refused},
        {entry(R"("info":{"recordId":"7"},"error":["C"])"), "unreadable"},
        {R"({"response":{"error":{"code":1}}})", "unreadable"},
    };
    for (auto& one : cases) {
        EXPECT_EQ(shown(ChangeAnswerParser::ofAdd(answered(one.body))), one.expected) << one.body;
        EXPECT_EQ(shown(ChangeAnswerParser::ofEdit(answered(one.body), "7")), one.expected) << one.body;
        EXPECT_EQ(shown(ChangeAnswerParser::ofDelete(answered(one.body), "7")), one.expected) << one.body;
        EXPECT_EQ(shown(ChangeAnswerParser::ofUpload(answered(one.body))), one.expected) << one.body;
    }
}

TEST(ChangeAnswerTest, WhatIsNotAnAnswerOfTheServerIsUnreadable) {
    for (auto& body : {"", "null", "[]", "{", "<html>", R"({"response":[]})", R"({"response":{"result":[]}})",
                       R"({"response":{"result":[[]]}})", R"({"error":{"code":"C","message":"M"}})"}) {
        EXPECT_EQ(shown(ChangeAnswerParser::ofAdd(answered(body))), "unreadable") << body;
        EXPECT_EQ(shown(ChangeAnswerParser::ofEdit(answered(body, 500), "7")), "unreadable") << body;
        EXPECT_EQ(shown(ChangeAnswerParser::ofDelete(answered(body), "7")), "unreadable") << body;
        EXPECT_EQ(shown(ChangeAnswerParser::ofUpload(answered(body))), "unreadable") << body;
    }
}

TEST(ChangeAnswerTest, AnAnswerForAnotherRecordIsUnreadable) {
    auto other = answered(entry(R"("info":{"recordId":"8"})")), same = answered(entry(R"("info":{"recordId":"7"})"));
    EXPECT_EQ(shown(ChangeAnswerParser::ofEdit(other, "7")), "unreadable");
    EXPECT_EQ(shown(ChangeAnswerParser::ofDelete(other, "7")), "unreadable");
    EXPECT_EQ(shown(ChangeAnswerParser::ofEdit(same, "7")), "accepted 7");
    EXPECT_EQ(shown(ChangeAnswerParser::ofDelete(same, "7")), "accepted 7");
    auto without = answered(entry(R"("info":{"module":"Leads"})"));
    EXPECT_EQ(shown(ChangeAnswerParser::ofEdit(without, "7")), "unreadable");
    EXPECT_EQ(shown(ChangeAnswerParser::ofDelete(without, "7")), "accepted 7");
}

TEST(ChangeAnswerTest, TheIdOfAnUploadIsInTheFirstEntryOrInTheAnswer) {
    struct {
        std::string body, expected;
    } cases[] = {
        {entry(R"("info":{},"data":[{"id":"7"}])"), "accepted 7"},
        {entry(R"("info":{},"data":["7"])"), "accepted 7"},
        {R"({"data":[{"id":"7","File_Name":"a.txt"}]})", "accepted 7"},
        {R"({"data":[["id","7"]]})", "accepted 7"},
        {R"({"response":{"result":[{"data":[]}]},"data":["7"]})", "accepted 7"},
        {R"({"data":[]})", "unreadable"},
    };
    for (auto& one : cases)
        EXPECT_EQ(shown(ChangeAnswerParser::ofUpload(answered(one.body))), one.expected) << one.body;
}

TEST(ChangeAnswerTest, BeingOfflineIsNoAnswer) {
    using Kind = NetworkError::Kind;
    struct {
        Kind kind;
        std::string expected;
    } failures[] = {{Kind::notSent, "unsent notSignedIn"},
                    {Kind::cannotConnect, "unsent noConnection"},
                    {Kind::connectionLost, "noAnswer noConnection"},
                    {Kind::certificate, "unsent noConnection"},
                    {Kind::timeout, "noAnswer timeout"},
                    {Kind::shutDown, "noAnswer shutDown"},
                    {Kind::outdated, "noAnswer outdated"},
                    {Kind::tooLarge, "unreadable"},
                    {Kind::file, R"(refused {"code":"txnFILE_NOT_READABLE","message":"txnFILE_NOT_READABLE"})"}};
    for (auto& one : failures) {
        NetworkAnswer answer{.error = NetworkError{one.kind, "test"}};
        EXPECT_EQ(shown(ChangeAnswerParser::ofEdit(answer, "7")), one.expected);
        EXPECT_EQ(shown(ChangeAnswerParser::ofUpload(answer)), one.expected);
    }
    auto body = entry(R"("info":{"recordId":"7"},"error":["C","M"])");
    EXPECT_EQ(shown(ChangeAnswerParser::ofAdd(answered(body, 401))), "unsent notSignedIn");
    EXPECT_EQ(shown(ChangeAnswerParser::ofDelete(answered(body, 429), "7")), "unsent busy");
    EXPECT_EQ(shown(ChangeAnswerParser::ofUpload(answered(body, 503))), "noAnswer busy");
    EXPECT_EQ(shown(ChangeAnswerParser::ofAdd(answered(body, 400))), R"(refused {"code":"C","message":"M"})");
}

class ChangeServiceTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        configuration().currentOrgID = "77";
    }
    template <class Service>
    std::shared_ptr<Service> scripted(std::shared_ptr<Service> service) {
        service->setNetworkAdapter(network);
        return service;
    }
    ChangeCompletion noting() {
        return [this](ChangeAnswer answer) { answers += shown(answer) + ";"; };
    }

    std::shared_ptr<ScriptedNetworkAdapter> network = std::make_shared<ScriptedNetworkAdapter>();
    std::string answers;
};

TEST_F(ChangeServiceTest, EachRequestCarriesItsKeyAndGoesToItsCall) {
    using Operation = AddRecordNetworkServiceOperation;
    auto records = scripted(std::make_shared<AddEditRecordNetworkService>());
    auto deletes = scripted(std::make_shared<DeleteRecordNetworkService>());
    for (auto operation : {Operation::add, Operation::edit}) {
        network->answer(entry(R"("info":{"recordId":"7"})"));
        records->addRecord({.jsonData = Data(std::string("{}")),
                            .params = {{"module", "Leads"}, {"moduleAPI", "Leads_API"}},
                            .operation = operation,
                            .recordID = "7",
                            .key = "KEY"},
                           noting());
        settle();
    }
    network->answer(entry(R"("info":{})"));
    deletes->deleteRecord({.params = {{"module", "Leads"}, {"id", "7"}}, .recordID = "7", .key = "KEY"}, noting());
    settle();
    EXPECT_EQ(answers, "accepted 7;accepted 7;accepted 7;");

    auto calls = network->calls();
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_TRUE(calls[0].request.url.ends_with("/products/addrecord?module=Leads&moduleAPI=Leads_API"));
    EXPECT_TRUE(calls[1].request.url.ends_with("/products/updaterecord?module=Leads&moduleAPI=Leads_API"));
    EXPECT_TRUE(calls[2].request.url.ends_with("/products/deleterecord"));
    EXPECT_EQ(calls[0].request.headers.find("Content-Type"), "application/json");
    for (auto& call : calls) {
        EXPECT_EQ(call.request.method, "POST");
        EXPECT_EQ(call.request.headers.find("x-transaction-id"), "KEY");
        EXPECT_EQ(call.request.headers.find("X-CRM-ORG"), "77");
        EXPECT_EQ(call.priority, NTaskPriority::normal);
        EXPECT_TRUE(call.authorization);
    }
}

TEST_F(ChangeServiceTest, AnUploadCarriesKeyAndOrganisation) {
    auto service = scripted(std::make_shared<UploadAttachmentNetworkService>());
    service->uploadAttachment({.params = {{"id", "5"}}, .fileURL = "/tmp/a b.txt", .key = "KEY"}, noting());
    settle();
    auto uploads = network->uploads();
    ASSERT_EQ(uploads.size(), 1u);
    auto& upload = uploads.front();
    EXPECT_TRUE(upload.url.ends_with("/uploadattachment"));
    EXPECT_EQ(upload.headers.find("x-transaction-id"), "KEY");
    EXPECT_EQ(upload.headers.find("X-CRM-ORG"), "77");
    EXPECT_TRUE(upload.headers.find("Authorization"));
    EXPECT_EQ(upload.fileParamName + " " + upload.fileName, "file a b.txt");
    EXPECT_EQ(upload.priority, NTaskPriority::high);
    upload.completionHandler(answered(R"({"data":[{"id":"9"}]})"));
    EXPECT_EQ(answers, "accepted 9;");
}

TEST_F(ChangeServiceTest, WithoutATokenOrAfterASwitchThereIsNoAnswer) {
    auto records = scripted(std::make_shared<AddEditRecordNetworkService>());
    auto uploads = scripted(std::make_shared<UploadAttachmentNetworkService>());
    auto sendBoth = [&] {
        records->addRecord({.jsonData = Data(std::string("{}")), .recordID = "7", .key = "KEY"}, noting());
        uploads->uploadAttachment({.fileURL = "/tmp/a.txt", .key = "KEY"}, noting());
        settle();
    };
    signIn("1001", std::nullopt);
    sendBoth();
    EXPECT_EQ(answers, "unsent notSignedIn;unsent notSignedIn;");
    answers.clear();
    signIn("1001");
    configuration().currentOrgID = "78";
    sendBoth();
    EXPECT_EQ(answers, "noAnswer outdated;noAnswer outdated;");
    EXPECT_TRUE(network->calls().empty() && network->uploads().empty());
}

}  // namespace
}  // namespace tarvo
