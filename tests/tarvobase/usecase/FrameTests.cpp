#include "platform/MainQueue.h"
#include "tarvobase/get_metadata/GetModulesUC.h"
#include "tarvobase/list_view/GetFiltersUseCase.h"
#include "tarvobase/usecase/BaseDataManager.h"
#include "tarvobase/usecase/ErrorProtocols.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tests/tarvobase/AccountTables.h"
#include "tests/tarvobase/Fixture.h"
#include "tests/tarvobase/NoticeListener.h"

namespace tarvo {
namespace {

struct EchoOperation {
    struct Request : BaseRequest {
        DataSource wanted = DataSource::both;
        DataSource source() const override { return wanted; }
    };
    struct Response : BaseResponse {
        explicit Response(std::string from) : from(std::move(from)) {}
        std::string from;
    };
    using DomainError = NoDomainError;
};

/// A request of a derived class, which must not lose its own members on the way.
struct MarkedRequest : EchoOperation::Request {
    std::string mark = "marked";
};

class EchoDM : public BaseDataManager<EchoOperation> {
public:
    enum class Local { absent, answers, fails };
    explicit EchoDM(Local local) : local(local) {}

    bool getDBResponse(const RequestPtr& request, OnDBSuccess onSuccess, OnDBError onError) override {
        auto marked = dynamic_cast<const MarkedRequest*>(request.get());
        if (local == Local::answers) onSuccess(Response(marked ? marked->mark : "database"));
        if (local == Local::fails) onError(Failure::unknownError());
        return local == Local::answers;
    }
    void getNWResponse(const RequestPtr&, OnNWSuccess onSuccess, OnNWError) override { onSuccess(Response("network")); }

    Local local;
};

class EchoUC final : public Usecase<EchoOperation> {
public:
    explicit EchoUC(EchoDM::Local local) : dataManager(std::make_shared<EchoDM>(local)) {}

private:
    void run(std::shared_ptr<const Request> request, UICallback handler) override {
        EXPECT_TRUE(UsecaseQueue::queue()->isCurrent());
        dataManager->runRequest(request, handler);
    }
    std::shared_ptr<EchoDM> dataManager;
};

class FrameTest : public FoundationTest {
protected:
    template <class Request>
    std::vector<std::string> eventsOf(EchoDM::Local local, Request request) {
        std::vector<std::string> events;
        std::make_shared<EchoUC>(local)->execute(
            std::move(request), [&](auto& response) { events.push_back("success " + response.from); },
            [&](auto& error) { events.push_back("error " + std::string(caseName(error.which()))); },
            [&](auto* response, auto* error) {
                EXPECT_TRUE(MainQueue::shared()->isCurrent());
                EXPECT_NE(response == nullptr, error == nullptr);
                events.push_back(response ? "complete" : "complete with error");
            });
        settle();
        return events;
    }
};

TEST_F(FrameTest, AnswersAsOftenAsTheSourceSays) {
    using L = EchoDM::Local;
    using Events = std::vector<std::string>;
    struct {
        DataSource source;
        L local;
        Events expected;
    } cases[] = {
        {DataSource::database, L::answers, {"success database", "complete"}},
        {DataSource::database, L::absent, {}},
        {DataSource::network, L::answers, {"success network", "complete"}},
        {DataSource::both, L::answers, {"success database", "complete", "success network", "complete"}},
        {DataSource::both, L::fails, {"error unknownError", "complete with error", "success network", "complete"}},
        {DataSource::either, L::answers, {"success database", "complete"}},
        {DataSource::either, L::absent, {"success network", "complete"}},
        {DataSource::none, L::answers, {}},
    };
    for (auto& one : cases) {
        EchoOperation::Request request;
        request.wanted = one.source;
        EXPECT_EQ(eventsOf(one.local, request), one.expected) << caseName(one.source);
    }
}

TEST_F(FrameTest, WorksWithoutAnyCallbackAndWithoutItsOwner) {
    auto usecase = std::make_shared<EchoUC>(EchoDM::Local::answers);
    std::weak_ptr weak = usecase;
    usecase->execute(EchoOperation::Request(), EchoUC::Callback());
    usecase.reset();
    settle();
    EXPECT_TRUE(weak.expired());
}

TEST_F(FrameTest, AUseCaseThatNoSharedPtrHoldsIsReported) {
    EchoUC usecase(EchoDM::Local::answers);
    usecase.execute(EchoOperation::Request(), [&](auto, auto) { FAIL() << "answered"; });
    GetFiltersUseCase delegateUsecase;
    delegateUsecase.getFilters(std::vector<Metadata>{});
    settle();
    auto reported = ::testing::HasSubstr("no shared_ptr holds");
    EXPECT_THAT(takeProgrammingErrors(), ::testing::ElementsAre(reported, reported));
}

TEST_F(FrameTest, DerivedRequestsAndResponsesKeepTheirClass) {
    MarkedRequest request;
    request.wanted = DataSource::database;
    EXPECT_EQ(eventsOf(EchoDM::Local::answers, request), (std::vector<std::string>{"success marked", "complete"}));
    struct Detailed : EchoOperation::Response {
        Detailed() : EchoOperation::Response("x") {}
        ResponseSource source() const override { return ResponseSource::network; }
    };
    auto source = ResponseSource::database;
    EchoUC::UICallback handler([&](auto& response) { source = response.source(); }, nullptr, nullptr);
    handler.onSuccess(Detailed());
    settle();
    EXPECT_EQ(source, ResponseSource::network);
}

class Link final : public CommonErrorProtocolWithChaining {
public:
    explicit Link(std::weak_ptr<CommonErrorProtocol> next) : next(std::move(next)) {}
    std::shared_ptr<CommonErrorProtocol> nextCommonErrorProtocolResponder() override { return next.lock(); }
    std::weak_ptr<CommonErrorProtocol> next;
};

TEST_F(FrameTest, FailuresTravelAlongTheChainUntilAResponderIsGone) {
    struct Listener final : NoticeListener<CommonErrorRelay> {
        void noticed(const std::string& notice) override { events.push_back(notice); }
        std::vector<std::string> events;
    };
    auto listener = std::make_shared<Listener>();
    auto upper = std::make_shared<Link>(listener);
    auto lower = std::make_shared<Link>(upper);
    auto reportAll = [&] {
        lower->parsingError();
        lower->networkResponseError();
        lower->networkParamsError();
        lower->networkIdentifierError();
        lower->noAuthtoken("7");
        lower->unableToGetMetadata("Leads", "ID");
    };
    reportAll();
    std::vector<std::string> expected{"parsingError",           "networkResponseError", "networkParamsError",
                                      "networkIdentifierError", "noAuthtoken 7",        "unableToGetMetadata Leads ID"};
    EXPECT_EQ(listener->events, expected);
    upper.reset();
    reportAll();
    EXPECT_EQ(listener->events, expected);
}

TEST_F(FrameTest, TwoFirstCallsMayRace) {
    auto adapter = openDatabase();
    adapter->createTable(accountTables().front());
    ModuleInDatabase("MODULE_DETAILS", adapter).storeModules({{.moduleName = "Leads"}});
    for (int round = 0; round < 20; ++round) {
        auto usecase = std::make_shared<GetModulesUC>();
        int answers = 0;
        for (int i = 0; i < 8; ++i)
            usecase->execute(GetModulesUC::Request({"Leads"}),
                             [&](auto* response, auto*) { answers += response->modules.size() == 1; });
        settle();
        ASSERT_EQ(answers, 8);
    }
}

}  // namespace
}  // namespace tarvo
