#include <algorithm>
#include <set>
#include <vector>

#include "sandbox/Envelope.h"
#include "sandbox/calls/Answers.h"
#include "sandbox/calls/CallParameters.h"
#include "sandbox/calls/ChangeLists.h"
#include "sandbox/data/DataSet.h"
#include "sandbox/data/ViewFilter.h"

namespace tarvo::sandbox::calls {
namespace {

/// What a client that has the list of `after` does not know.
struct ListRequest {
    const ModuleData* module;
    ViewData view;
    std::int64_t after = 0;
    std::size_t from = 0, limit = 0;
    std::size_t resetLimit = 0;
};

/// Finds the changes of a list. A record has left it if the list had it at any time since then: a client may have read
/// the list in pages.
class ListChangesWriter {
public:
    ListChangesWriter(const Call& call, ListRequest request)
        : request_(std::move(request)),
          data_(call.data),
          account_(call.account),
          states_(call.data.records->since(request_.after)),
          now_(call.now) {
        if (states_.empty()) {
            isTooMuch_ = true;
            states_.push_back(call.data.records->now());
        }
    }

    std::string write() {
        auto list = states_.back().list(request_.module->name);
        auto ids = changedIds(list);
        if (ids.size() > request_.resetLimit) isTooMuch_ = true;
        ViewFilter filter(data_, request_.view, account_, now_), former(data_, request_.view, account_, formerTime());
        auto from = std::min(request_.from, ids.size());
        auto until = from + std::min(request_.limit, ids.size() - from);
        for (auto i = from; i < until; ++i) sortIn(ids[i], list, filter, former);
        ValueMap about{{"count", until - from}, {"more_records", until < ids.size()}};
        if (isTooMuch_) about.set("resetLocal", true);
        bool hasNone = added_.empty() && modified_.empty() && deleted_.empty() && moved_.empty() && !isTooMuch_;
        envelope::Writer writer(now_);
        auto add = [&](auto&& writeRows) { writer.add(request_.module->name, hasNone, about, writeRows); };
        for (const auto* records : {&added_, &modified_})
            add([&](std::string& json) { appendRecords(*records, json); });
        for (const auto* gone : {&deleted_, &moved_}) add([&](std::string& json) { appendIds(*gone, json); });
        return writer.finish();
    }

private:
    /// Returns the ids of the records that may have entered, changed or left. In a view whose result depends on the
    /// time each record may have.
    std::vector<std::string> changedIds(const RecordList& list) const {
        constexpr std::int64_t millisecondsOfHour = 3'600'000;
        bool isSameHour = request_.after / millisecondsOfHour == now_ / millisecondsOfHour;
        bool dependsOnTime = !request_.view.criteria.isNull() && !isSameHour;
        auto changed = list.positionsChangedAfter(request_.after);
        std::vector<std::string> ids;
        for (auto position : changed) ids.push_back(list.idAt(position));
        if (!dependsOnTime) return ids;
        ViewFilter filter(data_, request_.view, account_, now_), former(data_, request_.view, account_, formerTime());
        std::set<std::size_t> known(changed.begin(), changed.end());
        for (std::size_t position = 0; position < list.size(); ++position) {
            auto record = known.contains(position) ? std::nullopt : list.at(position);
            if (record && filter.holds(*record) != former.holds(*record)) ids.push_back(record->id());
        }
        return ids;
    }
    std::int64_t formerTime() const { return request_.after > 0 ? request_.after : now_; }

    void sortIn(const std::string& id, const RecordList& list, const ViewFilter& filter, const ViewFilter& former) {
        auto record = list.find(id);
        bool was = hadAtFirst(id, former);
        if (record && filter.holds(*record))
            (was ? modified_ : added_).push_back(*record);
        else if (was || hadMeanwhile(id, filter))
            (record ? moved_ : deleted_).push_back(id);
    }
    bool hadAtFirst(const std::string& id, const ViewFilter& former) const {
        auto record = states_.front().list(request_.module->name).find(id);
        return record && former.holds(*record);
    }
    bool hadMeanwhile(const std::string& id, const ViewFilter& filter) const {
        return std::any_of(states_.begin(), states_.end() - 1, [&](const RecordView& state) {
            auto record = state.list(request_.module->name).find(id);
            return record && filter.holds(*record);
        });
    }

    const ListRequest request_;
    DataSet& data_;
    const std::string account_;
    /// The records at the time of the request and after each change since then.
    std::vector<RecordView> states_;
    const std::int64_t now_;
    bool isTooMuch_ = false;
    std::vector<RecordData> added_, modified_;
    std::vector<std::string> deleted_, moved_;
};

Reply refusedList(const Call& call, std::string_view code, std::string_view message) {
    return Reply::of(
        envelope::answer({envelope::failedEntry(parameter(call, "module"), code, message, call.now)}, call.now));
}

}  // namespace

Reply changesOfList(const Call& call) {
    const auto* module = moduleOf(call);
    if (!module) return refusedList(call, "INVALID_MODULE", "There is no such module.");
    const auto* view = viewOf(call, *module, parameter(call, "cvid"));
    if (!view) return refusedList(call, "INVALID_CUSTOM_VIEW", "The module has no such view.");
    auto after = countIn(call, "lmt"), from = countIn(call, "count"), limit = countIn(call, "mcount");
    if (!after || !from || !limit)
        return refusedList(call, "INVALID_DATA", "\"lmt\", \"count\" and \"mcount\" are whole numbers.");
    auto& sync = call.data.sync;
    sync.nameTime(call.now);
    auto longest = sync.pageLimit;
    ListRequest request{.module = module,
                        .view = *view,
                        .after = *after,
                        .from = static_cast<std::size_t>(*from),
                        .limit = *limit == 0 ? longest : std::min(longest, static_cast<std::size_t>(*limit)),
                        .resetLimit = sync.listReset};
    ListChangesWriter writer(call, std::move(request));
    return Reply::writtenBy([writer]() mutable { return writer.write(); });
}

}  // namespace tarvo::sandbox::calls
