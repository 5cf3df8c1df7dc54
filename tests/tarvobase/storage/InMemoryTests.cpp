#include <thread>

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/module/ModulesInMemory.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using Objects = std::optional<InMemoryDatabaseAdapter::Objects>;
using Names = std::vector<std::string>;
using ::testing::ElementsAre;

const ParserError noData(ParserError::Case::noData);

InMemoryDatabaseAdapter::Object object(const Module& module) {
    return std::make_shared<InMemoryObject<Module>>(module);
}

Module module(const std::string& name, int position = 0) {
    return {
        .id = name, .moduleName = name, .apiName = name + "_API", .position = position, .tableCreationQuery = "CREATE"};
}

std::string namesOf(const Objects& objects) {
    if (!objects) return "absent";
    std::string names;
    for (auto& one : *objects) names += dynamic_cast<const InMemoryObject<Module>&>(*one).value.moduleName + " ";
    return names;
}

class InMemoryStorageTest : public FoundationTest {
protected:
    InMemoryStorage storage;
};

TEST_F(InMemoryStorageTest, FiltersByTypeAndValue) {
    storage.insertInto("T", {object(module("A", 1)), object(module("B", 2)), object(module("C", 1))});
    const std::tuple<InMemoryDatabaseAdapter::ColumnValues, std::int64_t, std::string> cases[] = {
        {{}, 9, "A B C "},
        {{}, 2, "A B "},
        {{}, 0, ""},
        {{{"position", 1}}, 9, "A C "},
        {{{"position", 1}, {"moduleName", "C"}}, 9, "C "},
        {{{"position", "1"}}, 9, ""},
        {{{"type", ModuleType::none}}, 1, "A "},
        {{{"unknown", "x"}}, 9, ""},
        {{{"unknown", ""}}, 9, "A B C "},
    };
    for (auto& [filter, limit, found] : cases)
        EXPECT_EQ(namesOf(storage.fetchObjects("T", filter, limit)), found) << (filter.empty() ? "" : filter[0].first);
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T", 1)), "A B C ") << "the whole table, whatever the limit";
}

TEST_F(InMemoryStorageTest, AMissingTableIsAbsentAndStaysSo) {
    storage.update("T", object(module("Z")), {});
    storage.deleteObjects("T", {});
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T")), "absent");
    EXPECT_EQ(namesOf(storage.fetchObjects("T", {}, 9)), "absent");
}

TEST_F(InMemoryStorageTest, UpdatesAndDeletesEachObjectThatMatches) {
    for (auto name : {"A", "A", "B"}) storage.insertInto("T", object(module(name)));
    storage.update("T", object(module("Z")), {{"moduleName", "A"}});
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T")), "Z Z B ");
    storage.update("T", object(module("Y")), {{"moduleName", "A"}});
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T")), "Z Z B ") << "an update adds nothing";
    storage.deleteObjects("T", {{"moduleName", "Z"}});
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T")), "B ");
    storage.deleteAllObjects("T");
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T")), "") << "an emptied table is present";
}

TEST_F(InMemoryStorageTest, TablesOfAScopeAreUnusedWhileAnotherOneIsCurrent) {
    InMemoryStorage first(Scope::current());
    first.insertInto("T", object(module("A")));
    storage.insertInto("U", object(module("A")));
    configuration().currentOrgID = "7";
    EXPECT_EQ(namesOf(first.fetchAllObjects("T")), "absent");
    InMemoryStorage second(Scope::current());
    second.insertInto("T", object(module("B")));
    first.insertInto("T", object(module("C")));
    first.deleteAllObjects("T");
    EXPECT_EQ(namesOf(second.fetchAllObjects("T")), "B ");
    configuration().currentOrgID = "";
    EXPECT_EQ(namesOf(first.fetchAllObjects("T")), "A ");
    signIn("2002");
    EXPECT_EQ(namesOf(first.fetchAllObjects("T")) + namesOf(storage.fetchAllObjects("U")), "absentabsent");
    signIn("1001");
    EXPECT_EQ(namesOf(InMemoryStorage().fetchAllObjects("U")), "A ") << "another object finds them again";
}

TEST_F(InMemoryStorageTest, LosesNothingUnderThreads) {
    constexpr int rounds = 200;
    auto writer = [&](const std::string& name) {
        for (int i = 0; i < rounds; ++i) {
            storage.insertInto("T", object(module(name)));
            storage.update("T", object(module(name, i)), {{"moduleName", name}});
            storage.deleteObjects("T", {{"moduleName", "nobody"}});
        }
    };
    std::thread a(writer, "A"), b(writer, "B");
    while (storage.fetchObjects("T", {{"moduleName", "A"}}).value_or(InMemoryDatabaseAdapter::Objects()).size() <
           rounds)
        std::this_thread::yield();
    a.join(), b.join();
    EXPECT_EQ(storage.fetchAllObjects("T")->size(), 2u * rounds);
}

