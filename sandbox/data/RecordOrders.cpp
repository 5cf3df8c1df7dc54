#include "sandbox/data/RecordOrders.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "platform/Text.h"
#include "platform/dates/Dates.h"
#include "sandbox/data/Metadata.h"

namespace tarvo::sandbox {
namespace {

// This many positions take about sixteen megabytes.
constexpr std::size_t maxCachedPositions = 4'000'000;

/// Holds what a record is sorted by. A record without a value is the smallest.
struct SortKey {
    std::uint32_t position;
    bool isEmpty = false;
    double number = 0;
    std::string text;
    std::string id;
};

/// Says how the values of a field compare, which is how clients compare them: a client could not keep the beginning of
/// a list that it orders in another way. Amounts compare in the base currency, other numbers by their whole part, times
/// by size, people by last name and first name, and all else as people read it, ASCII letters without regard to case.
class SortKeys {
public:
    explicit SortKeys(const FieldData* field)
        : field_(field),
          dateTimes_(platform::DateFormatter::pattern(std::string(platform::DateFormatter::iso8601Pattern))) {}

    SortKey of(const RecordData& record, std::uint32_t position) {
        SortKey key{position, false, 0, "", record.id()};
        if (!field_) return key;
        if (field_->apiName == "Full_Name") {
            key.text = textOf(record, "Last_Name") + '\0' + textOf(record, "First_Name");
            return key;
        }
        record.read(field_->apiName, value_);
        key.isEmpty = value_.kind == RecordValue::Kind::absent;
        if (key.isEmpty) return key;
        auto shown = value_.display();
        if (auto number = asNumber(record, shown))
            key.number = *number;
        else
            key.text = text::asciiLowercase(shown);
        return key;
    }

private:
    std::string textOf(const RecordData& record, std::string_view apiName) {
        record.read(apiName, value_);
        bool isAbsent = value_.kind == RecordValue::Kind::absent;
        return isAbsent ? std::string(1, '\0') : '\1' + text::asciiLowercase(value_.display());
    }
    std::optional<double> asNumber(const RecordData& record, const std::string& shown) {
        const auto& type = field_->type;
        // Clients keep times as numbers, and an empty text sorts after all numbers.
        if (shown.empty() && (type == "datetime" || type == "date")) return std::numeric_limits<double>::infinity();
        if (type == "datetime") {
            auto seconds = dateTimes_.date(shown);
            return seconds ? std::optional(static_cast<double>(*seconds)) : std::nullopt;
        }
        auto number = shown.empty() ? 0 : text::toReal(shown);
        if (!number) return std::nullopt;
        if (type == "currency") {
            record.read("Exchange_Rate", value_);
            auto rate = text::toReal(value_.display()).value_or(0);
            return rate == 0 ? number : *number / rate;
        }
        for (auto numeric : {"integer", "double", "decimal"})
            if (type == numeric) return std::trunc(*number);
        return type == "bigint" ? number : std::nullopt;
    }

    const FieldData* field_;
    platform::DateFormatter dateTimes_;
    RecordValue value_;
};

/// Records with equal values come with the newest first, in either direction.
bool isBefore(const SortKey& a, const SortKey& b, const RecordSort& sort) {
    const auto& first = sort.isAscending ? a : b;
    const auto& second = sort.isAscending ? b : a;
    if (first.isEmpty != second.isEmpty) return first.isEmpty;
    if (first.number != second.number) return first.number < second.number;
    if (auto order = first.text.compare(second.text)) return order < 0;
    return sort.field ? a.id > b.id : first.id < second.id;
}

/// Makes the orders of one list by one filter and one sort.
class OrderMaker {
public:
    OrderMaker(const RecordList& records, const RecordOrders::Filter& filter, const RecordSort& sort)
        : records_(records), filter_(filter), sort_(sort), keys_(sort.field) {}

    RecordOrders::Positions ofSnapshot() {
        std::vector<SortKey> sorted;
        for (std::size_t i = 0; i < records_.snapshotSize(); ++i) add(records_.snapshotAt(i), i, sorted);
        sort(sorted);
        std::vector<std::uint32_t> positions;
        positions.reserve(sorted.size());
        for (const auto& key : sorted) positions.push_back(key.position);
        return std::make_shared<const std::vector<std::uint32_t>>(std::move(positions));
    }

    /// Leaves the touched records out of the snapshot's order and puts the changed ones where they belong.
    RecordOrders::Positions withChanges(const std::vector<std::uint32_t>& snapshot) {
        std::vector<SortKey> changed;
        for (auto position : records_.changedPositions()) add(*records_.at(position), position, changed);
        sort(changed);
        std::vector<std::uint32_t> kept;
        kept.reserve(snapshot.size());
        std::copy_if(snapshot.begin(), snapshot.end(), std::back_inserter(kept),
                     [&](std::uint32_t position) { return !records_.isTouched(position); });
        std::vector<std::uint32_t> merged;
        merged.reserve(kept.size() + changed.size());
        auto next = kept.begin();
        for (const auto& key : changed) {
            auto place = std::upper_bound(next, kept.end(), key, [&](const SortKey& one, std::uint32_t other) {
                return isBefore(one, keys_.of(records_.snapshotAt(other), other), sort_);
            });
            merged.insert(merged.end(), next, place);
            merged.push_back(key.position);
            next = place;
        }
        merged.insert(merged.end(), next, kept.end());
        return std::make_shared<const std::vector<std::uint32_t>>(std::move(merged));
    }

private:
    void add(const RecordData& record, std::size_t position, std::vector<SortKey>& into) {
        if (!filter_ || filter_(record)) into.push_back(keys_.of(record, static_cast<std::uint32_t>(position)));
    }
    void sort(std::vector<SortKey>& keys) const {
        std::sort(keys.begin(), keys.end(), [&](const SortKey& a, const SortKey& b) { return isBefore(a, b, sort_); });
    }

    const RecordList& records_;
    const RecordOrders::Filter& filter_;
    const RecordSort sort_;
    SortKeys keys_;
};

}  // namespace

RecordOrders::Positions RecordOrders::order(const RecordList& records, const std::string& module,
                                            const std::string& filterId, const Filter& filter, const RecordSort& sort) {
    auto key =
        module + "\n" + filterId + "\n" + (sort.field ? sort.field->apiName : "") + (sort.isAscending ? "+" : "-");
    OrderMaker maker(records, filter, sort);
    auto snapshot = cached(key);
    if (!snapshot) cache(key, snapshot = maker.ofSnapshot());
    if (!records.hasChanges()) return snapshot;
    key += "\n" + std::to_string(records.version());
    auto merged = cached(key);
    if (!merged) cache(key, merged = maker.withChanges(*snapshot));
    return merged;
}

RecordOrders::Positions RecordOrders::cached(const std::string& key) {
    platform::MutexLock lock(mutex_);
    auto found = std::find_if(cache_.begin(), cache_.end(), [&](const CachedOrder& each) { return each.key == key; });
    if (found == cache_.end()) return nullptr;
    cache_.splice(cache_.begin(), cache_, found);
    return found->positions;
}

void RecordOrders::cache(const std::string& key, const Positions& positions) {
    platform::MutexLock lock(mutex_);
    cache_.push_front({key, positions});
    std::size_t total = 0;
    for (auto each = cache_.begin(); each != cache_.end();) {
        total += each->positions->size();
        // The order that was just made stays, however long it is.
        each = total > maxCachedPositions && each != cache_.begin() ? cache_.erase(each) : std::next(each);
    }
}

}  // namespace tarvo::sandbox
