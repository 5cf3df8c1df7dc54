#include <set>
#include <thread>
#include <utility>

#include "platform/Text.h"
#include "tests/end_to_end/EndToEnd.h"
#include "tests/end_to_end/TableContents.h"

namespace tarvo::tests {

namespace {

/// A call of `serve` that asks the server, while the account or the organisation changes under it. A new call of the
/// bridge that asks the server joins the sweep by a row here.
struct SweptCall {
    const char* name;
    const char* call;
    /// "$VIEW" is the default view of Contacts, "$RECORD" a lead of the first account.
    const char* request;
    /// The calls of the server whose answers are held back.
    const char* serverCalls;
    /// What only a call that succeeded writes; null for a call whose end says nothing about success.
    const char* success;
    /// Whether the call asks the server for something else first, which needs a token of its own.
    bool hasEarlierRequests = false;
    /// Whether the call changes a record. The change must go out later, for the account that it was made in.
    bool isChange = false;
    /// The rules of the server for Leads, as members of their JSON, and a call that is made before under them; null for
    /// none.
    const char* rules = nullptr;
    const char* earlierCall = nullptr;
    const char* earlierRequest = nullptr;
    /// Tables in which a change becomes ready again, separated by ",".
    const char* queueTables = "TRANSACTIONS";
};

constexpr const char* addedLead = R"({"record":{"recordId":"","moduleName":"Leads","values":{"LASTNAME":"swept"}}})";
constexpr const char* editedLead =
    R"({"record":{"recordId":"$RECORD","moduleName":"Leads","values":{"COMPANY":"swept"}}})";

constexpr const char* addedNote =
    R"({"record":{"recordId":"NEW_000000777","moduleName":"Notes","values":{"NOTECONTENT":"a","SEID":"$RECORD"}}})";
constexpr const char* editedNote =
    R"({"record":{"recordId":"NEW_000000777","moduleName":"Notes","values":{"NOTECONTENT":"swept"}}})";
constexpr const char* addedVoiceNote =
    R"({"record":{"recordId":"","moduleName":"Notes","values":{"SEID":"$RECORD"}},"voiceFile":"/etc/passwd"})";
constexpr const char* currentQueue = "TRANSACTIONS_NEW,TARVO_CHANGES";

constexpr SweptCall sweptCalls[] = {
    {"init", "host.appInit", R"({"holdInput":false})", "getappinitdata", "appInitDataFetchedAndSaved"},
    {"metadata", "host.metadata", R"({"moduleNames":["Leads"],"holdInput":false})", "getmetadatainfo",
     R"("response":{"moduleNames":["Leads"]})"},
    {"views", "host.views", R"({"moduleNames":["Leads"],"holdInput":false})", "getcustomviewsinfo",
     R"("response":{"moduleNames":["Leads"]})"},
    {"tags", "GetModuleTagsUC",
     R"({"module":{"id":"","moduleName":"Leads","singularName":"","pluralName":"","apiName":"Leads","position":1,"type":"default","tableCreationQuery":""},"source":"network"})",
     "getmoduletags", "onSuccess"},
    {"organisations", "StoreOrgsUseCase.storeOrgs", "{}", "getappinitdata", "orgsStored"},
    {"list", "GetListFilterRecords",
     R"({"moduleName":"Contacts","criteriaId":"$VIEW","from":0,"limit":20,"source":"network"})",
     "products/getcvrecords", "onSuccess"},
    {"record", "GetRecordsUseCase.getRecord", R"({"moduleName":"Leads","recordID":"$RECORD"})", "products/getrecord",
     R"("record":{)"},
    {"sync", "ModuleyncUseCase.syncRecords", R"({"moduleName":"Leads"})", "products/getsyncrecords",
     R"("outcome":"finished")"},
    {"viewSync", "CVSync.sync", R"({"moduleName":"Leads"})", "getcustomviewsinfo", "CVSyncDidComplete"},
    {.name = "listSync",
     .call = "SyncListFilterRecords",
     .request = R"({"moduleName":"Contacts","criteriaId":"$VIEW"})",
     .serverCalls = "products/getsyncrecords",
     .success = "syncUptoDate",
     .earlierCall = "GetListFilterRecords",
     .earlierRequest = R"({"moduleName":"Contacts","criteriaId":"$VIEW","from":0,"limit":20,"source":"network"})"},
    {"recordDownload", "DownloadRecordsUseCase.initiateDownload",
     R"({"moduleNames":["Leads"],"maxDownloadCount":"loadMore"})", "products/getrecords", "recordsDownloaded"},
    // Changes are saved at once. What is held back is their request to the server, and what follows from its answer.
    {.name = "add",
     .call = "AddRecordUseCase.addRecord",
     .request = addedLead,
     .serverCalls = "products/addrecord",
     .success = "changeAccepted",
     .isChange = true},
    {.name = "edit",
     .call = "EditRecordUseCase.editRecord",
     .request = editedLead,
     .serverCalls = "products/updaterecord",
     .success = "changeAccepted",
     .isChange = true},
    {.name = "retry",
     .call = "host.queue.retry",
     .request = "{}",
     .serverCalls = "products/addrecord",
     .success = "changeAccepted",
     .isChange = true,
     .rules = R"(,"refuse":["add"])",
     .earlierCall = "AddRecordUseCase.addRecord",
     .earlierRequest = addedLead},
    {.name = "note",
     .call = "AddNotesUsecase",
     .request = addedNote,
     .serverCalls = "products/addrecord",
     .success = "changeAccepted",
     .isChange = true,
     .queueTables = currentQueue},
    {.name = "editOfANote",
     .call = "EditNotesUsecase",
     .request = editedNote,
     .serverCalls = "products/updaterecord",
     .success = "changeAccepted",
     .isChange = true,
     .earlierCall = "AddNotesUsecase",
     .earlierRequest = addedNote,
     .queueTables = currentQueue},
    {.name = "voiceNote",
     .call = "AddNotesUsecase",
     .request = addedVoiceNote,
     .serverCalls = "uploadvoicenote",
     .success = "changeAccepted",
     .isChange = true,
     .queueTables = currentQueue},
    {.name = "delete",
     .call = "DeleteRecordUseCase.deleteRecord",
     .request = R"({"moduleName":"Leads","recordID":"$RECORD"})",
     .serverCalls = "products/deleterecord",
     .success = "changeAccepted",
     .isChange = true},
    {.name = "recordOfAnAnswerWithAnIdAlone",
     .call = "AddRecordUseCase.addRecord",
     .request = addedLead,
     .serverCalls = "products/getsyncrecords",
     .success = nullptr,
     .hasEarlierRequests = true,
     .rules = R"(,"answer":"id")"},
    // The first download goes on from row to row: each run begins with the steps that the row before was cut off in.
    {"firstUser", "InitProcessUseCase", "{}", "getuserdetails", "initProcessCompleted"},
    {"firstInit", "InitProcessUseCase", "{}", "getappinitdata", "initProcessCompleted", true},
    // The client runs six transfers per server: four that are held back here, and two that bring views, which are held
    // back above.
    {"firstSteps", "InitProcessUseCase", "{}", "getmetadatainfo,gettaxcurrencies,getpermissions",
     "initProcessCompleted", true},
    {"firstRecords", "InitProcessUseCase", "{}", "products/getcvrecords,getpipelines", "initProcessCompleted", true},
    {"furtherRecords", "InitRecordProcessUseCase", "{}", "products/getcvrecords", nullptr},
};

/// Reads without the server, from the tables and from memory.
constexpr std::pair<const char*, const char*> localReads[] = {
    {"GetUsers", "{}"},
    {"GetUser", "{}"},
    {"GetUsersUseCase.getUsers", "{}"},
    {"GetUsersUseCase.getCurrentUser", "{}"},
    {"GetSettingsUseCase.getSettings", "{}"},
    {"GetModulesUC", R"({"moduleNames":["Leads","Contacts"]})"},
    {"GetModuleUseCase", "{}"},
    {"GetPermissionsUseCase", R"({"moduleName":"Leads"})"},
    {"GetRelatedModulesUC", R"({"moduleName":"Leads"})"},
    {"GetFieldList", R"({"moduleName":"Leads"})"},
    {"GetLayoutModuleInfo", R"({"modules":["Leads"]})"},
    {"GetCustomViewsUseCase.getCustomViews", R"({"moduleName":"Leads"})"},
    {"GetListFilterRecords", R"({"moduleName":"Leads","criteriaId":"1","source":"database"})"},
    {"GetRecordsUseCase.getRecords", R"({"moduleName":"Leads"})"},
};

using Tables = EncryptedFile::Tables;

std::string replaced(std::string text, std::string_view what, const std::string& with) {
    if (auto at = text.find(what); at != std::string::npos) text.replace(at, what.size(), with);
    return text;
}

class SwitchSweep : public ::testing::Test {
protected:
    /// Makes a call, waits for its end and returns its first line.
    Value ask(const std::string& call, const std::string& request) {
        send("ask", call, request);
        Value first;
        for (auto& line : linesUntil("ask"))
            if (member(line, "id") == Value("ask") && first.isNull()) first = line;
        return first;
    }
    void send(const std::string& id, const std::string& call, const std::string& request) {
        host->send(R"({"id":")" + id + R"(","call":")" + call + R"(","request":)" + request + "}");
    }
    /// Returns the lines up to the end of a call.
    std::vector<Value> linesUntil(const std::string& id) {
        std::vector<Value> lines;
        while (auto line = isBroken ? std::nullopt : host->line()) {
            lines.push_back(json::parse(std::string_view(*line)).value_or(Value()));
            texts.push_back(*line);
            auto event = member(lines.back(), "event");
            if (member(lines.back(), "id") == Value(id) && (event == Value("done") || event == Value("refused")))
                return lines;
        }
        if (!std::exchange(isBroken, true)) ADD_FAILURE() << "the host ended or hangs: " << host->errors();
        return lines;
    }
    /// Waits until nothing is under way and returns the texts of the lines that came.
    std::string linesUntilIdle() {
        texts.clear();
        send("idle", "host.wait", "{}");
        linesUntil("idle");
        return text::join(texts, "\n");
    }

