#include "sandbox/data/StaticTables.h"
#include "tarvobase/init_process/parsers/PipelinesNWParser.h"
#include "tarvobase/init_process/steps/GetCurrentUserDM.h"
#include "tarvobase/init_process/steps/InitCurrencyDM.h"
#include "tarvobase/init_process/steps/InitGetPermissionsDM.h"
#include "tarvobase/init_process/steps/InitGetPipelinesDM.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

using enum Process;
using Kind = NetworkError::Kind;

std::string body(const std::string& rows, const std::string& info = R"("servertime":1)") {
    return R"({"response":{"result":[{"info":{"module":"x",)" + info + R"(},"data":)" + rows + "}]}}";
}
std::string older(const std::string& currencies, const std::string& tax = R"([{"error":0},[["T1","VAT"]]])") {
    return R"({"response":[)" + tax + "," + currencies + "]}";
}
std::string currencies(const std::string& rows) { return older(R"([{"servertime":5,"error":0},)" + rows + "]"); }
const std::string refusedBody = R"({"error":[{"code":"NO"}]})";

const std::string dollar = R"(["1","1",",","true","USD","C1","true","$","true","2","US Dollar","."])";
const std::string euro = R"(["2","0.85","","false","EUR","C2","false","€","x","-3","Euro",null])";
std::string replaced(std::string text, const std::string& piece, const std::string& by) {
    return text.replace(text.find(piece), piece.size(), by);
}
const std::string storedUserRow =
    R"(["1001","Ann Lee","a@x","","","","",7,"Ann","Lee","U1","active","true","CEO","Standard","P1"])";
const std::string pipelineRows = R"([["P1","Std","Standard",[["Open","Opened","1","S1"],["Won",3,"2","S2"],["Cut"]]],
    [7,"a","b",[["x","y","1","S9"]]],["P2","Other","Others",[["Open","Opened","1","S1"]]],["S1","Open","Opened","Open"],
    ["S2","Won","Won",  "Closed Won"],["S3","n","d","Sometimes"],["S4","n","d"],"row"])";

/// Keeps the call until the test answers it.
struct HeldCurrencyService final : InitGetCurrencyNSP {
    void getCurrencyMetadata(NetworkCompletion callback) override { answer = std::move(callback); }
    NetworkCompletion answer;
};

/// An answer of a step and what the step makes of it.
struct AnswerCase {
    std::string answer;
    std::string rows;
    bool isUsable = false;
};
class InitStepTest : public ServerTest {
protected:
    void makeTables() {
        createTables(sandbox::staticTables(sandbox::Naming::column, ""));
        stores().modules()->storeModule({.moduleName = "Deals", .apiName = "Deals_API"});
        runStatement(
            "INSERT INTO MODULE_LAYOUT_INFO (module_name, layout_id) VALUES "
            "('Leads','L0'),('Deals','L2'),('Deals','L1')");
        runStatement("INSERT INTO CURRENCY_METADATA (order_no, exchange_rate, currency_id) VALUES (9, 9, 'old')");
        runStatement("INSERT INTO DEALS_STAGES (id, name) VALUES ('S7', 'a stage of no pipeline')");
    }
    Stores stores() const { return Stores::over(database); }

