#include "tarvobase/storage/InMemoryPersistanceClass.h"

#include <map>

#include "platform/ProcessState.h"
#include "platform/ThreadSafety.h"

namespace tarvo {

namespace {

struct TableChanges {
    std::uint64_t count = 0;
    std::uint64_t writers = 0;
};

class ChangesOfTables {
public:
    template <class F>
    auto with(const std::string& owner, const std::string& tableName, F&& use) {
        platform::MutexLock lock(mutex_);
        return use(tables_[{owner, tableName}]);
    }
    static ChangesOfTables& shared() { return platform::ProcessState::current().get<ChangesOfTables>(); }

private:
    platform::Mutex mutex_;
    std::map<std::pair<std::string, std::string>, TableChanges> tables_ TARVO_GUARDED_BY(mutex_);
};

/// A type that no property of a value object has, so that no filter matches it.
enum class NoProperty { none };

}  // namespace

template <>
struct EnumCases<NoProperty> {
    static constexpr EnumCase<NoProperty> cases[] = {{NoProperty::none, "none"}};
};

InMemoryPropertyValue IncompleteTableMark::operator[](std::string_view) const { return NoProperty::none; }

std::string InMemoryPersistanceClass::currentAccountBrenUID() const { return inMemoryPersistanceClass->account(); }

std::uint64_t memory_changes::count(const std::string& owner, const std::string& tableName) {
    return ChangesOfTables::shared().with(owner, tableName, [](TableChanges& changes) { return changes.count; });
}

bool memory_changes::isUnchanged(const std::string& owner, const std::string& tableName, std::uint64_t count) {
    return ChangesOfTables::shared().with(
        owner, tableName, [&](TableChanges& changes) { return changes.count == count && changes.writers == 0; });
}

std::uint64_t memory_changes::begin(const std::string& owner, const std::string& tableName) {
    return ChangesOfTables::shared().with(owner, tableName, [](TableChanges& changes) {
        ++changes.writers;
        return ++changes.count;
    });
}

bool memory_changes::end(const std::string& owner, const std::string& tableName, std::uint64_t began) {
    return ChangesOfTables::shared().with(owner, tableName, [&](TableChanges& changes) {
        --changes.writers;
        return changes.count++ == began && changes.writers == 0;
    });
}

}  // namespace tarvo
