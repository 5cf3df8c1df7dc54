#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "platform/Object.h"
#include "platform/Result.h"
#include "tarvobase/database_layer/TransactionEnd.h"
#include "tarvobase/network_layer/ParserError.h"
#include "tarvobase/storage/InMemoryDatabaseAdapter.h"

namespace tarvo {

/// Base of the classes that answer from memory in front of a table class, which they call their primary store.
class InMemoryPersistanceClass : public virtual platform::Object {
public:
    explicit InMemoryPersistanceClass(std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass)
        : inMemoryPersistanceClass(std::move(inMemoryPersistanceClass)) {}

    std::shared_ptr<InMemoryDatabaseAdapter> inMemoryPersistanceClass;
    /// Returns the account whose tables are in memory.
    std::string currentAccountBrenUID() const;
};

/// Counts the changes that in-memory classes make to a table of an owner. With the counts, values that were read from
/// the primary store before a change never replace it in memory, and two simultaneous writers never leave memory older
/// than the primary store.
namespace memory_changes {
std::uint64_t count(const std::string& owner, const std::string& tableName);
/// Returns whether the table has had no further changes since `count` returned this number, and no write is under way.
bool isUnchanged(const std::string& owner, const std::string& tableName, std::uint64_t count);
/// Marks the beginning of a write to the primary store. Returns the number that `end` takes.
std::uint64_t begin(const std::string& owner, const std::string& tableName);
/// Marks the end of the write. Returns false if another write began or ended in between: then it is unknown which of
/// the two the primary store took last.
bool end(const std::string& owner, const std::string& tableName, std::uint64_t began);
}  // namespace memory_changes

/// Marks a table in memory that may lack objects of the primary store. Only the empty filter finds it, so that a
/// request for the whole table meets an object of another class and counts as a miss.
struct IncompleteTableMark final : InMemeoryDatabaseStorable {
    InMemoryPropertyValue operator[](std::string_view) const override;
};

/// The reads and writes that all in-memory classes share. `Key` returns the key of a value: storing a value replaces
/// the one of the same key. Memory takes in values that are written to the primary store (`store` and the other writes)
/// and values that are read from it (`fill`).
template <class T>
class InMemoryTable {
public:
    using Key = std::string (*)(const T&);
    using ColumnValues = InMemoryDatabaseAdapter::ColumnValues;
    using Objects = InMemoryDatabaseAdapter::Objects;
    enum class Extent { part, whole };

    /// Without a primary store, every table in memory counts as complete.
    InMemoryTable(InMemoryPersistanceClass& owner, std::string tableName, Key key, bool hasPrimary)
        : owner_(owner), tableName_(std::move(tableName)), key_(key), hasPrimary_(hasPrimary) {}

    /// Returns all objects, or nullopt if memory may lack some.
    std::optional<std::vector<T>> all() const { return valuesOf(memory().fetchAllObjects(tableName_)); }
    /// Returns the objects that memory holds, whether or not they are all, or nullopt without a table.
    std::optional<std::vector<T>> held() const {
        auto objects = memory().fetchAllObjects(tableName_);
        if (objects)
            std::erase_if(*objects,
                          [](auto& object) { return dynamic_cast<const IncompleteTableMark*>(object.get()); });
        return valuesOf(objects);
    }
    std::optional<T> first(const ColumnValues& filter) const {
        auto found = valuesOf(memory().fetchObjects(tableName_, filter, 1));
        return found && !found->empty() ? std::optional<T>(std::move(found->front())) : std::nullopt;
    }

    /// The owner of the table when a read of the primary store began, and the number of its changes up to then.
    struct Moment {
        std::string owner;
        std::uint64_t changes;
    };
    Moment now() const {
        auto owner = memory().owner();
        auto changes = memory_changes::count(owner, tableName_);
        return {std::move(owner), changes};
    }

    /// Takes in values that were read from the primary store, unless the table has changed since the read began: the
    /// values may be older than the change. The next miss then reads again.
    void fill(const Moment& since, const std::vector<T>& values, Extent extent) const {
        memory().change(tableName_, since.owner, [&](std::optional<Objects>& table) {
            if (!memory_changes::isUnchanged(since.owner, tableName_, since.changes)) return;
            if (extent == Extent::whole) table = Objects();
            merge(table, values);
        });
    }

    // There are four ways to write. Each runs `toPrimary`, which returns whether the primary store took the change;
    // only then memory takes it too. After two overlapping writes, memory drops the table, and the next read asks the
    // primary store. Each write returns the result of `toPrimary`.