/// A primary store that counts its reads. `duringRead` runs after it has read and before it answers.
class CountingModules final : public ModulesPersistanceDelegate {
public:
    using Modules = Result<std::vector<Module>, ParserError>;
    std::vector<Module> stored;
    bool fails = false;
    bool refusesWrites = false;
    int asked = 0;
    std::function<void()> duringWrite;
    std::function<void()> duringRead;

    bool storeModule(const Module& module) override { return storeModules({module}); }
    bool storeModules(const std::vector<Module>& modules) override {
        if (refusesWrites) return false;
        stored.insert(stored.end(), modules.begin(), modules.end());
        if (duringWrite) std::exchange(duringWrite, nullptr)();
        return true;
    }
    Modules getAllModules() override { return read({}, nullptr); }
    Result<Module, ParserError> getModuleByModuleName(const std::string& name) override {
        return firstOrNoData(read({name}, &Module::moduleName).success());
    }
    Result<Module, ParserError> getModuleByApiName(const std::string& name) override {
        return firstOrNoData(read({name}, &Module::apiName).success());
    }
    Modules getModulesByModuleNames(const Names& names) override { return read(names, &Module::moduleName); }
    Modules getModulesByApiNames(const Names& names) override { return read(names, &Module::apiName); }
    bool deleteModules(const std::vector<Module>& modules) override {
        if (refusesWrites) return false;
        for (auto& gone : modules) std::erase_if(stored, [&](auto& one) { return one.moduleName == gone.moduleName; });
        return true;
    }
    void reloadAll() override {}

private:
    /// Reads the modules with these names, or all of them without a kind of name.
    Modules read(const Names& names, std::string Module::*name) {
        ++asked;
        auto found = stored;
        std::erase_if(found, [&](auto& one) { return name && !std::count(names.begin(), names.end(), one.*name); });
        if (duringRead) std::exchange(duringRead, nullptr)();
        return fails ? Modules(noData) : Modules(found);
    }
};

class ModulesInMemoryTest : public FoundationTest {
protected:
    std::shared_ptr<CountingModules> primary = std::make_shared<CountingModules>();
    std::shared_ptr<InMemoryStorage> storage = std::make_shared<InMemoryStorage>();
    ModulesInMemory modules{storage, primary};

    Names allNames() {
        Names names;
        auto all = modules.getAllModules();
        for (auto& one : all.value()) names.push_back(one.moduleName);
        return names;
    }
    /// Returns the position of the Leads, or -1 if there is no such module.
    int leads() {
        auto found = modules.getModuleByModuleName("Leads");
        return found ? found->position : -1;
    }
};

TEST_F(ModulesInMemoryTest, ReadsEachModuleFromThePrimaryStoreOnce) {
    primary->stored = {module("Leads"), module("Deals"), module("Tasks")};
    for (int i = 0; i < 2; ++i) EXPECT_EQ(modules.getModuleByModuleName("Leads")->apiName, "Leads_API");
    for (int i = 0; i < 2; ++i) EXPECT_EQ(modules.getModuleByApiName("Deals_API")->moduleName, "Deals");
    EXPECT_EQ(modules.getModule(ModuleIdentifier::Case::leads)->moduleName, "Leads");
    EXPECT_EQ(modules.getModulesByModuleNames({"Deals", "Leads"})->size(), 2u);
    EXPECT_EQ(primary->asked, 2);
}

TEST_F(ModulesInMemoryTest, ReadsAllModulesAgainIfMemoryHasOnlySome) {
    primary->stored = {module("Leads"), module("Deals")};
    EXPECT_TRUE(modules.getModuleByModuleName("Deals").ok());
    for (int i = 0; i < 2; ++i) EXPECT_THAT(allNames(), ElementsAre("Leads", "Deals"));
    EXPECT_EQ(primary->asked, 2);
    EXPECT_EQ(modules.getModulesByApiNames({"Leads_API"})->front().moduleName, "Leads");
    EXPECT_EQ(primary->asked, 2);
}

