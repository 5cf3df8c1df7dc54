#include "tarvobase/storage/InMemoryPersistanceClass.h"

#include <map>

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"
#include "tarvobase/configuration/CommonConfigration.h"

namespace tarvo {

namespace {

struct Table {
    std::uint64_t changes = 0;
    std::uint64_t writers = 0;
};

class Tables {
public:
    template <class F>
    auto with(const std::string& owner, const std::string& tableName, F&& use) {
        platform::MutexLock lock(mutex_);
        return use(tables_[{owner, tableName}]);
    }
    static Tables& shared() { return platform::ProcessState::current().get<Tables>(); }

private:
    platform::Mutex mutex_;
    std::map<std::pair<std::string, std::string>, Table> tables_ TARVO_GUARDED_BY(mutex_);
};

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

std::uint64_t memory_changes::count(const std::string& owner, const std::string& tableName) {
    return Tables::shared().with(owner, tableName, [](Table& table) { return table.changes; });
}

bool memory_changes::isUnchanged(const std::string& owner, const std::string& tableName, std::uint64_t count) {
    return Tables::shared().with(owner, tableName,
                                 [&](Table& table) { return table.changes == count && table.writers == 0; });
}

std::uint64_t memory_changes::begin(const std::string& owner, const std::string& tableName) {
    return Tables::shared().with(owner, tableName, [](Table& table) {
        ++table.writers;
        return ++table.changes;
    });
}

bool memory_changes::end(const std::string& owner, const std::string& tableName, std::uint64_t began) {
    return Tables::shared().with(owner, tableName, [&](Table& table) {
        --table.writers;
        return table.changes++ == began && table.writers == 0;
    });
}

}  // namespace tarvo
