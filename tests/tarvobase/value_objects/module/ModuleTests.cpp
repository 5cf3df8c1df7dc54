#include "platform/ProcessState.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

constexpr const char* moduleTable =
    "CREATE TABLE MODULE_DETAILS (id TEXT, module_name TEXT UNIQUE, singular_name TEXT, plural_name TEXT, api_name "
    "TEXT, position TEXT, "
    "generated_type TEXT, table_creation_query TEXT)";

const Module leads{.id = "77",
                   .moduleName = "Leads",
                   .singularName = "Lead",
                   .pluralName = "Leads of us",
                   .apiName = "Leads_API",
                   .position = 4,
                   .type = ModuleType::default_,
                   .tableCreationQuery = "CREATE TABLE x"};

class ModuleTest : public FoundationTest {};

TEST_F(ModuleTest, IdentifiesModulesByName) {
    using M = ModuleIdentifier;
    struct {
        std::string name;
        M reader;
        std::optional<M> raw;
    } cases[] = {
        {"Leads", M::Case::leads, M(M::Case::leads)},
        {"CustomModule7", M::custom("CustomModule7"), M::custom("CustomModule7")},
        {"CustomerModuleComments", M::Case::comments, M(M::Case::comments)},
        {"Owners", M::unsupportedOrNew("Owners"), std::nullopt},
        {"Martians", M::unsupportedOrNew("Martians"), std::nullopt},
        {"", M::unsupportedOrNew(""), std::nullopt},
    };
    for (auto& one : cases) {
        EXPECT_EQ(M::fromModuleName(one.name), one.reader) << one.name;
        EXPECT_EQ(M::fromModuleName(one.name).rawValue(), one.name);
        EXPECT_EQ(M::fromRawValue(one.name), one.raw) << one.name;
    }
    EXPECT_TRUE(wasLogged("Un supported or new module found: Martians"));
    EXPECT_EQ(M(M::Case::owners).rawValue(), "Owners");
}

TEST_F(ModuleTest, ConvertsInBothFormsWithAndWithoutIds) {
    ModuleConstants plain;
    ModuleDatabaseConstants table;
    auto map = plain.getDictionary(leads);
    EXPECT_EQ(map, (ValueMap{{"moduleName", "Leads"},
                             {"singularName", "Lead"},
                             {"pluralName", "Leads of us"},
                             {"apiName", "Leads_API"},
                             {"position", 4},
                             {"type", "default"}}));
    EXPECT_EQ(plain.getValue(map).id, "Leads");
    auto row = table.getDictionary(leads);
    EXPECT_EQ(row.valueOf("position"), Value("4"));
    EXPECT_EQ(row.valueOf("table_creation_query"), Value("CREATE TABLE x"));
    EXPECT_FALSE(row.contains("id"));

    configuration().isModuleIDSupported = true;
    map = plain.getDictionary(leads);
    EXPECT_EQ(map.valueOf("ID"), Value("77"));
    EXPECT_EQ(plain.getValue(map).id, "77");

    Module without = leads;
    without.type = ModuleType::none;
    EXPECT_FALSE(plain.getDictionary(without).contains("type"));
    auto odd = plain.getValue(ValueMap{{"moduleName", 5}, {"position", "4"}, {"type", "unknown"}});
    EXPECT_EQ(odd, Module());
}

class ModuleInDatabaseTest : public FoundationTest {
protected:
    std::shared_ptr<ModuleInDatabase> open(const std::string& schema = moduleTable) {
        adapter = openDatabase();
        adapter->createTable(schema);
        return std::make_shared<ModuleInDatabase>("MODULE_DETAILS", adapter);
    }
    std::shared_ptr<KelvaDatabasePersistance> adapter;
};

TEST_F(ModuleInDatabaseTest, StoresFindsAndDeletes) {
    auto modules = open();
    EXPECT_EQ(modules->getAllModules().value().size(), 0u);
    modules->storeModules({leads, Module{.moduleName = "Deals", .apiName = "Deals_API"}});
    auto found = modules->getModuleByApiName("Leads_API").value();
    auto expected = leads;
    expected.id = "Leads";
    EXPECT_EQ(found, expected);
    EXPECT_EQ(modules->getModule(ModuleIdentifier::Case::deals)->apiName, "Deals_API");
    EXPECT_EQ(modules->getModuleByModuleName("Nobody").error(), ParserError(ParserError::Case::noData));
    EXPECT_EQ(modules->getModulesByModuleNames({"Leads", "Nobody", "Leads"}).value().size(), 1u);
    EXPECT_FALSE(modules->getModulesByApiNames({"Nobody"}).ok());
    EXPECT_FALSE(modules->getModulesByApiNames({}).ok());
    modules->deleteModules({leads});
    EXPECT_EQ(modules->getAllModules().value().size(), 1u);
    adapter->dropTable("MODULE_DETAILS");
    EXPECT_EQ(modules->getAllModules().error(), ParserError(ParserError::Case::noData));
}

TEST_F(ModuleInDatabaseTest, AModuleWithoutTableStatementsKeepsTheStoredOnes) {
    auto modules = open();
    modules->storeModule(leads);
    auto bare = leads;
    bare.tableCreationQuery.clear();
    bare.singularName = "renamed";
    modules->storeModules({bare, Module{.moduleName = "Deals"}});
    EXPECT_EQ(modules->getModuleByModuleName("Leads")->tableCreationQuery, "CREATE TABLE x");
    EXPECT_EQ(modules->getModuleByModuleName("Leads")->singularName, "renamed");
    EXPECT_EQ(modules->getModuleByModuleName("Deals")->tableCreationQuery, "");
}

TEST_F(ModuleInDatabaseTest, AMissingColumnDoesNotLoseARow) {
    auto modules = open("CREATE TABLE module_details (MODULE_NAME TEXT UNIQUE, singular_name TEXT, position INTEGER)");
    modules->storeModules({leads, Module{.moduleName = "Deals", .position = 2}});
    modules->storeModules({leads});
    EXPECT_EQ(adapter->count("module_details", std::nullopt), 2);
    auto lines = logged();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "table MODULE_DETAILS has no column plural_name: it is left out"),
              1);
}

TEST_F(ModuleInDatabaseTest, NumbersInTextColumnsAreReadAsTexts) {
    auto modules =
        open("CREATE TABLE MODULE_DETAILS (module_name TEXT UNIQUE, singular_name INTEGER, position INTEGER)");
    modules->storeModule(Module{.moduleName = "Leads", .singularName = "42", .position = 7});
    auto found = modules->getModuleByModuleName("Leads").value();
    EXPECT_EQ(found.singularName, "42");
    EXPECT_EQ(found.position, 7);
}

}  // namespace
}  // namespace tarvo