TEST_F(ModulesInMemoryTest, WritesThroughAndReplaces) {
    EXPECT_THAT(allNames(), ElementsAre());
    modules.storeModule(module("Leads", 1));
    modules.storeModules({module("Deals", 2), module("Leads", 3), module("Deals", 4)});
    EXPECT_EQ(primary->stored.size(), 4u);
    EXPECT_THAT(allNames(), ElementsAre("Leads", "Deals"));
    EXPECT_EQ(leads(), 3);
    EXPECT_EQ(modules.getModuleByModuleName("Deals")->position, 4);
    auto bare = module("Leads");
    bare.tableCreationQuery.clear();
    modules.storeModules({bare});
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->tableCreationQuery, "CREATE") << "the stored statements stay";
    modules.deleteModules({module("Leads")});
    EXPECT_THAT(allNames(), ElementsAre("Deals"));
}

TEST_F(ModulesInMemoryTest, MemoryTakesOnlyWhatTheTableTook) {
    EXPECT_TRUE(modules.storeModules({module("Leads", 1)}));
    primary->refusesWrites = true;
    EXPECT_FALSE(modules.storeModules({module("Leads", 2), module("Deals")}));
    EXPECT_FALSE(modules.deleteModules({module("Leads")}));
    EXPECT_EQ(leads(), 1);
    EXPECT_FALSE(modules.getModuleByModuleName("Deals").ok());
}

TEST_F(ModulesInMemoryTest, AnEmptiedTableIsEmptyAndReloadingFillsIt) {
    primary->stored = {module("Leads")};
    storage->deleteAllObjects("Modules");
    EXPECT_THAT(allNames(), ElementsAre());
    EXPECT_EQ(primary->asked, 0);
    primary->fails = true;
    modules.reloadAll();
    EXPECT_THAT(allNames(), ElementsAre());
    primary->fails = false;
    modules.reloadAll();
    EXPECT_THAT(allNames(), ElementsAre("Leads"));
}

TEST_F(ModulesInMemoryTest, AReadNeverUndoesALaterWrite) {
    primary->stored = {module("Leads", 1)};
    primary->duringRead = [&] { modules.storeModule(module("Leads", 2)); };
    EXPECT_EQ(leads(), 1);
    EXPECT_EQ(leads(), 2);
    primary->stored.push_back(module("Deals"));
    primary->duringRead = [&] { modules.deleteModules({module("Deals")}); };
    EXPECT_TRUE(modules.getModuleByModuleName("Deals").ok());
    EXPECT_FALSE(modules.getModuleByModuleName("Deals").ok());
}

TEST_F(ModulesInMemoryTest, AReadDuringASwitchNeverFillsTheMemoryOfTheOtherAccount) {
    primary->stored = {module("Tasks")};
    primary->duringRead = [&] { signIn("2002"); };
    EXPECT_EQ(modules.getModuleByModuleName("Tasks")->moduleName, "Tasks");
    EXPECT_EQ(namesOf(storage->fetchAllObjects("Modules")), "absent");
}

TEST_F(ModulesInMemoryTest, OverlappingWritesNeverLeaveMemoryOlderThanItsTable) {
    // The table takes the second write last, and memory would take it first.
    primary->duringWrite = [&] {
        primary->stored.clear();
        modules.storeModules({module("Leads", 2)});
    };
    modules.storeModules({module("Leads", 1)});
    EXPECT_EQ(leads(), 2);
    modules.storeModules({module("Leads", 3)});
    primary->stored.clear();
    EXPECT_EQ(leads(), 3) << "memory keeps a write that did not overlap";
}

TEST_F(ModulesInMemoryTest, AWriteThatThrowsDoesNotKeepMemoryEmpty) {
    primary->duringWrite = [] { throw std::runtime_error("refused"); };
    EXPECT_THROW(modules.storeModules({module("Leads", 1)}), std::runtime_error);
    auto asked = primary->asked;
    for (int i = 0; i < 2; ++i) EXPECT_EQ(leads(), 1);
    EXPECT_EQ(primary->asked, asked + 1);
}

TEST_F(ModulesInMemoryTest, WhatATransactionUndoesIsNotInMemory) {
    auto database = openDatabase();
    for (bool isCommitted : {false, true}) {
        primary->stored = {module("Leads", 1)};
        EXPECT_EQ(leads(), 1);
        EXPECT_EQ(database->transaction("test",
                                        [&] {
                                            primary->stored.clear();
                                            modules.storeModule(module("Leads", 2));
                                            EXPECT_EQ(leads(), 2);
                                            return isCommitted;
                                        }),
                  isCommitted);
        if (!isCommitted) primary->stored = {module("Leads", 1)};
        EXPECT_EQ(leads(), isCommitted ? 2 : 1);
    }
}

}  // namespace
}  // namespace tarvo
