#include "platform/Files.h"
#include "tarvobase/change_queues/ChangeCancellation.h"
#include "tarvobase/change_queues/QueuedChanges.h"
#include "tarvobase/notes/internal/AddNoteDM.h"
#include "tarvobase/notes/internal/EditNoteDM.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/record_changes/RecordChanges.h"
#include "tarvobase/transaction/ChangeQueueObserver.h"
#include "tests/tarvobase/record_changes/execution/ExecutorFixture.h"

namespace tarvo {
namespace {

using Kind = NTransaction::Kind;
const std::string firstNote = "NEW_000000001";
const std::string aMoment = "2026-01-02T03:04:05+00:00";
constexpr std::int64_t aMomentInSeconds = 1767323045;

/// Writes down what observers are notified of.
class NoteNotices final : public ChangeQueueObserver {
public:
    std::vector<std::string> notices;

    void changeSaved(const Change& change) override { notices.push_back("saved " + change.transactionId); }
    void changeNotSaved(const std::string& module, const std::string& recordId, ChangeNotSaved reason) override {
        notices.push_back(module + " " + recordId + " " + std::string(caseName(reason)));
    }
    void changeRefused(const Change& change) override {
        notices.push_back("refused " + change.transactionId + " " + change.error->code);
    }
};

/// Notes of leads over real tables and a scripted network.
class NotesTest : public ExecutorTest {
protected:
    void SetUp() override {
        ExecutorTest::SetUp();
        prepare();
    }
    void TearDown() override {
        add.reset();
        edit.reset();
        ExecutorTest::TearDown();
    }
    void prepare(Naming naming = Naming::column) {
        use(naming);
        using T = FieldDataType;
        adapter().dropTable("NotesRecords");
        makeModule("Notes", {noteField("Note_Title", "TITLE"), noteField("Note_Content", "NOTECONTENT"),
                             noteField("Parent_Id", "SEID", T::lookup), noteField("voice_note", "IS_VOICE_DATA"),
                             noteField("$isCheckIn", "IS_CHECK_IN"), noteField("Owner", "SMOWNERID", T::ownerlookup),
                             noteField("Modified_By", "MODIFIEDBY", T::ownerlookup),
                             noteField("Created_Time", "CREATEDTIME", T::dateTime),
                             noteField("Modified_Time", "MODIFIEDTIME", T::dateTime)});
        begin();
        stores->users()->storeUser({.id = "u1", .firstName = "A", .lastName = "B", .name = "A B", .BrenUID = "1001"});
        auto parts = ExecutionParts::of(*stores, manager, 3);
        add = std::make_shared<AddNoteDM>(parts, files());
        edit = std::make_shared<EditNoteDM>(parts);
        add->addRecordNS = scripted<AddEditRecordNetworkService>();
        auto voice = std::make_shared<AddVoiceNoteNS>(files());
        voice->setNetworkAdapter(network);
        add->addVoiceNoteNS = voice;
        edit->editRecordNS = scripted<AddEditRecordNetworkService>();
        executors->executors = {{Kind::addTextNote, add}, {Kind::addVoiceNote, add}, {Kind::editNote, edit}};
    }
    static FieldMetadata noteField(const std::string& name, const std::string& column,
                                   FieldDataType type = FieldDataType::text) {
        auto made = field("Notes", name, type);
        made.columnCRMName = column;
        return made;
    }
    const NotesConstants& names() const { return stores->scope.naming.constant->Notes; }
    VoiceFiles files() const { return VoiceFiles(folder() + "/VoiceNotes/"); }
    void storeSound(const std::string& recordId) const {
        files::createDirectories(folder() + "/VoiceNotes");
        ASSERT_TRUE(files::writeAtomically(*files().pathOf(recordId), "sound"));
    }
    Record note(const std::string& id, const std::vector<std::pair<std::string_view, Value>>& values) const {
        Record record(id, "Notes");
        for (auto& [name, value] : values) record.set(name, value);
        return record;
    }
    std::optional<ChangeNotSaved> addNote(const std::string& id, const std::string& text = "text",
                                          const std::string& parent = "7", const Value& isVoiceNote = {},
                                          const std::string& title = "title") {
        auto saved = add->addNote(note(id, {{names().noteTitle, title},
                                            {names().noteContent, text},
                                            {names().seid, parent},
                                            {names().isCheckIn, "false"},
                                            {names().isVoiceNote, isVoiceNote}}));
        settle();
        return saved;
    }
    std::optional<ChangeNotSaved> editText(const std::string& id, const std::string& text) {
        auto saved = edit->editNote(note(id, {{names().noteContent, text}}));
        settle();
        return saved;
    }
    bool deleteNote(const std::string& id) {
        RecordChangeParts parts{
            .stores = *stores,
            .recordPersistance = records,
            .editRecordTransactionManager = std::make_shared<RecordTransactionManager>(*stores, [] {}),
            .voiceFileDirectory = folder() + "/VoiceNotes/",
            .transactionManager = manager};
        return DeleteRecordDataManager(parts).deleteRecord(id, {.moduleName = "Notes", .apiName = "Notes"}).ok();
    }
    std::string notes() {
        auto& all = *stores->scope.naming.constant;
        return cells("NotesRecords ORDER BY 1", {idColumn(), std::string(names().noteContent),
                                                 std::string(names().seid), std::string(all.modifiedTime)});
    }
    static std::string texts(const std::string& id) {
        return entry(R"("info":{},"data":[")" + id + R"(",")" + aMoment + R"(",")" + aMoment + "\"]");
    }
    std::string now() const { return std::to_string(platform::Clock::now().time_since_epoch().count() / 1000); }

