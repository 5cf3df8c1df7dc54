#include <thread>

#include "tarvobase/storage/DatabasePersistanceClass.h"
#include "tarvobase/storage/InMemoryStorage.h"
#include "tarvobase/value_objects/account/UserInMemory.h"
#include "tarvobase/value_objects/module/ModulesInMemory.h"
#include "tarvobase/value_objects/module/SettingsInMemeory.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using Objects = std::optional<InMemoryDatabaseAdapter::Objects>;
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
    struct {
        InMemoryDatabaseAdapter::ColumnValues filter;
        std::int64_t limit;
        std::string found;
    } cases[] = {
        {{}, 9, "A B C "},
        {{}, 2, "A B "},
        {{}, 0, ""},
        {{{"position", 1}}, 9, "A C "},
        {{{"position", 1}, {"moduleName", "C"}}, 9, "C "},
        {{{"position", "1"}}, 9, ""},
        {{{"position", true}}, 9, ""},
        {{{"type", ModuleType::none}}, 1, "A "},
        {{{"type", "none"}}, 9, ""},
        {{{"unknown", "x"}}, 9, ""},
        {{{"unknown", ""}}, 9, "A B C "},
    };
    for (std::size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(namesOf(storage.fetchObjects("T", cases[i].filter, cases[i].limit)), cases[i].found) << "case " << i;
}

TEST_F(InMemoryStorageTest, FetchesTheWholeTableWhateverTheLimit) {
    storage.insertInto("T", {object(module("A")), object(module("B"))});
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T", 1)), "A B ");
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
}

TEST_F(InMemoryStorageTest, AnEmptiedTableIsPresent) {
    storage.insertInto("T", object(module("A")));
    storage.deleteAllObjects("T");
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T")), "");
}

TEST_F(InMemoryStorageTest, KeepsAccountsApartAndFindsThemAgain) {
    storage.insertInto("T", object(module("A")));
    signIn("2002");
    EXPECT_EQ(namesOf(InMemoryStorage().fetchAllObjects("T")), "absent");
    storage.insertInto("T", object(module("B")));
    signIn(std::nullopt);
    EXPECT_EQ(namesOf(storage.fetchAllObjects("T")), "absent");
    signIn("1001");
    EXPECT_EQ(namesOf(InMemoryStorage().fetchAllObjects("T")), "A ");
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
    Modules getAllModules() override {
        return where([](auto&) { return true; });
    }
    Result<Module, ParserError> getModuleByModuleName(const std::string& name) override {
        return firstOrNoData(where([&](auto& one) { return one.moduleName == name; }).success());
    }
    Result<Module, ParserError> getModuleByApiName(const std::string& name) override {
        return firstOrNoData(where([&](auto& one) { return one.apiName == name; }).success());
    }
    Modules getModulesByModuleNames(const std::vector<std::string>& names) override {
        return where([&](auto& one) { return std::count(names.begin(), names.end(), one.moduleName) > 0; });
    }
    Modules getModulesByApiNames(const std::vector<std::string>& names) override {
        return where([&](auto& one) { return std::count(names.begin(), names.end(), one.apiName) > 0; });
    }
    bool deleteModules(const std::vector<Module>& modules) override {
        if (refusesWrites) return false;
        for (auto& gone : modules) std::erase_if(stored, [&](auto& one) { return one.moduleName == gone.moduleName; });
        return true;
    }
    void reloadAll() override {}

private:
    template <class Chosen>
    Modules where(Chosen&& chosen) {
        ++asked;
        auto found = stored;
        std::erase_if(found, [&](auto& one) { return !chosen(one); });
        if (duringRead) std::exchange(duringRead, nullptr)();
        return fails ? Modules(noData) : Modules(found);
    }
};

class ModulesInMemoryTest : public FoundationTest {
protected:
    std::shared_ptr<CountingModules> primary = std::make_shared<CountingModules>();
    std::shared_ptr<InMemoryStorage> storage = std::make_shared<InMemoryStorage>();
    ModulesInMemory modules{storage, primary};

