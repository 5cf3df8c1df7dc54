#include <gmock/gmock.h>

#include "tarvobase/get_metadata/GetFieldList.h"
#include "tarvobase/get_metadata/GetLayoutModuleInfo.h"
#include "tarvobase/get_metadata/GetModule.h"
#include "tarvobase/get_metadata/GetModuleInfo.h"
#include "tarvobase/get_metadata/GetModuleInfoWithChild.h"
#include "tarvobase/get_metadata/GetPermissionsUseCase.h"
#include "tarvobase/get_metadata/GetRelatedModulesUC.h"
#include "tarvobase/get_metadata/GetRelatedModulesUseCase.h"
#include "tarvobase/metadata/Stores.h"
#include "tarvobase/value_objects/module/ModuleRelatedListInDatabase.h"
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

SettingsList listOf(std::vector<Settings> settings) { return {std::move(settings)}; }

TEST(SettingsListTest, ColumnsAndOrdersAreReadFromTheirTexts) {
    using S = SettingName;
    auto list = listOf({setting("Leads", S::display, "A,,B,", "C,D"), setting("Leads", S::display, "Z"),
                        setting("Leads", S::primarySort, "Name,desc"), setting("Leads", S::secondarySort, "Time,asc"),
                        setting("Leads", S::groupBy, "")});
    EXPECT_THAT(list.getDisplayCrmColumns(), ElementsAre("A", "B"));
    EXPECT_THAT(list.getDefaultDisplayCrmColumns(), ElementsAre("C", "D"));
    EXPECT_THAT(list.getSearchCrmColumns(), IsEmpty());
    EXPECT_EQ(list.getPrimarySortField(), (SortField{"Name", false}));
    EXPECT_THAT(list.getSortColumns(), ElementsAre(SortField{"Name", false}, SortField{"Time", true}));
    EXPECT_THAT(listOf({list.settingsList[2]}).getSortColumns(), ElementsAre(SortField{"Name", false}));
    EXPECT_EQ(listOf({}).getPrimarySortField(), std::nullopt);

    for (auto [value, isFirst] :
         {std::pair("First Name,Last Name", true), {"Last Name,First Name", false}, {"", false}}) {
        EXPECT_EQ(listOf({setting("Settings", S::sortOrderPreference, value)}).isSortByFirstNameLastName(), isFirst);
        EXPECT_EQ(listOf({setting("Settings", S::displayNameOrder, value)}).isDisplayFirstNameLastName(), isFirst);
    }
    EXPECT_FALSE(listOf({}).isDisplayFirstNameLastName());
}