    std::shared_ptr<AddNoteDM> add;
    std::shared_ptr<EditNoteDM> edit;
};

}  // namespace

TEST_F(NotesTest, AnUnsentNoteAndItsEditWaitInOrder) {
    for (auto naming : {Naming::column, Naming::api}) {
        SCOPED_TRACE(static_cast<int>(naming));
        prepare(naming);
        auto first = manager->getNewTransactionId();
        EXPECT_FALSE(addNote(firstNote, "one", "TarvoTEMPID#1"));
        EXPECT_FALSE(editText(firstNote, "two"));
        EXPECT_FALSE(editText(firstNote, "three"));
        auto id = [&](int offset) { return std::to_string(first + offset); };
        EXPECT_EQ(rows(), id(1) +
                              R"( addTextNote NEW_000000001 0 {"Note_Title":"title","Note_Content":"one",)"
                              R"("Parent_Id":"TarvoTEMPID#1","voice_note":null,"$isCheckIn":"false","Owner":"u1"})"
                              "\n" +
                              id(2) + R"( editNote NEW_000000001 0 {"Note_Content":"two"})" + "\n" + id(3) +
                              R"( editNote NEW_000000001 0 {"Note_Content":"three"})");
        EXPECT_EQ(notes(), R"("NEW_000000001","three","TarvoTEMPID#1",)" + now());
        using D = TransactionDependency::Kind;
        auto waits = [&](int waiting, int awaited, D kind) {
            return TransactionDependency{first + waiting, first + awaited, kind};
        };
        EXPECT_THAT(*stores->transactionDependencies()->getTransactionDependencies(),
                    testing::UnorderedElementsAre(waits(2, 1, D::lookupRecord), waits(3, 1, D::lookupRecord),
                                                  waits(3, 2, D::sameRecord)));
        EXPECT_TRUE(manager->deleteTransactionWithRecordId(firstNote));
    }
}

TEST_F(NotesTest, AcceptedNotesHaveTheServersIdsTimesAndSounds) {
    storeSound(firstNote);
    EXPECT_FALSE(addNote(firstNote, "spoken", "7", "true", std::string("ti\0tle", 6)));
    EXPECT_FALSE(addNote("NEW_000000002", "not spoken", "7", "True"));
    EXPECT_FALSE(editText("NEW_000000002", "edited"));
    network->answer(texts("42"));
    network->answer(texts("42"));
    manager->startSync();
    settle();
    ASSERT_EQ(network->uploads().size(), 1u);
    auto upload = network->uploads().front();
    EXPECT_EQ(std::get<std::string>(upload.source), *files().pathOf(firstNote));
    EXPECT_EQ(upload.fileParamName + " " + upload.fileName, "file title.wav");
    EXPECT_EQ(upload.params.valueOf("module"), Value("Notes"));
    EXPECT_TRUE(upload.params.valueOf("dataJSON").textOr("").starts_with(R"({"data":[{"Note_Title":"ti\u0000tle")"));
    EXPECT_TRUE(upload.headers.find("x-transaction-id"));
    upload.completionHandler({.body = Data(texts("41"))});
    settle();
    EXPECT_EQ(rows(), "");
    auto time = std::to_string(aMomentInSeconds);
    EXPECT_EQ(notes(), R"("41","spoken","7",)" + time + R"(;"42","edited","7",)" + time);
    EXPECT_EQ(network->calls().back().request.body->text(), R"({"data":[{"Note_Content":"edited","id":"42"}]})");
    EXPECT_TRUE(files::exists(*files().pathOf("41")));
    EXPECT_FALSE(files::exists(*files().pathOf(firstNote)));
    // A process that ended between the commit and the move left the sound behind.
    ASSERT_TRUE(files::move(*files().pathOf("41"), *files().pathOf(firstNote)));
    storeSound("NEW_000000009");
    files().moveLeftBehind(*stores);
    EXPECT_TRUE(files::exists(*files().pathOf("41")) && files::exists(*files().pathOf("NEW_000000009")));
    // After a loss of the settings another account gave both ids to voice notes of its own.
    for (auto id : {firstNote, std::string("NEW_000000002")}) {
        storeSound(id);
        files().moveLeftBehind(*stores);
        EXPECT_TRUE(files::exists(*files().pathOf(id))) << id;
    }
}

TEST_F(NotesTest, AnAnswerWithoutTimesIsAFailureThatChangesNothing) {
    EXPECT_FALSE(addNote(firstNote));
    auto before = notes();
    network->answer(entry(R"("info":{},"data":["42",")" + aMoment + "\"]"));
    manager->startSync();
    settle();
    EXPECT_TRUE(rows().ends_with("txnPARSING_FAILED"));
    EXPECT_EQ(notes(), before);
}

