#include <fstream>

#include "tests/end_to_end/ChangeWorld.h"

namespace tarvo::tests {

namespace {

/// Changes of every kind, with a fault of the disk at each commit in turn: that of a change, a claim, an answer.
/// What is saved is all there in the end, and nothing is there twice.
class ChangeFaults : public ChangeWorld {
protected:
    void SetUp() override {
        begin();
        addExisting();
    }

    /// Adds the records that the next run edits and deletes as ones that the server has.
    void addExisting() {
        run_ = "f" + std::to_string(++runs_);
        model.beginRound(run_, false);
        for (auto record : {&edited_, &deleted_}) {
            *record = model.records().size();
            change(model.addRecord());
        }
        EXPECT_EQ(member(response("host.queue.idle"), "isEmpty"), Value(true));
    }

    /// Makes changes of every kind through the older queue, until the program ends. What it refuses to save is counted.
    void changeByOlderQueue() {
        ask("host.queue.stop");
        auto first = model.records().size();
        change(model.addRecord());
        auto isHere = [&](std::size_t record) { return model.records().size() > record; };
        if (isHere(first)) change(model.edit(first));
        if (isHere(first)) change(model.edit(first));
        auto second = model.records().size();
        change(model.addRecord());
        if (isHere(second) && !model.records()[second].isReferenced) change(model.delete_(second));
        change(model.edit(edited_));
        if (!model.records()[deleted_].isReferenced) change(model.delete_(deleted_));
        upload();
        ask("host.queue.start");
        ask("host.queue.idle");
        auto third = model.records().size();
        change(model.addRecord());
        ask("host.queue.idle");
        if (isHere(third)) change(model.edit(third));
        ask("host.queue.idle");
        if (isHere(third) && !model.records()[third].isReferenced) change(model.delete_(third));
        ask("host.queue.idle");
    }
    /// The same through the current queue, beginning with a record that the older one adds.
    void changeByCurrentQueue() {
        ask("host.queue.stop");
        isHeld = true;
        auto isHere = [&](std::size_t record) { return model.records().size() > record; };
        change(model.addRecord());
        for (bool hasSound : {false, true}) {
            auto note = model.records().size();
            change(model.addNote(hasSound));
            if (isHere(note)) change(model.edit(note));
        }
        change(model.addByTransaction("addRecord"));
        change(model.addByTransaction("import"));
        isHeld = false;
        ask("host.queue.start");
        ask("host.queue.idle");
        auto last = model.records().size();
        change(model.addNote(true));
        ask("host.queue.idle");
        if (isHere(last)) change(model.edit(last));
        ask("host.queue.idle");
        if (isHere(last)) change(model.delete_(last));
        ask("host.queue.idle");
    }
    void change(ModelChange next) {
        if (isOver_) return;
        auto line = make(next);
        isOver_ = !line;
        auto reason = take(std::move(next), line);
        EXPECT_TRUE(text::contains(
            {"", "notStored", "the voiceFile cannot be copied", "no reason", "the queue could not be written"}, reason))
            << reason;
        refused_ += !reason.empty();
    }
    void upload() {
        if (isOver_) return;
        auto& parent = model.records()[edited_];
        auto line = ask("host.queue.upload", {{"recordID", "TarvoTEMPID#" + run_},
                                              {"parentID", parent.temporaryId},
                                              {"moduleName", parent.module->name},
                                              {"fileURL", attachment()}});
        isOver_ = !line;
        isUploaded_ = line && member(*line, "event") == Value("done");
        if (line || !start()) return;
        isUploaded_ = !localRecords("Attachments", "NAME", {attachmentName()}).empty();
    }
    std::string attachmentName() const { return run_ + ".txt"; }
    std::string attachment() const { return world->folder + "/" + attachmentName(); }

    /// Runs the changes with a fault, and starts the program once more without one. Returns whether the fault was met.
    using Changes = void (ChangeFaults::*)();
    bool run(Changes changes, const std::string& fault, int at, const Settings& further = {}) {
        SCOPED_TRACE(fault + " at commit " + std::to_string(at));
        auto environment = faultAt(fault, at);
        environment.insert(environment.end(), further.begin(), further.end());
        std::ofstream(attachment()) << "content";
        refused_ = 0;
        isOver_ = false;
        if (start(environment)) (this->*changes)();
        isHeld = false;
        bool wasMet = isOver_ || refused_ > 0 || !ask("host.queue.list");
        if (!isOver_) {
            EXPECT_TRUE(start()) << host->errors();
        }
        isOver_ = false;
        drain();
        checkUpload();
        if (runs_ % 8 == 0) check();
        addExisting();
        return wasMet;
    }
    /// A run of the whole suite samples some commits. With TARVO_FULL_SWEEP in the environment it tries every one.
    static int stride() { return std::getenv("TARVO_FULL_SWEEP") ? 1 : 4; }
    /// Runs the changes with a kill at every commit in turn, or at each `stride`th.
    void killAtCommits(Changes changes, const std::string& fault, int stride) {
        int at = 1;
        while (!HasFailure() && run(changes, fault, at)) at += stride;
        EXPECT_GT(at, 20);
        check();
    }
    void fillDiskAtCommits(Changes changes) {
        int refusals = 0;
        for (int at = 1; at <= 40 && !HasFailure(); at += stride())
            refusals += run(changes, "full", at, {"TARVO_FAULT_WRITES=2"});
        EXPECT_GT(refusals, 1);
        check();
    }
    static constexpr auto older = &ChangeFaults::changeByOlderQueue, current = &ChangeFaults::changeByCurrentQueue;

private:
    void checkUpload() {
        int held = 0;
        std::string id;
        for (auto& record : recordsAtServer("Attachments"))
            if (member(record, "File_Name") == Value(attachmentName())) ++held, id = member(record, "id").textOr("");
        auto here = localRecords("Attachments", "NAME", {attachmentName()});
        EXPECT_EQ(held, isUploaded_);
        EXPECT_EQ(here.size(), isUploaded_ ? 1u : 0u);
        if (!here.empty()) {
            EXPECT_EQ(member(here.front(), "ID"), Value(id));
        }
        isUploaded_ = false;
    }

    bool isOver_ = false;  // the program ended, and was started again without a fault
    int refused_ = 0;
    std::string run_;
    int runs_ = 0;
    std::size_t edited_ = 0, deleted_ = 0;
    bool isUploaded_ = false;
};

TEST_F(ChangeFaults, AKillAtACommitLosesAndDoublesNothing) { killAtCommits(older, "kill", 1); }
TEST_F(ChangeFaults, AKillBeforeTheEndOfACommitLosesAndDoublesNothing) { killAtCommits(older, "killBefore", stride()); }
TEST_F(ChangeFaults, AFullDiskIsReportedAndTheRestGoesOn) { fillDiskAtCommits(older); }

TEST_F(ChangeFaults, AKillAtACommitOfTheCurrentQueueLosesAndDoublesNothing) {
    killAtCommits(current, "kill", stride());
}
TEST_F(ChangeFaults, AFullDiskUnderTheCurrentQueueIsReportedAndTheRestGoesOn) { fillDiskAtCommits(current); }

}  // namespace

}  // namespace tarvo::tests
