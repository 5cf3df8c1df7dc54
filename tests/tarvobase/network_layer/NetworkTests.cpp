#include "platform/Clock.h"
#include "platform/Json.h"
#include "tarvobase/network_layer/BaseNetworkService.h"
#include "tarvobase/network_layer/StaticBaseNetworkService.h"
#include "tarvobase/value_objects/account/OrganisationInUserDefaults.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using Case = CRMAPIs::Case;

class NetworkConstantsTest : public FoundationTest {
protected:
    NetworkConstants constants;
};

TEST_F(NetworkConstantsTest, ComposesTheURLOfEachKindOfCall) {
    configuration().dclBD = "base.test";
    const std::pair<std::string, std::string> urls[] = {
        {constants.getURL(Case::appMetadata), "/crm/v4/getmetadatainfo"},
        {constants.getURL(Case::appMetadata, ApiVersion::v5), "/crm/v5/getmetadatainfo"},
        {constants.getURLTo(Case::getRecords, "CustomModule1"), "/crm/v4/custommodule1/products/getrecords"},
        {constants.getURL(Case::downloadUserPhoto), "/contacts/downloadphoto"},
        {constants.getURL(CRMAPIs::getMyJobsRecord("12")), "/crm/v4/12/markasread"},
        {constants.getURL(Case::appinitdata), "/crm/v4/getappinitdata"},
    };
    for (auto& [url, path] : urls) EXPECT_EQ(url, "https://mproxy.base.test" + path);
    auto webRoot = constants.getURL(Case::relatedEmailSharedDetails);
    EXPECT_TRUE(webRoot.ends_with("/crm/v2/"));
    EXPECT_EQ(constants.getURL(CRMAPIs::sendMail("Leads", "9")), webRoot + "Leads/9/actions/send_mail");
}

TEST_F(NetworkConstantsTest, URLsFollowTheVariantOfTheConfiguration) {
    configuration().dclBD = "base.test";
    configuration().servletPath = ServletPathV4::lumet;
    configuration().initDataType = InitDataType::lumet;
    configuration().dclPrefix = "eu-";
    configuration().serverType = MProxyServerType::type0;
    EXPECT_EQ(constants.getURL(Case::getUserDetails), "https://eu-sandbox.base.test/vestra/v4/getuserdetails");
    EXPECT_EQ(constants.getURL(Case::appinitdata), "https://eu-sandbox.base.test/vestra/v4/getlumetappinitdata");
    EXPECT_EQ(constants.getBaseUrl(DependentServerType::contactServer, "d", std::nullopt), "https://contacts.d");
    auto webRoot = constants.getURL(Case::relatedEmailSharedDetails);
    configuration().baseURLType = WebBaseURLType::lumetV2;
    EXPECT_NE(constants.getURL(Case::relatedEmailSharedDetails), webRoot);
}

/// A request that was sent to https://h.test, in one line: method, path, authorization, parameters and body.
std::string sent(const NetworkCall& call) {
    auto text = call.request.method + " " + call.request.url.substr(std::string("https://h.test").size());
    auto bearer = call.authorization == "Nimbra-oauthtoken secret-token";
    text += " " + (bearer ? "bearer" : call.authorization.value_or("-"));
    text += " " + (call.params ? json::write(Value(*call.params)).value() : "-");
    if (call.request.body) text += " " + call.request.body->text();
    return text;
}

class ServiceTest : public FoundationTest {
protected:
    template <class Service>
    std::shared_ptr<Service> scripted(std::shared_ptr<Service> service) {
        adapter = std::make_shared<ScriptedNetworkAdapter>();
        service->setNetworkAdapter(adapter);
        return service;
    }
    std::shared_ptr<BaseNetworkService> base(std::string url = "https://h.test/call") {
        auto service = scripted(std::make_shared<BaseNetworkService>(std::make_shared<NetworkConstants>()));
        service->baseURL = std::move(url);
        return service;
    }
    std::shared_ptr<StaticBaseNetworkService> plain() { return scripted(std::make_shared<StaticBaseNetworkService>()); }