TEST_F(NotesTest, OnlyWhatAnEditChangesIsSent) {
    struct {
        std::string title, text;
        Value isCheckIn;
        std::string payload;
    } cases[] = {
        {"title", "new", "false", R"({"id":"7","Note_Content":"new"})"},
        {"new", "text", "false", R"({"id":"7","Note_Title":"new"})"},
        {"new", "text", "true", ""},
        {"new", "new", Value(), R"({"id":"7","Note_Content":"new"})"},
        {"title", "text", "false", ""},
    };
    for (auto& one : cases) {
        SCOPED_TRACE(one.title + one.text + one.payload);
        ASSERT_TRUE(records->saveRecordDictionary({{"ID", "7"}, {"TITLE", "title"}, {"NOTECONTENT", "text"}},
                                                  ModuleIdentifier::Case::notes));
        auto saved = edit->editNote(
            note("7", {{"TITLE", one.title}, {"NOTECONTENT", one.text}, {"IS_CHECK_IN", one.isCheckIn}}));
        EXPECT_EQ(saved.has_value(), one.payload.empty());
        if (saved) {
            EXPECT_EQ(*saved, ChangeNotSaved::nothingChanged);
        }
        auto queued = manager->getTransactions("7", std::nullopt, std::nullopt);
        ASSERT_EQ(queued->size(), one.payload.empty() ? 0u : 1u);
        if (!saved) {
            EXPECT_EQ(json::write(queued->front().payload), one.payload);
        }
        EXPECT_EQ(notes(),
                  R"("7",")" + std::string(saved ? "text" : one.text) + R"(",null,)" + (saved ? "null" : now()));
        EXPECT_TRUE(manager->deleteTransactionWithRecordId("7"));
    }
}

TEST_F(NotesTest, ANoteThatIsNotSavedSaysWhy) {
    auto log = std::make_shared<NoteNotices>();
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    EXPECT_EQ(editText("7", "x"), ChangeNotSaved::noRow);
    EXPECT_EQ(addNote(""), ChangeNotSaved::noRecordId);
    ASSERT_TRUE(adapter().execute(
        "CREATE TRIGGER refuse BEFORE INSERT ON TRANSACTIONS_NEW BEGIN SELECT RAISE(ABORT, 'full'); END",
        std::nullopt));
    EXPECT_EQ(addNote(firstNote), ChangeNotSaved::notStored);
    EXPECT_EQ(notes(), "");
    adapter().execute("DROP TRIGGER refuse", std::nullopt);
    signIn("1002");
    prepare();
    EXPECT_EQ(addNote(firstNote), ChangeNotSaved::noUser);
    adapter().execute("DELETE FROM MODULE_DETAILS", std::nullopt);
    stores->modules()->reloadAll();
    EXPECT_EQ(addNote(firstNote), ChangeNotSaved::noModule);
    EXPECT_EQ(log->notices,
              (std::vector<std::string>{"Notes 7 noRow", "Notes  noRecordId", "Notes NEW_000000001 notStored",
                                        "Notes NEW_000000001 noUser", "Notes NEW_000000001 noModule"}));
}

