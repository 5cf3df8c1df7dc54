#include "platform/dates/LocalZone.h"

#include <unicode/basictz.h>
#include <unicode/tztrans.h>

#include <algorithm>
#include <unordered_map>
#include <vector>

#include "platform/Clock.h"
#include "platform/Log.h"
#include "platform/ThreadSafety.h"

namespace tarvo::platform {

namespace {

constexpr std::int64_t secondsPerDay = 86400;
constexpr double millis = 1000;

}  // namespace

/// Stretches of one offset. Years that records speak of stand in a table, since asking ICU costs ten times as much;
/// it is asked for the others.
struct LocalZone::Rules {
    static constexpr std::int64_t tableBegin = -2'208'988'800, tableEnd = 4'102'444'800;  // years 1900 and 2100

    // All zones that ICU makes by name are of this class.
    std::unique_ptr<icu::BasicTimeZone> zone;
    std::vector<std::int64_t> begins;
    std::vector<std::int32_t> offsets;

    static std::unique_ptr<Rules> named(const std::string& name) {
        std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(icu::UnicodeString::fromUTF8(name)));
        auto basic = dynamic_cast<icu::BasicTimeZone*>(zone.get());
        if (!basic || *zone == icu::TimeZone::getUnknown()) return nullptr;
        zone.release();
        auto rules = std::make_unique<Rules>();
        rules->zone.reset(basic);
        rules->fillTable();
        return rules;
    }

    void fillTable() {
        icu::TimeZoneTransition change;
        for (auto begin = tableBegin; begin < tableEnd;) {
            begins.push_back(begin);
            offsets.push_back(askedOffset(begin));
            if (!zone->getNextTransition(static_cast<double>(begin) * millis, false, change)) break;
            begin = static_cast<std::int64_t>(change.getTime() / millis);
        }
    }

    std::int32_t askedOffset(std::int64_t moment) const {
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t raw = 0, saving = 0;
        zone->getOffset(static_cast<double>(moment) * millis, false, raw, saving, status);
        return (raw + saving) / 1000;
    }

    // The stretch of a moment of the table.
    std::size_t stretchAt(std::int64_t moment) const {
        return static_cast<std::size_t>(std::upper_bound(begins.begin(), begins.end(), moment) - begins.begin()) - 1;
    }

    std::int64_t startOfDayByTable(std::int64_t local) const {
        // No offset is longer than a day, so the search begins after every stretch in question.
        auto stretch = stretchAt(local + secondsPerDay);
        while (stretch > 0 && begins[stretch] + offsets[stretch] > local) --stretch;
        auto moment = local - offsets[stretch];
        // Where midnight was skipped, the day began with the change of the clocks.
        return stretch + 1 < begins.size() ? std::min(moment, begins[stretch + 1]) : moment;
    }

    std::int64_t startOfDayByAsking(std::int64_t local) const {
        UErrorCode status = U_ZERO_ERROR;
        std::int32_t raw = 0, saving = 0;
        zone->getOffsetFromLocal(static_cast<double>(local) * millis, UCAL_TZ_LOCAL_FORMER, UCAL_TZ_LOCAL_LATTER, raw,
                                 saving, status);
        auto offset = (raw + saving) / 1000;
        auto moment = local - offset;
        icu::TimeZoneTransition change;
        if (askedOffset(moment) != offset &&
            zone->getPreviousTransition(static_cast<double>(moment) * millis, true, change))
            moment = static_cast<std::int64_t>(change.getTime() / millis);
        return moment;
    }
};

LocalZone::LocalZone(std::string name, std::unique_ptr<Rules> rules)
    : name_(std::move(name)), rules_(std::move(rules)) {}

LocalZone::~LocalZone() = default;

std::shared_ptr<const LocalZone> LocalZone::named(const std::string& name) {
    static Mutex mutex;
    static auto* known = new std::unordered_map<std::string, std::shared_ptr<const LocalZone>>;
    MutexLock lock(mutex);
    auto& zone = (*known)[name];
    if (zone) return zone;
    if (auto rules = Rules::named(name)) {
        zone.reset(new LocalZone(name, std::move(rules)));
    } else {
        log(LogLevel::warning, "dates", "Dates: the time zone \"" + name + "\" is unknown; UTC stands for it");
        zone.reset(new LocalZone("UTC", Rules::named("UTC")));
    }
    return zone;
}

const std::shared_ptr<const LocalZone>& LocalZone::inForce() {
    struct Known {
        std::shared_ptr<const LocalZone> zone;
        std::uint64_t version = 0;
    };
    // Each thread keeps a reference, so that asking costs one comparison.
    thread_local Known own;
    auto version = Clock::timeZoneVersion();
    if (own.zone && own.version == version) return own.zone;

    static Mutex mutex;
    static auto* shared = new Known;
    MutexLock lock(mutex);
    if (!shared->zone || shared->version != version) *shared = {named(Clock::timeZone()), version};
    own = *shared;
    return own.zone;
}

std::int32_t LocalZone::offsetAt(std::int64_t secondsSince1970) const {
    if (secondsSince1970 < Rules::tableBegin || secondsSince1970 >= Rules::tableEnd)
        return rules_->askedOffset(secondsSince1970);
    return rules_->offsets[rules_->stretchAt(secondsSince1970)];
}

std::optional<std::int64_t> LocalZone::startOfDay(std::int64_t day) const {
    auto local = day * secondsPerDay;
    bool inTable = local > Rules::tableBegin + 2 * secondsPerDay && local < Rules::tableEnd - 2 * secondsPerDay;
    auto moment = inTable ? rules_->startOfDayByTable(local) : rules_->startOfDayByAsking(local);
    auto began = moment + offsetAt(moment);
    return began >= local && began < local + secondsPerDay ? std::optional(moment) : std::nullopt;
}

}  // namespace tarvo::platform