    /// Completions of requests are collected here.
    NetworkCompletion keep() {
        return [this](NetworkAnswer answer) { answers.push_back(std::move(answer)); };
    }
    /// Returns what the only completion got: a body, or an error with the body that it must not have.
    std::string taken() {
        settle();
        if (answers.size() != 1) return std::to_string(answers.size()) + " answers";
        auto answer = std::exchange(answers, {}).front();
        return answer.error ? std::string(bren::kindName(answer.error->kind)) + answer.body.text() : answer.body.text();
    }
    /// Returns what is sent for a request that completes once, or "unsent" and the error.
    template <class Service, class Request>
    std::string outcomeOf(const std::shared_ptr<Service>& service, Request request) {
        request.completionHandler = keep();
        service->sendRequest(std::move(request));
        auto answer = taken();
        return adapter->calls().empty() ? "unsent " + answer : sent(adapter->calls().front());
    }
    void chooseOrganisation() {
        OrganisationInUserDefaults().setCurrentOrganisation(Organisation{"77", "Org", true, true});
    }

    std::shared_ptr<ScriptedNetworkAdapter> adapter;
    std::vector<NetworkAnswer> answers;
};

TEST_F(ServiceTest, ReportsACallToTheDelegateInOrder) {
    struct Listener final : NetworkServiceDelegate {
        void networkCallGiven(BaseNetworkService&) override { notices.push_back("given"); }
        void dataFromNetworkCallGivenToParser(BaseNetworkService&) override { notices.push_back("to the parser"); }
        void dataParsed(BaseNetworkService&) override { notices.push_back("parsed"); }
        void error(const NetworkError& error, BaseNetworkService&) override {
            notices.push_back(std::string(bren::kindName(error.kind)));
        }
        std::vector<std::string> notices;
    };
    auto listener = std::make_shared<Listener>();
    auto service = base();
    service->delegate = listener;
    adapter->answer("{}");
    outcomeOf(service, BaseNetworkService::Request());
    EXPECT_EQ(listener->notices, (std::vector<std::string>{"given", "to the parser", "parsed"}));
    listener->notices.clear();
    signIn("1001", std::nullopt);
    outcomeOf(service, BaseNetworkService::Request());
    EXPECT_EQ(listener->notices, std::vector<std::string>{"not sent"});
}

TEST_F(ServiceTest, SendsParametersDomainAndOrganisationInTheirPlaces) {
    using R = BaseNetworkService::Request;
    chooseOrganisation();
    ValueMap a{{"a", "1 2"}};
    struct {
        std::optional<std::string> domain;
        bool mayPassOrganisation;
        R request;
        std::string expected;
    } cases[] = {
        {{}, true, R{.params = a}, R"(POST /call bearer {"a":"1 2"})"},
        {{}, true, R{.params = a, .body = Data("B")}, "POST /call?a=1%202 bearer - B"},
        {{}, true, R{.params = a, .method = HTTPMethod::get}, R"(GET /call bearer {"a":"1 2"})"},
        {"v", true, R{.params = a, .body = Data("B")}, "POST /call?a=1%202&domain=v bearer - B"},
        {"v", true, R{}, "POST /call?domain=v bearer -"},
        {{}, false, R{.params = ValueMap(), .shouldAddOrgId = true}, "POST /call bearer {}"},
        {{}, true, R{.params = ValueMap(), .shouldAddOrgId = true}, R"(POST /call bearer {"orgid":"77"})"},
        {{}, true, R{.shouldAddOrgId = true}, "POST /call bearer -"},
    };
    for (auto& one : cases) {
        configuration().verticalDomain = one.domain;
        configuration().passOrgID = one.mayPassOrganisation;
        EXPECT_EQ(outcomeOf(base(), one.request), one.expected);
    }
}

TEST_F(ServiceTest, ACallWithoutAuthenticationSendsNeitherTokenNorOrganisation) {
    chooseOrganisation();
    configuration().passOrgID = true;
    auto open = base();
    open->shouldAddAuthtoken = false;
    EXPECT_EQ(outcomeOf(open, BaseNetworkService::Request{.params = ValueMap(), .shouldAddOrgId = true}),
              "POST /call - {}");
}