    std::shared_ptr<FlaggedStep> make(Process process) {
        auto defaults = std::make_shared<BrenUserDefaults>();
        std::shared_ptr<FlaggedStep> step;
        if (process == currency) step = InitCurrencyDM::make(database, defaults, overNetwork<InitGetCurrencyNS>());
        if (process == permission)
            step = InitGetPermissionsDM::make(database, defaults, overNetwork<GetPermissionsNS>());
        if (process == currentUser) step = GetCurrentUserDM::make(database, defaults, overNetwork<GetCurrentUserNS>());
        if (process == pipelines) step = InitGetPipelinesDM::make(database, defaults, overNetwork<GetPipelinesNS>());
        step->delegate = listener;
        step->errorResponder = listener;
        return step;
    }
    /// Makes a step and runs it to its end, as the runner does. Returns what the delegate received.
    std::string execute(Process process) {
        listener->ended.clear();
        listener->notices.clear();
        auto step = make(process);
        step->execute([&] { closures += "success "; }, [&] { closures += "failure "; });
        settle();
        if (auto user = std::dynamic_pointer_cast<CurrentUserStep>(step)) user->storeParsedUser();
        return listener->ended;
    }
    /// Expects each answer to be stored with the flag set, or to be reported with table and flag unchanged.
    void expectOutcomes(Process process, const std::vector<AnswerCase>& cases) {
        makeTables();
        auto name = std::string(rawText(process));
        for (auto& one : cases) {
            SCOPED_TRACE(one.answer);
            BrenUserDefaults().removeValueForKey(name + "_downloadable", UserDefaultsGroup::current());
            network->answer(one.answer);
            EXPECT_EQ(execute(process), name + (one.isUsable ? " true" : " false"));
            EXPECT_EQ(stored(process), one.rows);
            EXPECT_EQ(flag(process), one.isUsable);
            EXPECT_EQ(listener->notices, one.isUsable ? "" : "parsingError;");
            EXPECT_EQ(std::exchange(closures, ""), one.isUsable ? "success " : "failure ");
        }
    }
    static bool flag(Process process) {
        return UserDefaultsUtil(std::make_shared<BrenUserDefaults>()).isCompleted(std::string(rawText(process)));
    }
    /// Returns the rows of the step's table, columns joined by "|".
    std::string stored(Process process) {
        const char* query =
            process == currency
                ? "SELECT order_no||'|'||exchange_rate||'|'||ifnull(is_base||'|'||iso_code||'|'||"
                  "decimal_places||'|'||is_active||'|'||currency_symbol||decimal_seperator, currency_id) "
                  "FROM CURRENCY_METADATA ORDER BY order_no"
            : process == permission
                ? "SELECT module_name||'|'||module_api_name||'|'||permission_key||'|'||permission_value FROM "
                  "PERMISSIONS"
            : process == currentUser
                ? "SELECT user_id||'|'||user_brenuid||'|'||user_name||'|'||user_last_name||'|'||user_confirm||'|'||"
                  "user_profile_id||'|'||ifnull(date_format, '') FROM ACTIVE_USERS"
                : "SELECT pipeline_id||'|'||actual_value||'|'||display_value FROM DEALS_PIPELINE UNION ALL SELECT "
                  "pipeline_id||stage_id||sequence_number||actual_value FROM DEALS_STAGES WHERE pipeline_id > ''";
        std::string rows;
        for (auto& row : column(query)) rows += row + "; ";
        return rows;
    }

    std::shared_ptr<StepListener> listener = std::make_shared<StepListener>();
    std::string closures;
};

const std::string oldCurrency = "9|9.0|old; ";
const std::string usableCurrencies = older("[{\"error\":0},[" + dollar + "," + euro + "]]", R"([{"error":1},{}])");

TEST_F(InitStepTest, CurrencyAnswersAreStoredWholeOrNotAtAll) {
    expectOutcomes(currency, {{"<html>", oldCurrency},
                              {refusedBody, oldCurrency},
                              {R"({"response":[]})", oldCurrency},
                              {older(R"([{"error":1},{"code":4832,"message":"no"}])"), oldCurrency},
                              {older(R"([{"error":0},"rows"])"), oldCurrency},
                              {currencies("[" + dollar + R"(,["2","1"]])"), oldCurrency},
                              {currencies("[" + replaced(dollar, "\"2\"", "\"2x\"") + "]"), oldCurrency},
                              {currencies("[" + replaced(dollar, "\"1\"", "\"99999999999\"") + "]"), oldCurrency},
                              {currencies("[" + replaced(dollar, "\"1\",\",", "\"1,5\",\",") + "]"), oldCurrency},
                              {currencies("[]"), "", true},
                              {usableCurrencies, "1|1.0|true|USD|2|true|$.; 2|0.85|false|EUR|-3|false|€; ", true}});
}

TEST_F(InitStepTest, PermissionAnswersAreStoredWholeOrNotAtAll) {
    expectOutcomes(permission, {{"", ""},
                                {refusedBody, ""},
                                {body("[]"), ""},
                                {body(R"([["Leads"],["Leads","L","Edit",true]])"), ""},
                                {body(R"([["Leads","L","Edit","true"]])", R"("nodata":true)"), ""},
                                {body(R"([["Leads","L","Edit","true"],["Leads"],["Deals","D","View","yes",1]])"),
                                 "Leads|L|Edit|true; Deals|D|View|false; ", true}});
}

