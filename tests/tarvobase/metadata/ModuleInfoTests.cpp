#include <gmock/gmock.h>

#include "tarvobase/get_metadata/GetFieldList.h"
#include "tarvobase/get_metadata/GetLayoutModuleInfo.h"
#include "tarvobase/get_metadata/GetModuleInfo.h"
#include "tarvobase/get_metadata/GetModuleInfoWithChild.h"
#include "tarvobase/get_metadata/GetPermissionsUseCase.h"
#include "tarvobase/metadata/Stores.h"
#include "tests/tarvobase/MetadataFixture.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using Strings = std::vector<std::string>;

Settings setting(const std::string& module, SettingName key, const std::string& value,
                 const std::string& byDefault = "") {
    return {module, key, byDefault, value, true};
}

/// Every test runs in both namings.
class ModuleInfoTest : public MetadataTest, public ::testing::WithParamInterface<Naming> {
protected:
    void SetUp() override {
        MetadataTest::SetUp();
        use(GetParam());
    }
    /// Returns what `GetModuleInfo` finds of Leads.
    ModuleInfo leadsInfo() {
        return run<GetModuleInfo>(GetModuleInfo::Request({"Leads"})).response->moduleInfoDict.at("Leads");
    }
    Strings namesOf(const FieldList& list) {
        Strings names;
        for (auto field : list.allFields()) names.push_back(field->fieldAPIName);
        return names;
    }
};

TEST_P(ModuleInfoTest, BringsFieldsPermissionsAndSettings) {
    storeModule("Leads", {field("Leads", "Last_Name"), field("Leads", "City"), field("Leads", "City")});
    storeModule("Deals", {field("Deals", "Stage")});
    storeModule("Bare", {});
    storePermission("Leads", "Create", true);
    storePermission("Deals", "Create", false);
    store(std::vector{setting("Leads", SettingName::display, identifier("City") + ",Gone," + identifier("Last_Name"))});

    auto answer = run<GetModuleInfo>(GetModuleInfo::Request({"Leads", "Deals", "Bare", "Nowhere", "Leads"}));
    auto& infos = answer.response->moduleInfoDict;
    EXPECT_EQ(infos.size(), 2u);
    EXPECT_EQ(answer.response->modules.size(), 5u);
    auto& leads = infos.at("Leads");
    EXPECT_EQ(leads.moduleApi(), "Leads_Api");
    EXPECT_THAT(namesOf(leads.metadata), ElementsAre("Last_Name", "City"));
    EXPECT_TRUE(leads.hasCreatePermission());
    EXPECT_THAT(leads.settings.getDisplayFieldLabels(leads.metadata, false),
                ElementsAre("Label of City", "Label of Last_Name"));
    EXPECT_THAT(leads.settings.getSearchFieldLabels(leads.metadata, true), IsEmpty());
    EXPECT_FALSE(infos.at("Deals").hasCreatePermission());
    EXPECT_THAT(infos.at("Deals").settings.settingsList, IsEmpty());
}

TEST_P(ModuleInfoTest, TheOrderOfNamesIsASettingOfTheApplicationUnlessTheModuleHasItsOwn) {
    storeModule("Leads", {field("Leads", "City")});
    const std::string firstName = "First Name,Last Name", lastName = "Last Name,First Name";
    store(std::vector{setting("Settings", SettingName::sortOrderPreference, firstName),
                      setting("Settings", SettingName::displayNameOrder, firstName),
                      setting("Settings", SettingName::fontName, "Serif"),
                      setting("Leads", SettingName::displayNameOrder, lastName)});
    auto settings = leadsInfo().settings;
    EXPECT_TRUE(settings.isSortByFirstNameLastName());
    EXPECT_FALSE(settings.isDisplayFirstNameLastName());
    EXPECT_EQ(settings.settingsList.size(), 1u);

    auto stores = Stores::current();
    auto created = ModuleInfo::createModuleInfo("Leads", FieldList(), *stores.modules(), *stores.settings());
    EXPECT_TRUE(created->settings.isSortByFirstNameLastName());
}