TEST_F(ServiceTest, APlainTokenIsSentAloneAndByTheStaticBaseInTheURL) {
    signIn("1001", "secret-token", AuthenticationType::plain);
    EXPECT_EQ(outcomeOf(base(), BaseNetworkService::Request()), "POST /call secret-token -");
    StaticBaseNetworkService::Request request{
        .params = ValueMap{{"a", 1}}, .url = "https://h.test/x", .body = Data("B")};
    EXPECT_EQ(outcomeOf(plain(), request), "POST /x?authtoken=secret-token&a=1 - - B");
}

TEST_F(ServiceTest, TheStaticBaseSendsNoDomainAndAlsoWithoutAToken) {
    using R = StaticBaseNetworkService::Request;
    ValueMap a{{"a", 1}};
    configuration().verticalDomain = "v";
    std::string url = "https://h.test/x";
    EXPECT_EQ(outcomeOf(plain(), R{.params = a, .url = url, .body = Data("B")}), "POST /x?a=1 bearer - B");
    EXPECT_EQ(outcomeOf(plain(), R{.params = ValueMap(), .url = url, .body = Data("B")}), "POST /x bearer {} B");
    signIn("1001", std::nullopt);
    EXPECT_EQ(outcomeOf(plain(), R{.params = a, .url = url}), R"(POST /x - {"a":1})");
}

/// An account whose token comes when the test gives it.
class SlowToken final : public AuthenticationProtocol {
public:
    AuthenticationType authenticationType() override { return AuthenticationType::oauth; }
    std::optional<std::vector<std::string>> loggedInUsers() override { return std::vector{user}; }
    std::optional<std::string> currentUser() override { return user; }
    void authToken(const std::string&, TokenCompletion completion) override { give = std::move(completion); }

    std::string user = "1001";
    TokenCompletion give;
};

TEST_F(ServiceTest, NothingIsSentAfterASwitch) {
    auto& settings = configuration();
    std::shared_ptr<DatabaseAdapter> database = openDatabase();
    struct {
        std::string name;
        std::function<void()> change;
        bool outdates = true;
    } switches[] = {
        {"nothing", [] {}, false},
        {"account", [&] { signIn("2002"); }},
        {"organisation", [&] { settings.currentOrgID = "7"; }},
        {"database", [&] { settings.databaseAdapter = nullptr; }},
        {"naming", [&] { settings.fieldIdentifier = FieldIdentifier::fieldAPINameIdentifier(); }, false},
    };
    for (auto& one : switches) {
        SCOPED_TRACE(one.name);
        signIn("1001");
        settings.currentOrgID = "";
        settings.databaseAdapter = database;
        auto service = base();
        one.change();
        service->sendRequest({.completionHandler = keep()});
        service->upload({.url = "https://h.test/up", .source = Data("x"), .completionHandler = keep()});
        settle();
        EXPECT_EQ(adapter->calls().empty(), one.outdates);
        EXPECT_EQ(adapter->uploads().empty(), one.outdates);
        EXPECT_EQ(std::exchange(answers, {}).size(), one.outdates ? 2u : 1u);
    }
}

TEST_F(ServiceTest, AnAnswerOrATokenThatComesAfterASwitchIsNotUsed) {
    auto newer = plain();
    adapter->answer("body");
    adapter->beforeAnswer = [this] { signIn("2002"); };
    newer->sendRequest({.url = "https://h.test/x", .completionHandler = keep()});
    EXPECT_EQ(taken(), "the account at work has changed") << "and no body";

    auto slow = std::make_shared<SlowToken>();
    configuration().authentication = slow;
    auto service = base();
    service->sendRequest({.completionHandler = keep()});
    slow->user = "2002";
    slow->give("token-of-1001");
    EXPECT_EQ(taken(), "the account at work has changed");
    EXPECT_TRUE(adapter->calls().empty());
}

