#include <set>

#include "platform/Clock.h"
#include "platform/ProcessState.h"
#include "platform/SettingsStore.h"
#include "tarvobase/configuration/AppPlatformConstants.h"
#include "tarvobase/utils/CommonUtils.h"
#include "tarvobase/utils/TemporaryIds.h"
#include "tarvobase/utils/UserDefaultsUtil.h"
#include "tarvobase/utils/Util.h"
#include "tarvobase/value_objects/account/DateTimeInUserDefaults.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

using ::testing::ElementsAre;

constexpr std::int64_t moment = 1'709'201'400;  // 2024-02-29 10:10 in UTC

class UtilityTest : public FoundationTest {
protected:
    void SetUp() override {
        FoundationTest::SetUp();
        defaults = std::make_shared<BrenUserDefaults>();
    }
    void useFormats() {
        platform::Clock::setTimeZone("UTC");
        DateTimeInUserDefaults(defaults).storeDateFormat("dd.MM.yyyy");
        DateTimeInUserDefaults(defaults).storeTimeFormat("HH:mm");
        Util::performInitialOperations(defaults);
    }
    void storeDateFormat(const std::string& format) {
        DateTimeInUserDefaults(defaults).storeDateFormat(format);
        settle();
    }
    std::shared_ptr<UserDefaultsProtocol> defaults;
};

TEST_F(UtilityTest, FormatsFollowTheUserAndTheOneWithAtIsFixedAtItsFirstUse) {
    useFormats();
    defaults->setString("yy", "TarvoDateFormat", UserDefaultsGroup::other("2002"));
    settle();
    EXPECT_EQ(Util::dateFormatter().string(moment), "29.02.2024");
    EXPECT_EQ(Util::dateTimeFormatter().string(moment), "29.02.2024 10:10");
    EXPECT_EQ(Util::DateFormatters::dateAtTimeFormatter().string(moment), "29.02.2024 at 10:10");
    storeDateFormat("yyyy/MM/dd");
    EXPECT_EQ(Util::dateFormatter().string(moment), "2024/02/29");
    EXPECT_EQ(Util::timeFormatter().string(moment), "10:10");
    EXPECT_EQ(Util::dateTimeFormatter().string(moment), "2024/02/29 10:10");
    EXPECT_EQ(Util::DateFormatters::dateAtTimeFormatter().string(moment), "29.02.2024 at 10:10");
}

TEST_F(UtilityTest, FormatsBelongToTheirAccount) {
    auto fallback = Util::dateFormatter().string(moment);
    useFormats();
    EXPECT_EQ(Util::DateFormatters::dateAtTimeFormatter().string(moment), "29.02.2024 at 10:10");

    signIn("2002");
    EXPECT_EQ(Util::dateFormatter().string(moment), fallback);
    EXPECT_NE(Util::DateFormatters::dateAtTimeFormatter().string(moment), "29.02.2024 at 10:10");
    storeDateFormat("yyyy/MM/dd");
    EXPECT_EQ(Util::dateFormatter().string(moment), "2024/02/29");

    signIn("1001");
    EXPECT_EQ(Util::dateTimeFormatter().string(moment), "29.02.2024 10:10");
    Util::performInitialOperations(defaults);
    EXPECT_EQ(Util::dateFormatter().string(moment), "29.02.2024");
}

TEST_F(UtilityTest, ATemporaryIdIsTheSecondOrTheNextFreeNumber) {
    platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(moment)));
    UserDefaultsUtil util(defaults);
    EXPECT_EQ(util.getNewRecordId(), "TarvoTEMPID#" + std::to_string(moment));
    std::set<std::string> ids;
    std::mutex mutex;
    auto queue = DispatchQueue::concurrent("tests.ids");
    for (int i = 0; i < 50; ++i)
        queue->async([&] {
            auto id = UserDefaultsUtil(defaults).getNewRecordId();
            std::lock_guard lock(mutex);
            ids.insert(id);
        });
    settle();
    EXPECT_EQ(ids.size(), 50u);
}

TEST_F(UtilityTest, TemporaryIdsStayUniqueAfterARestartWithTheClockSetBack) {
    platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(moment)));
    UserDefaultsUtil(defaults).getNewRecordId();
    auto folder = platform::ProcessState::current().get<SettingsStores>().folder();
    platform::ProcessState::installFresh();
    platform::ProcessState::current().get<SettingsStores>().setFolder(folder);
    configuration().userDefaultsGroup = "tests";
    platform::Clock::set(platform::Clock::WallTime(std::chrono::seconds(moment - 3600)));
    EXPECT_EQ(UserDefaultsUtil(std::make_shared<BrenUserDefaults>()).getNewRecordId(),
              "TarvoTEMPID#" + std::to_string(moment + 1));
}