TEST_P(ModuleInfoTest, SettingsNameFieldsByEitherNaming) {
    storeModule("Leads", {field("Leads", "Last_Name"), field("Leads", "City")});
    store(std::vector{setting("Leads", SettingName::display, "City," + identifier("Last_Name"), "City"),
                      setting("Leads", SettingName::primarySort, "Last_Name,desc")});
    auto leads = leadsInfo();
    EXPECT_THAT(leads.settings.getDisplayFieldLabels(leads.metadata, false),
                ElementsAre("Label of City", "Label of Last_Name"));
    EXPECT_THAT(leads.settings.getDisplayFieldLabels(leads.metadata, true), ElementsAre("Label of City"));
    SortField sort{identifier("Last_Name"), false};
    EXPECT_THAT(leads.settings.getSortColumns(leads.metadata), ElementsAre(sort));
}

TEST_P(ModuleInfoTest, FieldsOfActivitiesTakeTheirValuesFromTheThreeModules) {
    auto status = field("Activities", "Status", FieldDataType::picklist);
    storeModule("Activities", {status, field("Activities", "Subject")});
    for (auto module : {"Tasks", "Events", "Calls", "Leads"})
        storePicklist(field(module, "Status"), "1", {std::string("of ") + module});
    for (auto& list : {run<GetFieldList>(GetFieldList::Request("Activities")).response->fieldList,
                       run<GetModuleInfo>(GetModuleInfo::Request({"Activities"}))
                           .response->moduleInfoDict.at("Activities")
                           .metadata}) {
        Strings values;
        for (auto& row : list.getPicklist(status)) values.push_back(row.fieldActualValue);
        EXPECT_THAT(values, ElementsAre("of Calls", "of Events", "of Tasks"));
    }
}

TEST_P(ModuleInfoTest, FieldsCanBeChosenAndSorted) {
    storeModule("Leads", {field("Leads", "City"), field("Leads", "Company"), field("Leads", "Age")});
    auto chosen =
        run<GetFieldList>(GetFieldList::Request("Leads", Strings{identifier("City"), identifier("Age"), "Nothing"},
                                                {{FieldColumnName::FieldLabel, SortOrder::ascending}}));
    EXPECT_THAT(namesOf(chosen.response->fieldList), ElementsAre("Age", "City"));
}

TEST_P(ModuleInfoTest, AWholeAccountTakesAFixedNumberOfReads) {
    Strings names;
    for (int i = 0; i < 40; ++i) {
        names.push_back("Module" + std::to_string(i));
        storeModule(names.back(),
                    {field(names.back(), "Name"), subform(names.back(), "Rows", ValueList{"1", "Module0_Api"})});
        store(std::vector{setting(names.back(), SettingName::display, "A")});
        store(std::vector{place(field(names.back(), "Name"), names.back(), "S", 1, 1)});
        storeLayout(names.back(), names.back(), true);
    }
    auto reads = [&](auto&& ask) {
        adapter().takeReads();
        ask();
        return adapter().takeReads();
    };
    EXPECT_LE(reads([&] {
                  auto infos = GetModuleInfoAssembler::getModuleInfoDM()->getModuleInfosByModuleNames(names);
                  EXPECT_TRUE(infos.size() == 40 && infos.at("Module39").ok());
              }),
              6);
    EXPECT_EQ(reads([&] { GetModuleInfoAssembler::getModuleInfoDM()->getModuleInfosByModuleNames(names); }), 3);
    auto layoutsOf = [&](Strings asked) {
        return reads([&] {
            for (auto& [name, info] :
                 GetLayoutModuleInfoWithChildDM(GetLayoutModuleInfoDM::make()).getModuleInfos(asked, std::nullopt))
                EXPECT_NE(info->getLayout("Module0", "Module0"), nullptr);
        });
    };
    EXPECT_EQ(layoutsOf(names), layoutsOf({"Module0"}));
}