TEST_F(NotesTest, AnEditOfARefusedNoteIsTheNoteAgain) {
    EXPECT_FALSE(addNote(firstNote, "refused"));
    for (int i = 0; i < 3; ++i) network->answer(entry(R"("error":["crmNO","no"])"));
    manager->startSync();
    settle();
    EXPECT_TRUE(rows().ends_with("txnMAX_SYNC_ATTEMPT_REACHED"));
    auto listed = QueuedChanges(*stores).list({}, {});
    ASSERT_EQ(listed->size(), 1u);
    EXPECT_EQ(json::write(listed->front().error->details.value_or(ValueMap())),
              R"({"lastRefusal":{"code":"crmNO","message":"no"}})");
    network->answer(texts("42"));
    EXPECT_FALSE(editText(firstNote, "better"));
    EXPECT_EQ(rows(), "");
    EXPECT_EQ(network->calls().size(), 4u);
    auto sent = network->calls().back().request;
    EXPECT_TRUE(sent.url.find("/addrecord") != std::string::npos);
    EXPECT_TRUE(sent.body->text().find(R"("Note_Content":"better")") != std::string::npos);
    EXPECT_TRUE(notes().starts_with(R"("42","better")"));
}

TEST_F(NotesTest, AnEditIsNotMergedIntoANoteThatTheServerMayHave) {
    EXPECT_FALSE(addNote(firstNote));
    network->fail(NetworkError::Kind::timeout);
    manager->startSync();
    settle();
    for (int i = 0; i < 3; ++i) network->answer(R"({"error":["crmBUSY","the request failed as a whole"]})");
    manager->wake();
    settle();
    EXPECT_TRUE(rows().ends_with("txnMAX_SYNC_ATTEMPT_REACHED")) << rows();
    EXPECT_FALSE(editText(firstNote, "better"));
    EXPECT_EQ(manager->getTransactions(firstNote, std::nullopt, std::nullopt)->size(), 2u) << rows();
}

TEST_F(NotesTest, ADeletedNoteNeverStaysAtTheServer) {
    auto log = std::make_shared<NoteNotices>();
    RecordChangeParts parts{.stores = *stores,
                            .recordPersistance = records,
                            .editRecordTransactionManager = std::make_shared<RecordTransactionManager>(*stores, [] {}),
                            .transactionManager = manager};
    Module module{.moduleName = "Notes", .apiName = "Notes"};
    EXPECT_FALSE(addNote(firstNote));
    EXPECT_FALSE(editText(firstNote, "edited"));
    EXPECT_FALSE(addNote("NEW_000000002", "about the first", firstNote));
    BrenNotificationCenter::shared().add<ChangeQueueObserver>(log);
    EXPECT_TRUE(DeleteRecordDataManager(parts).deleteRecord(firstNote, module));
    settle();
    EXPECT_TRUE(rows().starts_with("3 addTextNote NEW_000000002 0 ")) << rows();
    EXPECT_TRUE(rows().ends_with("txnDEPENDING_TRANSACTION_FAILED"));
    EXPECT_TRUE(stores->transactionDependencies()->getTransactionDependencies()->empty());
    EXPECT_THAT(log->notices, testing::Contains("refused 3 txnDEPENDING_TRANSACTION_FAILED"));

    // An add that may have been applied goes once more, under its key, for the id that the delete needs.
    EXPECT_FALSE(addNote("NEW_000000003", "text", "7", "true"));
    EXPECT_FALSE(editText("NEW_000000003", "edited"));
    manager->startSync();
    settle();
    network->uploads().back().completionHandler({.body = Data("<html>")});
    settle();
    auto sent = stores->changeRegister()->entries();
    for (auto& entry : *sent) stores->changeRegister()->noteSend(entry.number);
    EXPECT_TRUE(DeleteRecordDataManager(parts).deleteRecord("NEW_000000003", module));
    settle();
    auto uploads = network->uploads();
    ASSERT_EQ(uploads.size(), 2u);
    EXPECT_EQ(uploads[0].headers.find("x-transaction-id"), uploads[1].headers.find("x-transaction-id"));
    uploads[1].completionHandler({.body = Data(texts("43"))});
    settle();
    EXPECT_EQ(stores->transactions()->getTransactions("43")->transactions.size(), 1u);
    EXPECT_TRUE(manager->getTransactions("43", std::nullopt, std::nullopt)->empty());
}