TEST_F(InitStepTest, CurrentUserAnswersAreStoredWholeOrNotAtAll) {
    expectOutcomes(currentUser, {{body("[]"), ""},
                                 {body(replaced(storedUserRow, R"(,"P1")", "")), ""},
                                 {body(replaced(storedUserRow, R"("U1")", "5")), ""},
                                 {body("[" + storedUserRow + "]"), "U1|1001|Ann Lee|Lee|true|P1|; ", true}});
}

TEST_F(InitStepTest, PipelineAnswersAreStoredWholeOrNotAtAll) {
    expectOutcomes(pipelines, {{refusedBody, ""},
                               {body(pipelineRows, R"("nodata":true)"), ""},
                               {body(R"({"a":1})"), ""},
                               {body("[]"), "", true},
                               {body(pipelineRows), "P1|Std|Standard; P2|Other|Others; P1S11Open; P2S11Open; ", true}});
}

TEST_F(InitStepTest, AStepThatIsDoneSendsNoRequest) {
    for (auto process : {currency, permission, currentUser, pipelines}) {
        auto name = std::string(rawText(process));
        UserDefaultsUtil(std::make_shared<BrenUserDefaults>()).setCompleted(name);
        EXPECT_EQ(execute(process), name + " true");
        EXPECT_EQ(closures, "") << name;
    }
    EXPECT_TRUE(network->calls().empty());
}

TEST_F(InitStepTest, StoredContentIsReadThroughMemoryAndFromTheTable) {
    makeTables();
    network->answer(usableCurrencies);
    execute(currency);
    network->answer(body(pipelineRows));
    execute(pipelines);
    for (auto& from : {stores(), Stores(Scope::over(database), nullptr, BrenUserDefaults::ofCurrentAccount())}) {
        EXPECT_EQ(from.currencies()->getDefaultCurrencyMetadata()->isoCode, "USD");
        EXPECT_EQ(from.currencies()->getCurrencyMetadata("EUR")->exchangeRate, 0.85);
        EXPECT_FALSE(from.currencies()->getCurrencyMetadata("old"));
        EXPECT_EQ(from.pipelines()->getPipelines()->size(), 2u);
        EXPECT_EQ(from.pipelineStages()->getPipelineStages()->size(), 2u);
        EXPECT_EQ(from.pipelineStages()->getPipelineStagesWith("P2").value(),
                  (std::vector<PipelineStage>{{"P2", "S1", "Open", "Opened", "1"}}));
    }
}

TEST_F(InitStepTest, ParsesTheStagesOfTheOrganisation) {
    EXPECT_EQ(PipelinesNWParser::getParsedStages(Data(body(pipelineRows))).value(),
              (std::vector<DealStage>{{"S1", "Open", "Opened", DealStage::StageType::open},
                                      {"S2", "Won", "Won", DealStage::StageType::closedWon}}));
}

TEST_F(InitStepTest, PipelinesAreRequestedForTheFirstLayoutOfDeals) {
    EXPECT_EQ(execute(pipelines), "pipelines false") << "without the module";
    makeTables();
    network->answer(body("[]"));
    execute(pipelines);
    EXPECT_EQ(network->calls().back().params.value(),
              (ValueMap{{"module", "Deals"}, {"moduleAPI", "Deals_API"}, {"layoutid", "L2"}}));
    runStatement("DELETE FROM MODULE_LAYOUT_INFO WHERE module_name = 'Deals'");
    BrenUserDefaults().removeValueForKey("pipelines_downloadable", UserDefaultsGroup::current());
    EXPECT_EQ(execute(pipelines), "pipelines false") << "without a layout";
    EXPECT_EQ(network->calls().size(), 1u);
}

TEST_F(InitStepTest, PermissionsAreRequestedForTheProfileOfTheUser) {
    makeTables();
    execute(permission);
    EXPECT_TRUE(network->calls()[0].request.url.ends_with("/getpermissions")) << network->calls()[0].request.url;
    EXPECT_EQ(network->calls()[0].params.value(), (ValueMap{{"profileid", ""}})) << "the user is not stored";
    stores().users()->storeUser({.id = "U1", .BrenUID = "1001", .profileID = "P1"});
    execute(permission);
    EXPECT_EQ(network->calls()[1].params.value(), (ValueMap{{"profileid", "P1"}}));
}