TEST_P(ModuleInfoTest, ChildrenAreTheModulesOfSubformFieldsAndLayoutsAreFilteredByMode) {
    auto name = field("Quotes", "Name"), shown = field("Quotes", "Shown"), amount = field("Lines", "Amount");
    shown.mode = "1";
    storeModule("Quotes", {name, shown, subform("Quotes", "Lines", ValueList{"7", "Lines_Api"}),
                           subform("Quotes", "Short", ValueList{Value("7")}),
                           subform("Quotes", "Lost", ValueList{"8", "Nowhere_Api"})});
    storeModule("Lines", {amount});
    storeModule("Plain", {field("Plain", "A")});
    store(std::vector{place(name, "1", "S", 1, 1), place(shown, "1", "S", 1, 2), place(amount, "2", "S", 1, 1)});
    storeLayout("Quotes", "1", true);
    storeLayout("Lines", "2", false);

    auto answer = run<GetModuleInfoWithChild>(GetModuleInfoWithChild::Request({"Quotes", "Plain", "Nowhere"}));
    auto& infos = answer.response->moduleInfoDict;
    EXPECT_EQ(infos.at("Quotes")->childModules->moduleMap.size(), 1u);
    EXPECT_THAT(namesOf(infos.at("Quotes")->getModuleInfo("Lines")->metadata), ElementsAre("Amount"));
    EXPECT_EQ(infos.at("Quotes")->getModuleInfo("Short"), nullptr);
    EXPECT_FALSE(infos.at("Plain")->childModules.has_value());
    EXPECT_EQ(infos.at("Nowhere").failure(), MetadataError::notFound);

    auto edited = run<GetLayoutModuleInfoWithChild>(LayoutModuleInfoRequest({"Quotes", "Plain"}, DisplayMode::edit));
    auto& quotes = edited.response->moduleInfoDict.at("Quotes");
    EXPECT_EQ(quotes->layoutInfo.getDefaultLayout()->metadata.orderedFields.keys(), Strings{identifier("Name")});
    EXPECT_NE(quotes->getLayout("2", "Lines"), nullptr);
    EXPECT_EQ(quotes->getLayout("2", "Quotes"), nullptr);
    EXPECT_EQ(edited.response->moduleInfoDict.at("Plain").failure(), MetadataError::notFound);
}

struct PermissionListener final : GetPermissionsUseCaseDelegate {
    void permissionFetched(const ModulePermission& permission) override { answers += permission.key + "; "; }
    void permissionsFetched(const std::string& module, const std::vector<ModulePermission>& permissions) override {
        answers += module + " " + std::to_string(permissions.size()) + "; ";
    }
    void unableToFetchPermissions(const std::string& module) override { answers += "no " + module + "; "; }
    std::string answers;
};

TEST_P(ModuleInfoTest, PermissionsAreAnsweredOncePerCallAndNotAfterRelease) {
    storePermission("Leads", "Create", true);
    storePermission("Leads", "Edit", true);
    auto listener = std::make_shared<PermissionListener>();
    auto usecase = std::make_shared<GetPermissionsUseCase>();
    usecase->delegate = listener;
    usecase->getPermission("Leads", "Edit");
    settle();
    usecase->getPermission("Leads", "View");
    settle();
    usecase->getPermissions("Leads");
    settle();
    EXPECT_EQ(listener->answers, "Edit; no Leads; Leads 2; ");
    usecase->getPermissions("Leads");
    usecase.reset();
    settle();
    EXPECT_EQ(listener->answers, "Edit; no Leads; Leads 2; ");
}

INSTANTIATE_TEST_SUITE_P(Namings, ModuleInfoTest, ::testing::Values(Naming::column, Naming::api),
                         [](auto& info) { return info.param == Naming::column ? "Column" : "Api"; });

}  // namespace
}  // namespace tarvo