TEST_F(UtilityTest, TheTwoFormsOfTemporaryIdsAreDistinguished) {
    for (auto id : {"TarvoTEMPID#1", "TarvoTEMPID#"}) EXPECT_TRUE(isTempId(id) && !isNewRecordId(id)) << id;
    EXPECT_TRUE(isNewRecordId("NEW_000000001") && !isTempId("NEW_000000001"));
    for (auto id : {"NEW_00000001", "NEW_0000000001", "NEW_00000000x", "new_000000001", ""})
        EXPECT_FALSE(isNewRecordId(id)) << id;
    EXPECT_TRUE(isTempId(Util::getNewRecordId()));
}

TEST_F(UtilityTest, StateOfListsIsKeptPerModuleAndView) {
    UserDefaultsUtil util(defaults);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(util.getListFilterRecordSyncTime("Leads", "7"), std::nullopt);
        EXPECT_TRUE(util.getListFilterHasMoreRecord("Leads", "7"));
        util.setListFilterRecordSyncTime(1'700'000'000'000, "Leads", "7");
        util.setListFilterHasMoreRecord(false, "Leads", "7");
        EXPECT_EQ(util.getListFilterRecordSyncTime("Leads", "7"), 1'700'000'000'000);
        EXPECT_FALSE(util.getListFilterHasMoreRecord("Leads", "7"));
        EXPECT_TRUE(util.getListFilterHasMoreRecord("Leads", "8"));
        util.resetListFilter("Leads", "7");
    }
}

TEST_F(UtilityTest, ProgressAndChoicesBelongToTheirAccount) {
    UserDefaultsUtil util(defaults);
    util.setCurrencyCompleted();
    util.setModuleOrder({"Deals", "Leads"});
    util.setProgressPercent(40);
    for (bool isOwn : {true, false}) {
        if (!isOwn) signIn("2002");
        EXPECT_EQ(util.isCurrencyCompleted(), isOwn);
        EXPECT_FALSE(util.isPermissionsCompleted());
        EXPECT_EQ(util.getProgressPercent(), isOwn ? 40 : 0);
        EXPECT_EQ(util.getModuleOrder().has_value(), isOwn);
    }
}

TEST_F(UtilityTest, BinarySearch) {
    using O = CommonUtils::BinarySearchOptions;
    constexpr auto none = std::nullopt;
    using Index = std::optional<std::size_t>;
    struct {
        std::vector<int> list;
        int element;
        Index first, last, insertion;
    } cases[] = {
        {{}, 1, none, none, none},  {{5}, 9, none, none, 0},          {{1, 3, 3, 3, 9}, 3, 1, 3, 2},
        {{3, 3, 3, 3}, 3, 0, 3, 1}, {{1, 3, 5, 7}, 4, none, none, 2}, {{1, 3, 5, 7}, 8, none, none, 3},
    };
    for (auto& one : cases) {
        auto search = [&](O option) {
            return CommonUtils::binarySearch(one.list, one.element, option, [](int item) { return item; });
        };
        EXPECT_EQ(search(O::firstEqual), one.first) << one.element;
        EXPECT_EQ(search(O::lastEqual), one.last) << one.element;
        EXPECT_EQ(search(O::insertionIndex), one.insertion) << one.element;
    }
}

class TwoThreads final : public AppPlatformConstantsProtocol {
public:
    std::optional<int> maximumNumberOfThreads() const override { return 2; }
    std::optional<int> maximumRowsPerOperation() const override { return std::nullopt; }
    std::optional<int> maxParallelSyncOperations() const override { return std::nullopt; }
};

TEST_F(UtilityTest, BackgroundQueuesTakeTurns) {
    auto next = [] { return CommonUtils::nextBackgroundDispatchQueue(); };
    EXPECT_NE(next(), next());
    CommonUtils::setPlatformConstants(std::make_shared<TwoThreads>());
    auto first = next(), second = next();
    EXPECT_NE(first, second);
    EXPECT_EQ(next(), first);
    EXPECT_EQ(first->label(), "BrenCommonUtilsQueue");
}

}  // namespace
}  // namespace tarvo