    void select(const std::string& account) {
        ask("host.account", R"({"account":")" + account + R"(","token":"token-of-)" + account + R"("})");
        EXPECT_EQ(member(ask("host.openDatabase", "{}"), "event"), Value("done"));
    }
    void seed(const std::string& account) {
        select(account);
        for (auto call : {"host.appInit", "host.metadata", "host.views"}) {
            send("seed", call,
                 std::string_view(call) == "host.appInit" ? "{}" : R"({"moduleNames":["Leads","Contacts","Notes"]})");
            linesUntil("seed");
        }
    }

    Tables tablesOf(const std::string& account) {
        auto& file = files_[account];
        if (!file) file = std::make_unique<EncryptedFile>(databaseOf(account), "right passphrase");
        return file->tables();
    }
    std::vector<std::string> settings() const {
        return text::split(world.content(world.home() + "/settings/tarvo-host.jsonl"), "\n");
    }
    /// Lets go what is held back, runs it to its end, and expects that the call fails and no setting changes.
    void expectNoSuccess(const SweptCall& swept, const std::function<void()>& letGo) {
        const auto before = settings();
        letGo();
        auto lines = linesUntilIdle();
        EXPECT_FALSE(swept.success && contains(lines, swept.success)) << "the call succeeded: " << lines.substr(0, 300);
        for (auto& line : settings())
            EXPECT_TRUE(text::contains(before, line)) << "a setting has changed: " << line.substr(0, 300);
    }
    std::string databaseOf(const std::string& account) const {
        return world.home() + "/Databases/TarvoDatabaseForBrenUID" + account + ".sqlite";
    }