    /// Stores values, and replaces values of the same keys.
    template <class Primary>
    bool store(const std::vector<T>& values, Primary&& toPrimary) const {
        return write(toPrimary, [&](std::optional<Objects>& table) { merge(table, values); });
    }
    /// Replaces the whole table. The primary store must hold exactly these values afterwards.
    template <class Primary>
    bool replaceAll(const std::vector<T>& values, Primary&& toPrimary) const {
        return write(toPrimary, [&](std::optional<Objects>& table) {
            table = Objects();
            merge(table, values);
        });
    }
    /// Puts the value in place of the objects that match. Adds none if there is no such object.
    template <class Primary>
    bool update(const T& value, const ColumnValues& filter, Primary&& toPrimary) const {
        return write(toPrimary, [&](std::optional<Objects>& table) {
            if (!table) return;
            for (auto& present : *table)
                if (matches(*present, filter)) present = std::make_shared<InMemoryObject<T>>(value);
        });
    }
    template <class Primary>
    bool remove(const std::vector<ColumnValues>& filters, Primary&& toPrimary) const {
        return write(toPrimary, [&](std::optional<Objects>& table) {
            if (!table) return;
            for (auto& filter : filters) std::erase_if(*table, [&](auto& object) { return matches(*object, filter); });
        });
    }

    /// Returns the first object that memory has, or the answer of the primary store, which memory then keeps.
    template <class Ask>
    Result<T, ParserError> firstOr(const ColumnValues& filter, Ask&& ask) const {
        if (auto found = first(filter)) return *std::move(found);
        auto since = now();
        Result<T, ParserError> answer = ask();
        if (answer) fill(since, {*answer}, Extent::part);
        return answer;
    }
    /// Returns all objects from memory, or the whole answer of the primary store, which memory then keeps.
    template <class Ask>
    Result<std::vector<T>, ParserError> allOr(Ask&& ask) const {
        if (auto everything = all()) return *std::move(everything);
        auto since = now();
        Result<std::vector<T>, ParserError> answer = ask();
        if (answer) fill(since, *answer, Extent::whole);
        return answer;
    }
    /// Returns the objects in memory that `chosen` accepts if there are as many as were asked for, otherwise the answer
    /// of the primary store to the whole request.
    template <class Chosen, class Ask>
    Result<std::vector<T>, ParserError> chosenOr(std::size_t asked, Chosen&& chosen, Ask&& ask) const {
        if (auto values = held()) {
            std::erase_if(*values, [&](auto& value) { return !chosen(value); });
            if (values->size() == asked) return *std::move(values);
        }
        auto since = now();
        Result<std::vector<T>, ParserError> answer = ask();
        if (answer) fill(since, *answer, Extent::part);
        return answer;
    }

private:
    InMemoryDatabaseAdapter& memory() const { return *owner_.inMemoryPersistanceClass; }

    static bool matches(const InMemeoryDatabaseStorable& object, const ColumnValues& filter) {
        for (auto& [key, value] : filter)
            if (!object[key].isEqual(value)) return false;
        return true;
    }

    template <class Primary, class Change>
    bool write(Primary& toPrimary, Change&& apply) const {
        auto owner = memory().owner();
        auto began = memory_changes::begin(owner, tableName_);
        bool isTaken = false;
        try {
            isTaken = toPrimary();
        } catch (...) {
            // A write that never ended would keep memory empty for good.
            memory_changes::end(owner, tableName_, began);
            throw;
        }
        if (hasPrimary_ && isInTransaction()) {
            forgetAfterTransaction(owner, began);
            return isTaken;
        }
        memory().change(tableName_, owner, [&](std::optional<Objects>& table) {
            bool wasAlone = memory_changes::end(owner, tableName_, began);
            if (hasPrimary_ && !wasAlone)
                table.reset();
            else if (isTaken)
                apply(table);
        });
        return isTaken;
    }

    /// A transaction may still be undone, and until its end other threads read the table without it. So memory forgets
    /// the table now and at the end.
    void forgetAfterTransaction(const std::string& owner, std::uint64_t began) const {
        auto forget = [](std::optional<Objects>& table) { table.reset(); };
        memory().change(tableName_, owner, forget);
        afterTransaction([storage = owner_.inMemoryPersistanceClass, tableName = tableName_, owner, began, forget] {
            memory_changes::end(owner, tableName, began);
            storage->change(tableName, owner, forget);
        });
    }

    static std::optional<std::vector<T>> valuesOf(const std::optional<Objects>& objects) {
        if (!objects) return std::nullopt;
        std::vector<T> values;
        values.reserve(objects->size());
        for (auto& object : *objects) {
            auto held = dynamic_cast<const InMemoryObject<T>*>(object.get());
            if (!held) return std::nullopt;
            values.push_back(held->value);
        }
        return values;
    }

    void merge(std::optional<Objects>& table, const std::vector<T>& values) const {
        if (!table) {
            table.emplace();
            if (hasPrimary_) table->push_back(std::make_shared<IncompleteTableMark>());
        }
        std::unordered_map<std::string, std::size_t> places;
        for (std::size_t place = 0; place < table->size(); ++place)
            if (auto held = dynamic_cast<const InMemoryObject<T>*>((*table)[place].get()))
                places[key_(held->value)] = place;
        for (auto& value : values) {
            auto object = std::make_shared<InMemoryObject<T>>(value);
            auto [known, isNew] = places.emplace(key_(value), table->size());
            if (isNew)
                table->push_back(std::move(object));
            else
                (*table)[known->second] = std::move(object);
        }
    }

    InMemoryPersistanceClass& owner_;
    std::string tableName_;
    Key key_;
    bool hasPrimary_;
};

}  // namespace tarvo