    std::vector<std::string> allNames() {
        std::vector<std::string> names;
        auto all = modules.getAllModules();
        if (!all) return {"failed"};
        for (auto& one : *all) names.push_back(one.moduleName);
        return names;
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

TEST_F(ModulesInMemoryTest, WhatMemoryLacksIsAskedFor) {
    primary->stored = {module("Deals")};
    EXPECT_EQ(modules.getModulesByModuleNames({"Deals", "Deals"})->size(), 1u);
    EXPECT_EQ(modules.getModulesByModuleNames({"Deals", "Deals"})->size(), 1u) << "memory has one of two";
    EXPECT_EQ(modules.getModuleByModuleName("Nobody").error(), noData);
    EXPECT_EQ(primary->asked, 3);
}

TEST_F(ModulesInMemoryTest, WritesThroughAndReplaces) {
    EXPECT_THAT(allNames(), ElementsAre());
    modules.storeModule(module("Leads", 1));
    modules.storeModules({module("Deals", 2), module("Leads", 3), module("Deals", 4)});
    EXPECT_EQ(primary->stored.size(), 4u);
    EXPECT_THAT(allNames(), ElementsAre("Leads", "Deals"));
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 3);
    EXPECT_EQ(modules.getModuleByModuleName("Deals")->position, 4);
    modules.deleteModules({module("Leads")});
    EXPECT_THAT(allNames(), ElementsAre("Deals"));
    EXPECT_EQ(primary->asked, 1);
}

TEST_F(ModulesInMemoryTest, AModuleWithoutItsStatementsKeepsThose) {
    primary->stored = {module("Leads")};
    auto bare = module("Leads");
    bare.tableCreationQuery.clear();
    modules.storeModules({bare});
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->tableCreationQuery, "CREATE");
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

TEST_F(ModulesInMemoryTest, WithoutAPrimaryStoreReadsComeFromMemoryAlone) {
    ModulesInMemory alone(storage);
    EXPECT_EQ(alone.getAllModules().error(), noData);
    EXPECT_EQ(alone.getModuleByApiName("x").error(), noData);
    EXPECT_EQ(alone.getModulesByModuleNames({"x"}).error(), noData);
    alone.reloadAll();
    alone.storeModule(module("Leads"));
    EXPECT_EQ(alone.getAllModules()->size(), 1u);
}

TEST_F(ModulesInMemoryTest, AnObjectOfAnotherClassIsAMiss) {
    ModulesInMemory alone(storage);
    alone.storeModule(module("Leads"));
    storage->insertInto("Modules", std::make_shared<InMemoryObject<User>>(User()));
    EXPECT_EQ(alone.getAllModules().error(), noData);
}

TEST_F(ModulesInMemoryTest, AReadNeverReplacesALaterWrite) {
    primary->stored = {module("Leads", 1)};
    primary->duringRead = [&] { modules.storeModule(module("Leads", 2)); };
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 1);
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 2);
}

TEST_F(ModulesInMemoryTest, AReadNeverBringsBackADeletedModule) {
    primary->stored = {module("Deals", 1)};
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
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 2);
    modules.storeModules({module("Leads", 3)});
    primary->stored.clear();
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 3) << "memory keeps a write that did not overlap";
}

TEST_F(ModulesInMemoryTest, AWriteThatThrowsDoesNotKeepMemoryEmpty) {
    primary->duringWrite = [] { throw std::runtime_error("refused"); };
    EXPECT_THROW(modules.storeModules({module("Leads", 1)}), std::runtime_error);
    auto asked = primary->asked;
    for (int i = 0; i < 2; ++i) EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 1);
    EXPECT_EQ(primary->asked, asked + 1);
}

TEST_F(ModulesInMemoryTest, WhatATransactionUndoesIsNotInMemory) {
    auto database = openDatabase();
    for (bool isCommitted : {false, true}) {
        primary->stored = {module("Leads", 1)};
        EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 1);
        EXPECT_EQ(database->transaction("test",
                                        [&] {
                                            primary->stored.clear();
                                            modules.storeModule(module("Leads", 2));
                                            EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 2);
                                            return isCommitted;
                                        }),
                  isCommitted);
        if (!isCommitted) primary->stored = {module("Leads", 1)};
        EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, isCommitted ? 2 : 1);
    }
}

TEST_F(ModulesInMemoryTest, MemoryTakesOnlyWhatTheTableTook) {
    EXPECT_TRUE(modules.storeModules({module("Leads", 1)}));
    primary->refusesWrites = true;
    EXPECT_FALSE(modules.storeModules({module("Leads", 2), module("Deals")}));
    EXPECT_FALSE(modules.deleteModules({module("Leads")}));
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 1);
    EXPECT_FALSE(modules.getModuleByModuleName("Deals").ok());
}