    std::map<std::string, std::string> localAnswers() {
        std::map<std::string, std::string> answers;
        for (auto& [call, request] : localReads) answers[call] = json::write(ask(call, request)).value_or("");
        return answers;
    }
    /// These compare with what was found before, and keep what is found now, so that the next row fails for itself
    /// only.
    void expectSameAnswers(std::map<std::string, std::string>& answers) {
        for (auto& [call, answer] : localAnswers()) {
            EXPECT_TRUE(answer == answers[call]) << call << " answers " << answer.substr(0, 300);
            answers[call] = answer;
        }
    }
    void expectSameTables(const std::string& account, Tables& tables, const std::string& except = "") {
        auto found = tablesOf(account);
        for (auto& table : text::split(except, ",")) found.erase(table);
        for (auto& [table, rows] : found) {
            auto before = tables.find(table);
            EXPECT_TRUE(before != tables.end() && before->second == rows)
                << table << " of " << account << " has changed, it has " << rows.size() << " rows";
        }
        tables = std::move(found);
    }

    std::int64_t hits() { return member(world.controlled("/control/faults"), "hits").asInteger().value_or(0); }
    std::size_t requestCount() { return world.requests().size(); }
    std::int64_t serverTime() {
        return member(world.controlled("/control/state"), "servertime").asInteger().value_or(0);
    }
    /// A request that was on its way before may end later, but none may arrive.
    void expectNoRequestAfter(std::int64_t time) {
        for (auto& request : world.requests())
            EXPECT_LE(member(request, "receivedAt").asInteger().value_or(0), time)
                << "a request was sent after the switch: " << json::write(request).value_or("").substr(0, 300);
    }
    /// The tables, as soon as the answers that came before the switch are stored.
    Tables settledTables(const std::string& account) {
        auto tables = tablesOf(account);
        for (auto next = tablesOf(account); next != tables; next = tablesOf(account)) tables = std::move(next);
        return tables;
    }