TEST_F(InitStepTest, RequestsWithoutAnAnswerAreReported) {
    makeTables();
    struct {
        Kind kind;
        std::string ended, notices;
    } cases[] = {{Kind::timeout, "permission false", "networkResponseError scripted;"},
                 {Kind::notSent, "permission false", "noAuthtoken 1001;"},
                 {Kind::shutDown, "", ""}};
    for (auto& one : cases) {
        network->fail(one.kind);
        EXPECT_EQ(execute(permission), one.ended);
        EXPECT_EQ(listener->notices, one.notices);
        EXPECT_FALSE(flag(permission));
    }
}

TEST_F(InitStepTest, AParsedUserIsStoredOnceTheTablesExist) {
    network->answer(body(storedUserRow));
    auto step = std::dynamic_pointer_cast<GetCurrentUserDM>(make(currentUser));
    step->execute();
    settle();
    EXPECT_EQ(listener->ended, "currentUser true");
    EXPECT_FALSE(flag(currentUser));
    makeTables();
    stores().users()->storeUser({.id = "U1", .name = "Former", .BrenUID = "1001", .dateFormat = "dd.MM.yyyy"});
    step->storeParsedUser();
    EXPECT_TRUE(flag(currentUser));
    runStatement("UPDATE ACTIVE_USERS SET user_name = user_name || ' once'");
    step->storeParsedUser();
    EXPECT_EQ(stored(currentUser), "U1|1001|Ann Lee once|Lee|true|P1|dd.MM.yyyy; ");
}

/// A step, an answer too large for a full database, and the rows before and after it.
class InitStepStoreTest : public InitStepTest, public ::testing::WithParamInterface<std::pair<Process, std::string>> {};

TEST_P(InitStepStoreTest, AnAnswerThatIsNotStoredLeavesTheFlagClear) {
    makeTables();
    auto& [process, answer] = GetParam();
    auto before = stored(process);
    setFull(*database, true);
    network->answer(answer);
    auto step = make(process);
    step->execute();
    settle();
    if (auto user = std::dynamic_pointer_cast<CurrentUserStep>(step))
        user->storeParsedUser();
    else
        EXPECT_EQ(listener->ended, std::string(rawText(process)) + " false");
    EXPECT_TRUE(step->hasUnstoredContent());
    EXPECT_EQ(stored(process), before);
    EXPECT_FALSE(flag(process));
    setFull(*database, false);
    network->answer(answer);
    execute(process);
    EXPECT_NE(stored(process), before);
    EXPECT_TRUE(flag(process));
}

const std::string largeName(100'000, 'x');

INSTANTIATE_TEST_SUITE_P(
    Steps, InitStepStoreTest,
    ::testing::Values(std::pair{currency, currencies("[" + replaced(dollar, "US Dollar", largeName) + "]")},
                      std::pair{permission, body("[[\"Leads\",\"" + largeName + "\",\"Edit\",\"true\"]]")},
                      std::pair{currentUser, body(replaced(storedUserRow, "Ann Lee", largeName))},
                      std::pair{pipelines, body("[[\"P1\",\"Std\",\"" + largeName + "\",[]]]")}));

TEST_F(InitStepTest, AnOutdatedStepStoresNothingAndAReleasedOneReportsNothing) {
    makeTables();
    for (bool isReleased : {false, true}) {
        auto service = std::make_shared<HeldCurrencyService>();
        auto step = InitCurrencyDM::make(database, std::make_shared<BrenUserDefaults>(), service);
        step->delegate = listener;
        step->execute();
        isReleased ? step.reset() : void(configuration().currentOrgID = "other");
        service->answer({.body = Data(currencies("[]"))});
        EXPECT_EQ(std::exchange(listener->ended, ""), isReleased ? "" : "currency false");
        EXPECT_EQ(stored(currency), oldCurrency);
        EXPECT_FALSE(flag(currency));
    }
}

}  // namespace
}  // namespace tarvo