/// Every test runs in both namings.
class ModuleInfoTest : public MetadataTest, public ::testing::WithParamInterface<Naming> {
protected:
    void SetUp() override {
        MetadataTest::SetUp();
        use(GetParam());
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
    auto answer = run<GetModuleInfo>(GetModuleInfo::Request({"Leads"}));
    auto& settings = answer.response->moduleInfoDict.at("Leads").settings;
    EXPECT_TRUE(settings.isSortByFirstNameLastName());
    EXPECT_FALSE(settings.isDisplayFirstNameLastName());
    EXPECT_EQ(settings.settingsList.size(), 1u);

    auto stores = Stores::current();
    auto created = ModuleInfo::createModuleInfo("Leads", FieldList(), *stores.modules(), *stores.settings());
    EXPECT_TRUE(created->settings.isSortByFirstNameLastName());
}

TEST_P(ModuleInfoTest, SettingsNameFieldsByEitherNaming) {
    storeModule("Leads", {field("Leads", "Last_Name"), field("Leads", "City")});
    store(std::vector{setting("Leads", SettingName::display, "City," + identifier("Last_Name")),
                      setting("Leads", SettingName::primarySort, "Last_Name,desc")});
    auto answer = run<GetModuleInfo>(GetModuleInfo::Request({"Leads"}));
    auto& leads = answer.response->moduleInfoDict.at("Leads");
    EXPECT_THAT(leads.settings.getDisplayFieldLabels(leads.metadata, false),
                ElementsAre("Label of City", "Label of Last_Name"));
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
    int reported = 0;
    GetModuleInfoAssembler::getModuleInfoDM()->getmoduleInfo(
        [&](auto& infos) { reported = static_cast<int>(infos.size()); });
    EXPECT_EQ(reported, 40);
}

TEST_P(ModuleInfoTest, ChildrenAreTheModulesOfSubformFields) {
    storeModule("Quotes",
                {subform("Quotes", "Lines", ValueList{"7", "Lines_Api"}), subform("Quotes", "Short", ValueList{"7"}),
                 subform("Quotes", "Lost", ValueList{"8", "Nowhere_Api"})});
    storeModule("Lines", {field("Lines", "Amount")});
    storeModule("Leads", {field("Leads", "City")});
    auto answer = run<GetModuleInfoWithChild>(GetModuleInfoWithChild::Request({"Quotes", "Leads", "Nowhere"}));
    auto& infos = answer.response->moduleInfoDict;
    EXPECT_EQ(infos.at("Quotes")->childModules->moduleMap.size(), 1u);
    EXPECT_THAT(namesOf(infos.at("Quotes")->getModuleInfo("Lines")->metadata), ElementsAre("Amount"));
    EXPECT_EQ(infos.at("Quotes")->getModuleInfo("Short"), nullptr);
    EXPECT_FALSE(infos.at("Leads")->childModules.has_value());
    EXPECT_EQ(infos.at("Nowhere").failure(), MetadataError::notFound);
}

TEST_P(ModuleInfoTest, LayoutsAreFilteredByModeAndChildrenHaveTheirs) {
    auto name = field("Quotes", "Name"), shown = field("Quotes", "Shown"), amount = field("Lines", "Amount"),
         lines = subform("Quotes", "Lines", ValueList{"7", "Lines_Api"});
    shown.mode = "1";
    storeModule("Quotes", {name, shown, lines});
    storeModule("Lines", {amount});
    storeModule("Plain", {field("Plain", "A")});
    store(std::vector{place(name, "1", "S", 1, 1), place(shown, "1", "S", 1, 2), place(amount, "2", "S", 1, 1)});
    storeLayout("Quotes", "1", true);
    storeLayout("Lines", "2", false);

    auto answer = run<GetLayoutModuleInfoWithChild>(LayoutModuleInfoRequest({"Quotes", "Plain"}, DisplayMode::edit));
    auto& quotes = answer.response->moduleInfoDict.at("Quotes");
    EXPECT_EQ(quotes->layoutInfo.getDefaultLayout()->metadata.orderedFields.keys(), Strings{identifier("Name")});
    EXPECT_NE(quotes->getLayout("2", "Lines"), nullptr);
    EXPECT_EQ(quotes->getLayout("2", "Quotes"), nullptr);
    EXPECT_EQ(answer.response->moduleInfoDict.at("Plain").failure(), MetadataError::notFound);

    auto unfiltered = run<GetLayoutModuleInfo>(LayoutModuleInfoRequest({"Quotes"}));
    EXPECT_EQ(
        unfiltered.response->moduleInfoDict.at("Quotes")->getLayout("1", "Quotes")->metadata.orderedFields.count(), 2u);
}

TEST_P(ModuleInfoTest, AModuleIsFoundByEachOfItsNames) {
    storeModule("Leads", {});
    storeModule("Deals", {});
    using Request = GetModule::Request;
    for (auto& request : {Request::moduleId(ModuleIdentifier::Case::leads), Request::moduleName("Leads"),
                          Request::apiName("Leads_Api")})
        EXPECT_EQ(run<GetModule>(request).response->moduleList.at(0).moduleName, "Leads");
    EXPECT_EQ(run<GetModule>(Request::all()).response->moduleList.size(), 2u);
    EXPECT_EQ(run<GetModule>(Request::apiName("Leads")).failure->which(), AppErrorCase::unknownError);
}

struct DelegateListener final : GetPermissionsUseCaseDelegate, GetRelatedModulesUseCaseDelegate {
    void permissionFetched(const ModulePermission& permission) override { answers.push_back(permission.key); }
    void permissionsFetched(const std::string& module, const std::vector<ModulePermission>& permissions) override {
        answers.push_back(module + " " + std::to_string(permissions.size()));
    }
    void unableToFetchPermissions(const std::string& module) override { answers.push_back("no " + module); }
    void relatedModulesFetched(const std::string&, const std::vector<RelatedList>& modules) override {
        for (auto& list : modules) answers.push_back(list.listID);
    }
    Strings answers;
};

class DelegateFormsTest : public MetadataTest {
protected:
    template <class UC, class Ask>
    Strings answersOf(Ask ask, bool isReleased = false) {
        auto listener = std::make_shared<DelegateListener>();
        auto usecase = std::make_shared<UC>();
        usecase->delegate = listener;
        ask(*usecase);
        if (isReleased) usecase.reset();
        settle();
        return listener->answers;
    }
};

TEST_F(DelegateFormsTest, PermissionsAreAnsweredOncePerCall) {
    storePermission("Leads", "Create", true);
    storePermission("Leads", "Edit", true);
    using Permissions = GetPermissionsUseCase;
    EXPECT_THAT(answersOf<Permissions>([](auto& uc) { uc.getPermission("Leads", "Edit"); }), ElementsAre("Edit"));
    EXPECT_THAT(answersOf<Permissions>([](auto& uc) { uc.getPermission("Leads", "View"); }), ElementsAre("no Leads"));
    EXPECT_THAT(answersOf<Permissions>([](auto& uc) { uc.getPermissions("Leads"); }), ElementsAre("Leads 2"));
}

TEST_F(DelegateFormsTest, RelatedModulesComeInTheirOrderAndNotAfterRelease) {
    for (auto order : {10, 9}) {
        RelatedList list;
        list.moduleName = "Leads", list.listID = "list" + std::to_string(order), list.relatedOrder = order;
        ModuleRelatedListInDatabase(configuration().databaseAdapter.get()).storeModuleRelatedList(list);
    }
    auto ask = [](auto& uc) { uc.getRelatedModules("Leads"); };
    EXPECT_THAT(answersOf<GetRelatedModulesUseCase>(ask), ElementsAre("list9", "list10"));
    EXPECT_THAT(answersOf<GetRelatedModulesUseCase>(ask, true), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Namings, ModuleInfoTest, ::testing::Values(Naming::column, Naming::api),
                         [](auto& info) { return info.param == Naming::column ? "Column" : "Api"; });

}  // namespace
}  // namespace tarvo