    /// Sends the call and waits until the server works on its request, which it holds back.
    void startHeld(const SweptCall& swept) {
        prepare(swept);
        auto before = hits();
        for (auto& call : text::split(swept.serverCalls, ","))
            world.setFault(R"({"call":")" + call + R"(","fault":"delay","milliseconds":60000})");
        send("swept", swept.call, withIds(swept.request));
        for (int tries = 0; hits() == before; ++tries) {
            ASSERT_LT(tries, 1000) << "the call asked the server for nothing, so the row tests nothing";
            std::this_thread::yield();
        }
        if (swept.hasEarlierRequests) settle();
    }
    /// Sets the rules of the server for Leads in all data that account 42 has asked for.
    void setRules(const std::string& rules) {
        std::set<std::string> organisations{""};
        for (auto& request : world.requests())
            if (member(request, "account") == Value("42"))
                organisations.insert(member(request, "organisation").textOr(""));
        for (auto& organisation : organisations) {
            auto answer =
                world.control->postJson("/control/rules", R"({"module":"Leads","account":"42","organisation":")" +
                                                              organisation + "\"" + rules + "}");
            ASSERT_TRUE(answer && answer->status == 200) << rules;
        }
    }
    /// Brings a call about that needs an earlier one, such as a change that the server refuses. Rules that such a call
    /// does not need stay in force for the call itself.
    void prepare(const SweptCall& swept) {
        setRules(swept.rules ? swept.rules : "");
        if (!swept.earlierCall) return;
        ask(swept.earlierCall, withIds(swept.earlierRequest));
        ask("host.queue.idle", "{}");
        setRules("");
    }
    /// Sends what waits in the queue of the account and organisation in force, and expects that nothing is left.
    void expectSent(const SweptCall& swept) {
        if (!swept.isChange) return;
        Value rest;
        auto isEmpty = [&] { return member(member(rest, "response"), "isEmpty") == Value(true); };
        // The answer that was held may be stored after the start, which then finds nothing to send.
        for (int tries = 0; tries < 20 && !isEmpty(); ++tries) {
            ask("host.queue.start", "{}");
            rest = ask("host.queue.idle", "{}");
        }
        EXPECT_TRUE(isEmpty()) << json::write(rest).value_or("");
        setRules("");
    }
    /// Waits until everything that does not wait for the held answer has come to rest.
    void settle() {
        auto state = [&] { return std::pair(requestCount(), tablesOf("42")); };
        auto last = state();
        for (int same = 0; same < 10; ++same) {
            auto next = state();
            if (next != last) same = 0;
            last = std::move(next);
        }
    }
    /// Lets the answers go until the server has sent them all.
    void release() {
        world.control->remove("/control/faults");
        world.control->postJson("/control/release", "{}");
    }
    std::string withIds(const char* request) const {
        return replaced(replaced(request, "$VIEW", view), "$RECORD", record);
    }
    /// Moves the clock so far that the kept answer of the init call is too old to be reused.
    void outdateKeptAnswers() { ask("host.clock", R"({"advance":120000})"); }

    void SetUp() override {
        host = world.host({"serve"});
        ask("host.clock", R"({"set":1790000000000})");
    }
    void readIds() {
        auto views = ask("GetCustomViewsUseCase.getDefaultCustomView", R"({"moduleName":"Contacts"})");
        view = member(member(member(views, "arguments"), "customView"), "viewID").textOr("");
        auto answer = world.control->post("/crm/v4/products/getrecords", {{"module", "Leads"}, {"moduleAPI", "Leads"}},
                                          "token-of-42");
        auto at = answer ? answer->body.find("[\"id\",\"") : std::string::npos;
        record = at == std::string::npos ? "" : answer->body.substr(at + 7, 19);
        ASSERT_FALSE(view.empty() || record.empty());
    }

