#include "platform/ProcessState.h"
#include "tarvobase/value_objects/module/ModuleInDatabase.h"
#include "tests/tarvobase/MetadataTables.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

const Module leads{"77", "Leads", "Lead", "Leads of us", "Leads_API", 4, ModuleType::default_, "CREATE TABLE x"};

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

TEST_F(ModuleTest, AnIdIsKeptIfTheHostSupportsItAndOddMembersAreLeftOut) {
    ModuleConstants plain;
    EXPECT_EQ(plain.getValue(plain.getDictionary(leads)).id, "Leads");
    configuration().isModuleIDSupported = true;
    EXPECT_EQ(plain.getValue(plain.getDictionary(leads)).id, "77");

    auto odd = plain.getValue(ValueMap{{"moduleName", 5}, {"position", "4"}, {"type", "unknown"}});
    EXPECT_EQ(odd, Module());
}

class ModuleInDatabaseTest : public ServerTest {
protected:
    std::shared_ptr<ModuleInDatabase> open(const std::string& schema = metadataTables().front()) {
        database->createTable(schema);
        return std::make_shared<ModuleInDatabase>("MODULE_DETAILS", database);
    }
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
    modules->deleteModules({leads});
    EXPECT_EQ(modules->getAllModules().value().size(), 1u);
    database->dropTable("MODULE_DETAILS");
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
    auto modules = open("CREATE TABLE module_details (MODULE_NAME UNIQUE, singular_name INTEGER, position INTEGER)");
    modules->storeModules({leads, Module{.moduleName = "Deals", .singularName = "42", .position = 2}});
    modules->storeModules({leads});
    auto deals = modules->getModuleByModuleName("Deals").value();
    EXPECT_EQ(deals.singularName, "42") << "stored as a number";
    EXPECT_EQ(deals.position, 2);
    EXPECT_EQ(modules->getAllModules()->size(), 2u);
    EXPECT_EQ(linesWith("table MODULE_DETAILS has no column plural_name: it is left out"), 1);
}

}  // namespace
}  // namespace tarvo
