#include "platform/MainQueue.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

struct Topic : virtual platform::Object {
    virtual void told(int value) = 0;
};
struct OtherTopic : virtual platform::Object {
    virtual void toldOther() = 0;
};
struct Listener final : Topic, OtherTopic {
    void told(int value) override {
        onMain = MainQueue::shared()->isCurrent();
        values.push_back(value);
    }
    void toldOther() override { ++others; }
    std::vector<int> values;
    std::atomic<int> others = 0;
    bool onMain = false;
};

class NotificationTest : public FoundationTest {
protected:
    void tell(int value, bool onMainThread = true) {
        center.notify<Topic>(onMainThread, [value](Topic& topic) { topic.told(value); });
    }
    BrenNotificationCenter& center = BrenNotificationCenter::shared();
};

TEST_F(NotificationTest, EachObserverOfATopicHearsOnceOnTheQueueAskedFor) {
    auto one = std::make_shared<Listener>(), two = std::make_shared<Listener>();
    center.add<Topic>(one);
    center.add<Topic>(one);
    center.add<Topic>(two);
    center.add<OtherTopic>(one);
    tell(1);
    settle();
    EXPECT_EQ(one->values, std::vector{1});
    EXPECT_EQ(two->values, std::vector{1});
    EXPECT_TRUE(one->onMain);
    EXPECT_EQ(one->others, 0);
    tell(2, false);
    settle();
    EXPECT_FALSE(one->onMain);
    center.notify<OtherTopic>(false, [](OtherTopic& topic) { topic.toldOther(); });
    settle();
    EXPECT_EQ(one->others, 1);
}

TEST_F(NotificationTest, RemovedAndGoneObserversHearNothing) {
    auto staying = std::make_shared<Listener>(), removed = std::make_shared<Listener>(),
         gone = std::make_shared<Listener>();
    for (auto& listener : {staying, removed, gone}) center.add<Topic>(listener);
    tell(1);
    // The notice is on its way; a registration that does not stand when it arrives counts no more.
    center.remove<Topic>(removed);
    gone.reset();
    settle();
    EXPECT_EQ(staying->values, std::vector{1});
    EXPECT_TRUE(removed->values.empty());
    tell(2);
    EXPECT_EQ(center.count<Topic>(), 1u);
    settle();
}

TEST_F(NotificationTest, ACallbackMayAddAndRemove) {
    auto first = std::make_shared<Listener>(), second = std::make_shared<Listener>();
    center.add<Topic>(first);
    center.notify<Topic>(true, [&](Topic&) {
        center.remove<Topic>(first);
        center.add<Topic>(second);
    });
    settle();
    tell(5);
    settle();
    EXPECT_TRUE(first->values.empty());
    EXPECT_EQ(second->values, std::vector{5});
}

TEST_F(NotificationTest, ObserversMayDieWhileNoticesAreOnTheirWay) {
    struct Fragile final : OtherTopic {
        void toldOther() override { ASSERT_EQ(alive, 42); }
        ~Fragile() override {
            BrenNotificationCenter::shared().remove<OtherTopic>(this);
            alive = 0;
        }
        int alive = 42;
    };
    for (int round = 0; round < 300; ++round) {
        auto fragile = std::make_shared<Fragile>();
        center.add<OtherTopic>(fragile);
        center.notify<OtherTopic>(false, [](OtherTopic& topic) { topic.toldOther(); });
        fragile.reset();
    }
    settle();
    EXPECT_EQ(center.count<OtherTopic>(), 0u);
}

}  // namespace
}  // namespace tarvo
