#include <poll.h>

#include <cstdlib>
#include <iostream>
#include <map>
#include <set>

#include "tests/end_to_end/ChangeWorld.h"

namespace tarvo::tests {

namespace {

std::uint64_t numberIn(const char* variable, std::uint64_t otherwise) {
    auto text = std::getenv(variable);
    return text ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// Faults that leave a change without an answer, so that nothing but time is lost.
constexpr const char* silences[] = {
    R"("fault":"dropBefore")",
    R"("fault":"dropAfter")",
    R"("fault":"truncate")",
    R"("fault":"delay","milliseconds":20)",
    R"("fault":"delayAfter","milliseconds":20)",
    R"("fault":"errorEnvelope","status":401)",
    R"("fault":"errorEnvelope","status":429)",
    R"("fault":"errorEnvelope","status":503)",
};
/// Faults after which a change has failed, though the server may have applied it.
constexpr const char* failures[] = {
    R"("fault":"nonJson")",
    R"("fault":"errorEnvelope","status":500)",
    R"("fault":"errorEnvelope")",
    R"("fault":"missingBlocks")",
    R"("fault":"missingIds")",
    R"("fault":"wrongTypes","level":1)",
    R"("fault":"wrongTypes","level":3)",
    R"("fault":"olderEnvelope")",
};
/// Rules for a module: the forms of answers, and what the server refuses.
constexpr const char* answers[] = {R"("answer":"id")", R"("answer":"recordId")", R"("answer":"texts")",
                                   R"("answer":"record")"};
constexpr const char* refusals[] = {
    R"("refuse":["add"])",       R"("refuse":["edit"])",   R"("refuse":["delete"])",
    R"("mandatory":["$FIELD"])", R"("unique":["$FIELD"])", R"("errorObjects":true,"refuse":["add","edit"])",
};
constexpr const char* changeCalls[] = {"products/addrecord", "products/updaterecord", "products/deleterecord",
                                       "uploadvoicenote", "*"};

/// Everything breaks while a user works: answers, the network, the program. In the end all that was acknowledged is at
/// the server, once and in order.
///
/// TARVO_RIG_ROUNDS sets the number of rounds of each test, TARVO_RIG_SEED the seed of the first one.
class ChangeRounds : public ChangeWorld {
protected:
    static constexpr int changesPerRound = 200, heldChanges = 40, roundsPerServer = 10;

    int number(int from, int to) { return std::uniform_int_distribution<int>(from, to)(random); }
    bool isOneIn(int count) { return number(1, count) == 1; }
    template <std::size_t count>
    std::string anyOf(const char* const (&items)[count]) {
        return items[number(0, static_cast<int>(count) - 1)];
    }

    void run(bool mayRefuse) {
        auto rounds = numberIn("TARVO_RIG_ROUNDS", 10);
        auto seed = numberIn("TARVO_RIG_SEED", std::random_device()());
        for (std::uint64_t round = 0; round < rounds && !HasFailure(); ++round, ++seed) {
            auto trace = "round " + std::to_string(round) + " of seed " + std::to_string(seed);
            SCOPED_TRACE(trace);
            std::cout << trace << std::endl;
            random.seed(seed);
            if (round % roundsPerServer == 0) begin();
            model.beginRound("r" + std::to_string(round), mayRefuse);
            changeHeld(mayRefuse);
            for (int i = heldChanges; i < changesPerRound && !HasFailure(); ++i) {
                disturb(mayRefuse);
                change();
            }
            if (HasFailure()) break;
            ASSERT_TRUE(start()) << host->errors();
            drain();
            check();
        }
        std::cout << starts << " starts of the program" << std::endl;
        EXPECT_EQ(host->finish(), 0);
    }
    using Numbered = std::map<std::int64_t, const ModelChange*>;
    /// Makes changes while nothing is sent, has some of them refused, and cancels some of those that are left.
    void changeHeld(bool mayRefuse) {
        ask("host.queue.stop");
        isHeld = true;
        auto& refusing = modelModules[number(0, 2)];
        std::set<std::size_t> neverAdded;
        std::set<std::string> expected;
        std::vector<ModelChange> made;
        for (int i = 0; i < heldChanges; ++i) {
            auto next = model.nextChange();
            if (next.kind == ModelChange::Kind::delete_) continue;
            auto& record = next.after;
            bool isAdd = next.kind == ModelChange::Kind::add,
                 isNamed = next.values().find(record.module->lookup.column);
            auto index = isAdd ? model.records().size() : next.record;
            bool isBehind =
                neverAdded.contains(index) || (isNamed && record.lookup && neverAdded.contains(*record.lookup));
            if (isBehind) expected.insert(record.step);
            bool isRefused = record.module == &refusing && record.remark.empty();
            if (isAdd && (isBehind || isRefused)) neverAdded.insert(index);
            auto line = make(next);
            made.push_back(next);
            EXPECT_EQ(take(std::move(next), line), "");
        }
        Numbered numbered;
        auto queued = listOf(member(response("host.queue.list"), "changes"));
        ASSERT_EQ(queued.size(), made.size());
        for (std::size_t i = 0; i < made.size(); ++i)
            numbered[member(queued[i], "number").asInteger().value_or(0)] = &made[i];
        if (mayRefuse) expectMarked(refusing, numbered, expected);
        cancelSome(numbered);
        isHeld = false;
        ask("host.queue.start");
    }
    /// Has the server refuse some changes. Exactly those are marked that name a refused record, or one that is itself
    /// marked; they are the ones with the `expected` texts.
    void expectMarked(const ModelModule& refusing, const Numbered& numbered, std::set<std::string> expected) {
        control("rules", ruleFor(refusing, R"("mandatory":["$FIELD"])"));
        ask("host.queue.start");
        auto left = listOf(member(response("host.queue.idle"), "changes"));
        std::set<std::string> marked, accepted;
        for (auto& [number, change] : numbered) accepted.insert(change->after.step);
        for (auto& change : left) {
            EXPECT_EQ(member(change, "state"), Value("failed")) << json::write(change).value_or("");
            auto& step = numbered.at(member(change, "number").asInteger().value_or(0))->after.step;
            accepted.erase(step);
            if (member(member(change, "error"), "code") == Value("txnDEPENDING_TRANSACTION_FAILED"))
                marked.insert(step);
        }
        // Nothing may be left of an edit after an accepted one of its record.
        for (auto& [number, change] : numbered)
            if (change->kind == ModelChange::Kind::edit && accepted.contains(change->after.step))
                expected.erase(change->after.step);
        EXPECT_EQ(marked, expected);
    }
    /// Cancels some of the changes that wait or have failed, with what hangs on them if there is something.
    void cancelSome(const Numbered& numbered) {
        for (int i = number(0, 3); i > 0; --i) {
            auto left = listOf(member(response("host.queue.list"), "changes"));
            if (left.empty()) return;
            auto chosen =
                member(left[static_cast<std::size_t>(number(0, static_cast<int>(left.size()) - 1))], "number");
            auto cancel = [&](bool withWaiters) {
                ValueMap request{{"numbers", ValueList{chosen}}, {"revert", true}, {"withWaiters", withWaiters}};
                return ask("host.queue.cancel", request);
            };
            auto line = cancel(false);
            if (line && member(*line, "event") == Value("refused")) line = cancel(true);
            ASSERT_TRUE(line);
            auto cancelled = listOf(member(member(*line, "response"), "numbers"));
            EXPECT_FALSE(cancelled.empty()) << json::write(*line).value_or("");
            for (auto& each : cancelled) model.cancel(*numbered.at(each.asInteger().value_or(0)));
        }
    }
    static std::string ruleFor(const ModelModule& module, std::string rule) {
        auto field = module.remark.name ? module.remark.name : module.step.name;
        if (auto at = rule.find("$FIELD"); at != std::string::npos) rule.replace(at, 6, field);
        return R"({"module":")" + std::string(module.name) + "\"," + rule + "}";
    }
    void disturb(bool mayRefuse) {
        if (isOneIn(8)) {
            auto fault = mayRefuse && isOneIn(3) ? anyOf(failures) : anyOf(silences);
            control("faults", R"({"call":")" + anyOf(changeCalls) + R"(","times":)" + std::to_string(number(1, 3)) +
                                  "," + fault + "}");
        }
        if (isOneIn(25)) {
            auto& module = modelModules[number(0, 3)];
            control("rules", ruleFor(module, mayRefuse && isOneIn(2) ? anyOf(refusals) : anyOf(answers)));
        }
        if (isOneIn(30)) ask("host.queue.stop");
        if (isOneIn(15)) ask("host.queue.start");
        if (mayRefuse && isOneIn(40)) ask("host.queue.retry");
        if (isOneIn(100)) startDoomed();
    }
    /// Starts the program so that it ends at one of its next commits.
    void startDoomed() {
        if (!start(faultAt("kill", number(1, 90)))) {
            ASSERT_TRUE(start()) << host->errors();
        }
    }
    void change() {
        auto next = model.nextChange();
        send(next);
        if (isOneIn(80)) {
            ::poll(nullptr, 0, number(0, 5));
            host->kill();
        }
        auto line = answer(next);
        EXPECT_EQ(take(std::move(next), line), "");
    }
};

TEST_F(ChangeRounds, EndWithExactlyTheChangesMade) { run(false); }
TEST_F(ChangeRounds, EndWithExactlyTheChangesMadeThoughSomeWereRefused) { run(true); }

}  // namespace

}  // namespace tarvo::tests
