#include <algorithm>
#include <vector>

#include "platform/Text.h"
#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/calls/ChangeLists.h"
#include "sandbox/data/DataSet.h"

namespace tarvo::sandbox::calls {
namespace {

/// Says which page of a module's changes a client asks for.
struct PageOfChanges {
    const ModuleData* module;
    /// Milliseconds of the server's clock; 0 asks for everything.
    std::int64_t after = 0;
    std::size_t from = 0;
    std::size_t limit = 0;
};

/// Writes a page without the server's lock, from the records of one moment.
class PageOfChangesWriter {
public:
    PageOfChangesWriter(const Call& call, const PageOfChanges& page, std::int64_t now)
        : page_(page),
          records_(call.data.records->now().list(page.module->name)),
          isStuck_(call.data.sync.isStuck),
          now_(now) {}

    std::string write() {
        auto changed = isStuck_ ? std::vector<std::size_t>() : records_.positionsChangedAfter(page_.after);
        auto from = std::min(page_.from, changed.size());
        auto until = from + std::min(page_.limit, changed.size() - from);
        for (auto i = from; i < until; ++i) sortIn(changed[i]);
        ValueMap about{{"count", until - from}, {"more_records", isStuck_ || until < changed.size()}};
        envelope::Writer writer(now_);
        for (const auto* list : {&added_, &edited_})
            writer.add(page_.module->name, list->empty(), about,
                       [&](std::string& json) { appendRecords(*list, json); });
        writer.add(page_.module->name, deleted_.empty(), about, [&](std::string& json) { writeDeleted(json); });
        return writer.finish();
    }

private:
    void sortIn(std::size_t position) {
        auto record = records_.at(position);
        if (!record)
            deleted_.push_back(records_.idAt(position));
        else
            (record->addedAt() > page_.after ? added_ : edited_).push_back(*record);
    }
    void writeDeleted(std::string& json) const { appendIds(deleted_, json); }

    const PageOfChanges page_;
    const RecordList records_;
    const bool isStuck_;
    const std::int64_t now_;
    std::vector<RecordData> added_, edited_;
    std::vector<std::string> deleted_;
};

/// Returns the time that the page names as its own.
std::int64_t timeOfPage(const Call& call, const PageOfChanges& page) {
    auto& sync = call.data.sync;
    auto round = call.account + "\n" + page.module->name + "\n" + std::to_string(page.after);
    if (page.from == 0) sync.roundTimes[round] = call.now;
    auto first = sync.roundTimes.find(round);
    auto time = sync.hasTimeOfRound && first != sync.roundTimes.end() ? first->second : call.now;
    sync.nameTime(time);
    return time;
}

Reply refusedPage(const Call& call, std::string_view code, std::string_view message) {
    return Reply::of(
        envelope::answer({envelope::failedEntry(parameter(call, "module"), code, message, call.now)}, call.now));
}

}  // namespace

Reply changedRecords(const Call& call) {
    if (call.request.parameter("cvid")) return changesOfList(call);
    const auto* module = moduleOf(call);
    if (!module) return refusedPage(call, "INVALID_MODULE", "There is no such module.");
    auto after = countIn(call, "lmt"), from = countIn(call, "count"), limit = countIn(call, "mcount");
    if (!after || !from || !limit)
        return refusedPage(call, "INVALID_DATA", "\"lmt\", \"count\" and \"mcount\" are whole numbers.");
    auto longest = call.data.sync.pageLimit;
    PageOfChanges page{module, *after, static_cast<std::size_t>(*from),
                       *limit == 0 ? longest : std::min(longest, static_cast<std::size_t>(*limit))};
    PageOfChangesWriter writer(call, page, timeOfPage(call, page));
    return Reply::writtenBy([writer]() mutable { return writer.write(); });
}

}  // namespace tarvo::sandbox::calls