TEST_F(NotesTest, ANoteWhoseSoundIsGoneFailsAtOnce) {
    EXPECT_FALSE(addNote(firstNote, "spoken", "7", "true"));
    manager->startSync();
    settle();
    network->uploads().back().completionHandler({.error = NetworkError{.kind = NetworkError::Kind::file}});
    settle();
    EXPECT_EQ(network->uploads().size(), 1u);
    EXPECT_TRUE(rows().ends_with("txnFILE_NOT_READABLE"));
}

TEST_F(NotesTest, TheSoundOfADeletedNoteStaysUntilItsUploadIsAnswered) {
    for (auto& id : {firstNote, std::string("NEW_000000002")}) {
        storeSound(id);
        EXPECT_FALSE(addNote(id, "spoken", "7", "true"));
        if (id == firstNote) manager->startSync();
        settle();
    }
    EXPECT_TRUE(deleteNote(firstNote) && deleteNote("NEW_000000002"));
    EXPECT_TRUE(files::exists(*files().pathOf(firstNote)));
    EXPECT_FALSE(files::exists(*files().pathOf("NEW_000000002")));
    network->uploads().front().completionHandler({.body = Data(texts("41"))});
    settle();
    EXPECT_FALSE(files::exists(*files().pathOf(firstNote)) || files::exists(*files().pathOf("41")));
}

TEST_F(NotesTest, AnEditThatIsCancelledGivesTheFormerTextBack) {
    ChangeCancellation cancellation({.stores = *stores,
                                     .records = records,
                                     .manager = manager,
                                     .fetch = [](auto&, auto& recordId) { EXPECT_EQ(recordId, "42"); },
                                     .removeSound = [](auto&) {},
                                     .wake = [] {}});
    auto lastNumber = [&] { return stores->changeRegister()->entries()->back().number; };
    auto textNow = [&] { return cells("NotesRecords", {"NOTECONTENT"}); };
    EXPECT_FALSE(addNote(firstNote, "one"));
    EXPECT_FALSE(editText(firstNote, "two"));
    EXPECT_FALSE(editText(firstNote, "three"));
    EXPECT_TRUE(cancellation.cancel({{lastNumber()}, true}));
    EXPECT_EQ(textNow(), R"("two")");
    EXPECT_TRUE(cancellation.cancel({{lastNumber()}, true}));
    EXPECT_EQ(textNow(), R"("one")");

    EXPECT_FALSE(editText(firstNote, "four"));
    EXPECT_FALSE(editText(firstNote, "five"));
    network->answer(texts("42"));
    network->answer(texts("42"));
    network->fail(NetworkError::Kind::timeout);
    manager->startSync();
    settle();
    EXPECT_EQ(rows().find("addTextNote"), std::string::npos) << rows();
    EXPECT_FALSE(cancellation.cancel({{lastNumber()}, true})) << "the server may have it";
    auto sides = stores->currentTransactionRecords()->getTransactionRecord("42");
    ASSERT_TRUE(sides.value());
    EXPECT_EQ(sides.value()->serverData.valueOf("NOTECONTENT"), Value("four")) << "which the server has accepted";
    network->answer(texts("42"));
    manager->wake();
    settle();
    EXPECT_EQ(rows(), "");
    EXPECT_FALSE(stores->currentTransactionRecords()->getTransactionRecord("42").value());

    manager->stopSync();
    EXPECT_FALSE(editText("42", "six"));
    EXPECT_TRUE(deleteNote("42"));
    EXPECT_TRUE(cancellation.cancel({{lastNumber()}, true}));
    EXPECT_EQ(textNow(), R"("five")") << "the edit went with the delete";
}

}  // namespace tarvo