    EndToEnd world{{"--account", "43:token-of-43", "--data-per", "organisation", "--records", "30", "--log-values"}};
    std::unique_ptr<Process> host;
    std::string view, record;
    std::vector<std::string> texts;
    bool isBroken = false;

private:
    std::map<std::string, std::unique_ptr<EncryptedFile>> files_;  // by account
};

/// Ids of the two accounts begin with these digits: the seed is 1, and the data of an account adds a thousand.
constexpr const char* firstAccountIds = "4876001001";
constexpr const char* secondAccountIds = "4876002001";

void expectNoText(const Tables& tables, std::string_view text) {
    for (auto& [table, rows] : tables)
        EXPECT_TRUE(std::none_of(rows.begin(), rows.end(), [&](auto& row) { return contains(row, text); }))
            << table << " holds another account's row";
}

TEST_F(SwitchSweep, AnAnswerAfterASwitchOfAccountReachesNobody) {
    seed("43");
    auto answers = localAnswers();
    auto second = tablesOf("43");
    seed("42");
    readIds();
    for (auto& swept : sweptCalls) {
        SCOPED_TRACE(swept.name);
        outdateKeptAnswers();
        startHeld(swept);
        if (HasFatalFailure() || isBroken) return;
        select("43");
        const auto time = serverTime();
        auto first = settledTables("42");
        expectNoSuccess(swept, [&] { release(); });
        expectSameTables("42", first);
        expectSameTables("43", second);
        expectSameAnswers(answers);
        // A first download may have requests in the queue of the HTTP client, which sends them; their answers are
        // dropped.
        if (!swept.hasEarlierRequests) expectNoRequestAfter(time);
        select("42");
        expectSent(swept);
    }
    expectNoText(tablesOf("42"), secondAccountIds);
    expectNoText(tablesOf("43"), firstAccountIds);
    // No request of an account may carry an id of the other, in a parameter or as its organisation.
    for (auto& request : world.requests()) {
        auto text = json::write(request).value_or("");
        bool isFirst = member(request, "account") == Value("42");
        EXPECT_FALSE(contains(text, isFirst ? secondAccountIds : firstAccountIds)) << text;
    }
}

TEST_F(SwitchSweep, ATokenThatComesAfterASwitchOfAccountSendsNothing) {
    seed("43");
    auto second = tablesOf("43");
    seed("42");
    readIds();
    for (auto& swept : sweptCalls) {
        if (swept.hasEarlierRequests || isBroken) continue;
        SCOPED_TRACE(swept.name);
        outdateKeptAnswers();
        prepare(swept);
        const auto requests = requestCount();
        ask("host.tokens", R"({"hold":true})");
        send("swept", swept.call, withIds(swept.request));
        for (int tries = 0; member(member(ask("host.tokens", "{}"), "response"), "held") == Value(0); ++tries)
            ASSERT_LT(tries, 20'000) << "the call asked for no token, so the row tests nothing";
        select("43");
        expectNoSuccess(swept, [&] { ask("host.tokens", R"({"hold":false})"); });
        EXPECT_EQ(requestCount(), requests) << "a request was sent after the switch";
        expectSameTables("43", second);
        select("42");
        expectSent(swept);
    }
}

TEST_F(SwitchSweep, AnAnswerAfterASwitchOfOrganisationIsNotStored) {
    seed("42");
    readIds();
    for (auto& swept : sweptCalls) {
        // The database stays open, so the parallel steps of a first download go on storing what came before.
        if (swept.hasEarlierRequests) continue;
        SCOPED_TRACE(swept.name);
        outdateKeptAnswers();
        ask("host.config", R"({"currentOrgID":""})");
        startHeld(swept);
        if (HasFatalFailure() || isBroken) return;
        ask("host.config", R"({"currentOrgID":"another organisation"})");
        const auto time = serverTime();
        auto tables = settledTables("42");
        expectNoSuccess(swept, [&] { release(); });
        // The change is ready again, for the organisation that it was made in.
        expectSameTables("42", tables, swept.isChange ? swept.queueTables : "");
        expectNoRequestAfter(time);
        ask("host.config", R"({"currentOrgID":""})");
        expectSent(swept);
    }
}

}  // namespace

}  // namespace tarvo::tests