TEST_F(InMemoryStorageTest, TablesOfAScopeAreUnusedWhileAnotherOneIsCurrent) {
    InMemoryStorage first(Scope::current());
    first.insertInto("T", object(module("A")));
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
    EXPECT_EQ(namesOf(first.fetchAllObjects("T")), "absent");
}

TEST_F(ModulesInMemoryTest, SeesASwitchOfAccountAtTheNextRead) {
    modules.storeModule(module("Leads", 1));
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 1);
    signIn("2002");
    primary->stored = {module("Leads", 9)};
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 9);
    signIn("1001");
    EXPECT_EQ(modules.getModuleByModuleName("Leads")->position, 1);
}

class UsersAndSettingsInMemoryTest : public FoundationTest {
protected:
    std::shared_ptr<InMemoryStorage> storage = std::make_shared<InMemoryStorage>();
    const User ada{.id = "u1", .name = "Ada", .BrenUID = "1001", .confirm = true};
    const User bob{.id = "u2", .name = "Bob", .BrenUID = "2002"};
    const Settings shown{"Leads", SettingName::display, "a,b", "a,b", true};
    const Settings sorted{"Leads", SettingName::sort, "a", "b", true};
    const Settings deals{"Deals", SettingName::display, "c", "c", true};
};

TEST_F(UsersAndSettingsInMemoryTest, FindsUsersByEachKey) {
    UserInMemory users(storage);
    EXPECT_EQ(users.getActiveUsers().error(), noData);
    users.storeUsers({ada, bob});
    EXPECT_EQ(users.getUserWithBrenUID()->name, "Ada");
    EXPECT_EQ(users.getUser("u2")->name, "Bob");
    EXPECT_EQ(users.getActiveUsers().value(), std::vector{ada});
    EXPECT_EQ(users.getUsersWithBrenUID({"2002", "x"}).value(), std::vector{bob});
    EXPECT_EQ(users.getUsersWithUserId({"u1", "u1"}).value(), std::vector{ada});
}

TEST_F(UsersAndSettingsInMemoryTest, UpdatesTheUserWithTheFormerId) {
    UserInMemory users(storage);
    users.storeUsers({ada, bob});
    auto renamed = ada;
    renamed.id = "u9";
    users.updateUser(renamed, "u1");
    users.updateUser(ada, "nobody");
    EXPECT_EQ(users.getUsers().value(), (std::vector{renamed, bob}));
}

TEST_F(UsersAndSettingsInMemoryTest, PropertiesOfUsersKeepTheirTypes) {
    UserInMemory(storage).storeUsers({ada, bob});
    EXPECT_EQ(storage->fetchObjects("Users", {{"confirm", true}})->size(), 1u);
    EXPECT_EQ(storage->fetchObjects("Users", {{"confirm", "true"}})->size(), 0u);
    EXPECT_EQ(storage->fetchObjects("Users", {{"dateFormat", ""}})->size(), 2u) << "absent is the empty text";
}

TEST_F(UsersAndSettingsInMemoryTest, ASettingReplacesTheOneOfItsModuleAndName) {
    SettingsInMemeory settings(storage);
    settings.storeSettings({shown, sorted, deals});
    auto changed = shown;
    changed.customSettings = "b";
    settings.storeSettings({changed});
    EXPECT_EQ(settings.getAllSettings(SettingName::display).value(), (std::vector{changed, deals}));
    EXPECT_EQ(settings.getSettings("Leads").value(), (std::vector{changed, sorted}));
}

TEST_F(UsersAndSettingsInMemoryTest, FindsSettingsByModuleAndName) {
    SettingsInMemeory settings(storage);
    settings.storeSettings({shown, sorted, deals});
    EXPECT_EQ(settings.getSettingsForModule("Leads", SettingName::display).value(), shown);
    EXPECT_EQ(settings.getSettingsForModule("Deals", SettingName::sort).error(), noData);
    auto byModule = settings.getSettingsByModuleNames({"Deals", "Nobody"});
    EXPECT_EQ(byModule["Deals"], std::vector{deals});
    EXPECT_TRUE(byModule["Nobody"].empty());
    EXPECT_EQ(settings.updateDisplayColumns("Leads")->size(), 2u);
}

}  // namespace
}  // namespace tarvo
