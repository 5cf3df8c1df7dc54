#include <gtest/gtest.h>

#include "platform/Text.h"
#include "tarvobase/record_changes/internal/ChangeTurns.h"

namespace tarvo {
namespace {

constexpr const char* newId = "NEW_000000001";
constexpr const char* oldFormOfNewId = "TarvoTEMPID#7";

enum class Is { ready, sending, failed };

QueuedChange change(const std::string& id, TransactionType type, const std::string& record,
                    const std::string& payload = "", Is state = Is::ready,
                    const std::string& parameters = R"({"module":"Leads"})") {
    Transaction row{.transactionID = id,
                    .recordID = record,
                    .moduleName = "Leads",
                    .operationType = type,
                    .uriData = platform::Data(parameters)};
    if (!payload.empty()) row.dataJSON = platform::Data(R"({"data":[{)" + payload + "}]}");
    if (state == Is::sending) row.extras = std::string(Transaction::State::inProgress);
    if (state == Is::failed) row.extras = std::string(Transaction::State::error);
    return QueuedChange(row);
}

/// Returns the rows' turns, with what they wait for.
std::string turnsOf(const std::vector<QueuedChange>& queue) {
    using Turn = ChangeTurns::Turn;
    ChangeTurns::CurrentQueue none;
    ChangeTurns turns(queue, none);
    std::vector<std::string> texts;
    for (auto& row : queue) {
        auto judgement = turns.judge(row);
        std::string turn = judgement.turn == Turn::send          ? "send"
                           : judgement.turn == Turn::wait        ? "wait for " + text::join(judgement.waitsFor, "+")
                           : judgement.turn == Turn::fail        ? "fail"
                           : judgement.turn == Turn::drop        ? "drop"
                           : judgement.turn == Turn::notSendable ? "not sendable"
                                                                 : "-";
        texts.push_back(row.transaction.transactionID + ": " + turn);
    }
    return text::join(texts, ", ");
}

TEST(ChangeTurnsTest, ChangesGoInOrderByRecordAndAfterWhatTheyName) {
    using T = TransactionType;
    const std::string lookup = std::string(R"("Account":")") + newId + '"';
    const std::string nested = std::string(R"("Lines":[{"Product":{"id":")") + oldFormOfNewId + R"("}}])";
    const std::string freeText = std::string(R"("Description":"after )") + newId + R"( is there")";
    struct {
        const char* name;
        std::vector<QueuedChange> queue;
        const char* turns;
    } cases[] = {
        {"one record's changes follow each other",
         {change("1", T::editRecord, "r"), change("2", T::editRecord, "r"), change("3", T::editRecord, "s"),
          change("4", T::deleteRecord, "r")},
         "1: send, 2: wait for 1, 3: send, 4: wait for 2"},
        {"a row on its way holds up later ones, a refused edit does not",
         {change("1", T::editRecord, "r", "", Is::sending), change("2", T::editRecord, "r"),
          change("3", T::editRecord, "s", "", Is::failed), change("4", T::editRecord, "s")},
         "1: -, 2: wait for 1, 3: -, 4: send"},
        {"lookups wait for the add, free text does not",
         {change("1", T::addRecord, newId), change("2", T::addRecord, oldFormOfNewId, lookup),
          change("3", T::editRecord, "r", nested), change("4", T::editRecord, "s", freeText),
          change("5", T::editRecord, newId)},
         "1: send, 2: wait for 1, 3: wait for 2, 4: send, 5: wait for 1"},
        {"an add is found wherever it stands in the queue",
         {change("1", T::editRecord, "r", lookup), change("2", T::addRecord, newId)},
         "1: wait for 2, 2: send"},
        {"what names a refused add fails, and its delete has nothing to delete",
         {change("1", T::addRecord, newId, "", Is::failed), change("2", T::editRecord, "r", lookup),
          change("3", T::editRecord, newId), change("4", T::deleteRecord, newId), change("5", T::editRecord, "r")},
         "1: -, 2: fail, 3: fail, 4: drop, 5: send"},
        {"what names an add that is gone fails, and its delete has nothing to delete",
         {change("1", T::editRecord, "r", lookup), change("2", T::deleteRecord, newId),
          change("3", T::deleteRecord, "s", "", Is::ready, std::string(R"({"parent":")") + newId + "\"}")},
         "1: fail, 2: drop, 3: fail"},
        {"a delete waits for an add that was sent",
         {change("1", T::addRecord, newId, "", Is::sending), change("2", T::deleteRecord, newId)},
         "1: -, 2: wait for 1"},
        {"an add whose parameters cannot be read never arrives",
         {change("1", T::addRecord, newId, "", Is::sending, "no JSON"), change("2", T::editRecord, "r", lookup)},
         "1: -, 2: fail"},
        {"kinds that are not sent yet hold nothing up",
         {change("1", T::sendMail, "r"), change("2", T::addComment, "r"), change("3", T::editRecord, "r")},
         "1: not sendable, 2: not sendable, 3: send"},
    };
    for (auto& each : cases) EXPECT_EQ(turnsOf(each.queue), each.turns) << each.name;
}

TEST(ChangeTurnsTest, IdIsReplacedAsAWholeText) {
    auto row = change("1", TransactionType::editRecord, newId,
                      std::string(R"("id":"NEW_000000001","Note":"see NEW_000000001","Other":"NEW_0000000011")"))
                   .transaction;
    row.parentRecordID = newId;
    auto replaced = withReplacedId(row, newId, "42");
    EXPECT_EQ(replaced.recordID + " " + *replaced.parentRecordID, "42 42");
    EXPECT_EQ(replaced.dataJSON->text(),
              R"({"data":[{"id":"42","Note":"see NEW_000000001","Other":"NEW_0000000011"}]})");
}

}  // namespace
}  // namespace tarvo
