#include "platform/Json.h"
#include "tarvobase/get_metadata/GetModuleTagsUC.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tarvobase/notification/RecordChangedObserver.h"
#include "tarvobase/value_objects/tag/TagInDatabase.h"
#include "tests/tarvobase/AccountTables.h"
#include "tests/tarvobase/ServerFixture.h"

namespace tarvo {
namespace {

const Module taggedLeads{.moduleName = "Leads", .apiName = "Leads_API"};

std::string tagsBody(Value rows) {
    return *json::write(ValueMap{{"response", ValueMap{{"result", ValueList{ValueMap{{"data", std::move(rows)}}}}}}});
}

std::string idsOf(const std::optional<std::vector<Tag>>& tags) {
    if (!tags) return "absent";
    std::string ids;
    for (auto& tag : *tags) ids += tag.id + "=" + tag.name + " ";
    return ids;
}

class ChangedRecords final : public RecordChangedObserver {
public:
    using RecordChangedObserver::recordUpdated;
    void recordUpdated(const std::string& moduleName, const RecordIds& recordIds) override {
        changed += moduleName + ":";
        for (auto& id : recordIds) changed += " " + id.recordID;
        changed += ";";
    }
    std::string changed;
};

class TagsTest : public ServerTest {
protected:
    void SetUp() override {
        ServerTest::SetUp();
        createTables(accountTables());
        makeUseCase();
        BrenNotificationCenter::shared().add<RecordChangedObserver>(observer);
    }

    void makeUseCase() {
        usecase = std::make_shared<GetModuleTagsUC>();
        usecase->getTagsDM->tagsNWService->setNetworkAdapter(network);
    }

    /// Returns the answers in order: source and tags, or the failure.
    std::string ask(DataSource source) {
        std::string answers;
        usecase->execute(GetModuleTagsUC::Request(taggedLeads, source), [&](auto* response, auto* failure) {
            answers += response ? std::string(caseName(response->source())) + " " + idsOf(response->tags)
                                : std::string(caseName(failure->which()));
            answers += "; ";
        });
        settle();
        return answers;
    }

    std::shared_ptr<GetModuleTagsUC> usecase;
    std::shared_ptr<ChangedRecords> observer = std::make_shared<ChangedRecords>();
};

TEST_F(TagsTest, TheServersTagsReplaceTheStoredOnes) {
    TagInDatabase(database).storeTags({{"1", "hot", "Leads"}, {"2", "old", "Leads"}, {"9", "big", "Deals"}});
    TagRecordInDatabase(database).storeTagRecords({{"2", "old", "Leads"}, {"1", "hot", "Leads"}}, "r1");
    network->answer(tagsBody(ValueList{ValueList{"1", "warm"}, ValueList{"3"}, ValueList{"4", "new", "#ff0000"}}));
    EXPECT_EQ(ask(DataSource::both), "database 1=hot 2=old ; network 1=warm 4=new ; ");
    EXPECT_EQ(idsOf(TagInDatabase(database).getTags("Leads")), "1=warm 4=new ");
    EXPECT_EQ(idsOf(TagInDatabase(database).getTags("Deals")), "9=big ");
    EXPECT_EQ(TagRecordInDatabase(database).getTagRecordsByRecordId("r1")->size(), 1u);
    EXPECT_EQ(observer->changed, "Leads: r1;");
    auto call = network->calls().front();
    EXPECT_TRUE(call.request.url.ends_with("/getmoduletags"));
    EXPECT_EQ(*call.params, (ValueMap{{"module", "Leads"}, {"moduleAPI", "Leads_API"}}));
}

TEST_F(TagsTest, TagsOfUnsentChangesStay) {
    struct {
        std::string tag, record;
    } cases[] = {{"a", "TarvoTEMPID#1"}, {"b", "NEW_000000001"}, {"c", "NEW_1"}, {"d", "77"}, {"TarvoTEMPID#5", "77"}};
    for (auto& one : cases) {
        TagInDatabase(database).storeTags({{one.tag, "t", "Leads"}});
        TagRecordInDatabase(database).storeTagRecords({{one.tag, "t", "Leads"}}, "66");
        TagRecordInDatabase(database).storeTagRecords({{one.tag, "t", "Leads"}}, one.record);
    }
    network->answer(tagsBody(ValueList{}));
    EXPECT_EQ(ask(DataSource::network), "network ; ");
    auto left = *TagInDatabase(database).getTags("Leads");
    std::sort(left.begin(), left.end(), [](auto& a, auto& b) { return a.id < b.id; });
    EXPECT_EQ(idsOf(left), "TarvoTEMPID#5=t a=t b=t ");
}

TEST_F(TagsTest, StaleTagsGoInOneCommit) {
    TagInDatabase(database).storeTags({{"1", "hot", "Leads"}, {"2", "old", "Leads"}});
    TagRecordInDatabase(database).storeTagRecords({{"1", "hot", "Leads"}, {"2", "old", "Leads"}}, "r1");
    database->execute(
        "CREATE TRIGGER refuse BEFORE DELETE ON Tags_Records WHEN OLD.tag_id = '2' "
        "BEGIN SELECT RAISE(ABORT, 'refused'); END",
        std::nullopt);
    network->answer(tagsBody(ValueList{Value(ValueList{"4", "new"})}));
    EXPECT_EQ(ask(DataSource::network), "network 4=new ; ");
    EXPECT_EQ(idsOf(TagInDatabase(database).getTags("Leads")), "1=hot 2=old ");
    EXPECT_EQ(TagRecordInDatabase(database).getTagRecordsByRecordId("r1")->size(), 2u);
    EXPECT_EQ(observer->changed, "");
}

TEST_F(TagsTest, AnUnusableAnswerLeavesTheTagsAsTheyAre) {
    TagInDatabase(database).storeTags({{"1", "hot", "Leads"}});
    for (auto& answer : {std::string("nonsense"), std::string(R"({"error":[{"code":"X"}]})"), tagsBody("rows"),
                         tagsBody(ValueList{Value(ValueList{"1", 2})}), tagsBody(ValueList{"row"})}) {
        network->answer(answer);
        EXPECT_EQ(ask(DataSource::network), "network absent; ") << answer;
    }
    network->fail(NetworkError::Kind::timeout);
    EXPECT_EQ(ask(DataSource::both), "database 1=hot ; timeout; ");
    network->fail(NetworkError::Kind::cannotConnect);
    EXPECT_EQ(ask(DataSource::network), "networkUnavailable; ");
    EXPECT_EQ(idsOf(TagInDatabase(database).getTags("Leads")), "1=hot ");
    EXPECT_EQ(observer->changed, "");
}

}  // namespace
}  // namespace tarvo