TEST_F(ServiceTest, ATokenThatNeverComesEndsTheCall) {
    auto slow = std::make_shared<SlowToken>();
    configuration().authentication = slow;
    platform::Clock::set(platform::Clock::now());
    auto service = base();
    service->sendRequest({.completionHandler = keep()});
    platform::Clock::advance(service::tokenTimeLimit);
    EXPECT_EQ(taken(), "time-out");
    slow->give("late");
    settle();
    EXPECT_TRUE(adapter->calls().empty());
}

TEST_F(ServiceTest, ACallThatCannotBeSentStillCompletes) {
    struct Listener final : CommonErrorProtocol {
        void noAuthtoken(const std::string& user) override { users.push_back(user); }
        std::vector<std::string> users;
    };
    EXPECT_EQ(outcomeOf(base("not a url"), BaseNetworkService::Request()), "unsent invalid URL");
    EXPECT_EQ(outcomeOf(plain(), StaticBaseNetworkService::Request()), "unsent invalid URL");

    auto listener = std::make_shared<Listener>();
    signIn("1001", std::nullopt);
    auto service = base();
    service->errorHandler = listener;
    EXPECT_EQ(outcomeOf(service, BaseNetworkService::Request()), "unsent not sent");
    EXPECT_EQ(listener->users, std::vector<std::string>{"1001"});

    configuration().authentication = nullptr;
    EXPECT_EQ(outcomeOf(base(), BaseNetworkService::Request()), "unsent not sent");
    EXPECT_EQ(takeProgrammingErrors().size(), 1u);
}

TEST_F(ServiceTest, SetsTheFixedHeadersAndLogsNamesOnly) {
    configuration().appBuildID = "build-7";
    configuration().currentOrgID = "org-9";
    auto service = base();
    outcomeOf(service, BaseNetworkService::Request());
    auto request = adapter->calls().front().request;
    EXPECT_EQ(request.headers.find("x-app-buildid"), "build-7");
    EXPECT_EQ(request.headers.find("X-CRM-ORG"), "org-9");
    EXPECT_EQ(request.timeout, std::chrono::seconds(60));
    EXPECT_TRUE(wasLogged("Header: "));
    EXPECT_FALSE(wasLogged("build-7"));
}

TEST_F(ServiceTest, AnswersThroughTaskCompletionHandlerWhileTheServiceLives) {
    struct Service final : BaseNetworkService {
        using BaseNetworkService::BaseNetworkService;
        void taskCompletionHandler(NetworkAnswer answer) override { bodies.push_back(answer.body.text()); }
        std::vector<std::string> bodies;
    };
    auto service = scripted(std::make_shared<Service>(std::make_shared<NetworkConstants>()));
    service->baseURL = "https://h.test/";
    adapter->answer("one");
    service->sendRequest({});
    settle();
    EXPECT_EQ(service->bodies, std::vector<std::string>{"one"});
}

TEST_F(ServiceTest, UploadsCarryTheTokenInTheirHeadersOrParameters) {
    configuration().appBuildID = "build-7";
    auto service = plain();
    service->uploadRequest(
        {.url = "https://h.test/up", .params = {{"k", "v"}}, .fileURL = "/tmp/dir/photo.png", .fileParamName = "file"});
    signIn("1001", "secret-token", AuthenticationType::plain);
    service->uploadRequest({.url = "https://h.test/up", .fileURL = "/tmp/x", .fileParamName = "file"});
    settle();
    auto uploads = adapter->uploads();
    ASSERT_EQ(uploads.size(), 2u);
    EXPECT_EQ(uploads[0].headers.find("Authorization"), "Nimbra-oauthtoken secret-token");
    EXPECT_EQ(uploads[0].headers.find("x-app-buildid"), "build-7");
    EXPECT_EQ(uploads[0].fileName, "photo.png");
    EXPECT_EQ(uploads[1].headers.find("Authorization"), std::nullopt);
    EXPECT_EQ(uploads[1].params.valueOf("authtoken"), Value("secret-token"));
}

}  // namespace
}  // namespace tarvo
