#include "tarvobase/storage/InMemoryPersistanceClass.h"

#include <map>
#include <mutex>

#include "platform/ProcessState.h"
#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

struct Counts {
    std::mutex mutex;
    std::map<std::pair<std::string, std::string>, std::uint64_t> counts;
};

Counts& shared() { return platform::ProcessState::current().get<Counts>(); }

/// A type that no property of a value object has.
enum class NoProperty { none };

}  // namespace

template <>
struct EnumCases<NoProperty> {
    static constexpr EnumCase<NoProperty> cases[] = {{NoProperty::none, "none"}};
};

InMemoryPropertyValue PartOfTable::operator[](std::string_view) const { return NoProperty::none; }

std::string InMemoryPersistanceClass::currentAccountBrenUID() const {
    return CommonConfigration::sharedInstance().getCurrentAccountID().value_or("");
}

std::uint64_t memory_changes::count(const std::string& account, const std::string& tableName) {
    std::lock_guard lock(shared().mutex);
    return shared().counts[{account, tableName}];
}

void memory_changes::note(const std::string& account, const std::string& tableName) {
    std::lock_guard lock(shared().mutex);
    ++shared().counts[{account, tableName}];
}

}  // namespace tarvo
