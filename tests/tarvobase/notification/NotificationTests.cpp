#include "platform/MainQueue.h"
#include "tarvobase/notification/BrenNotificationCenter.h"
#include "tests/tarvobase/Fixture.h"

namespace tarvo {
namespace {

struct Topic : virtual platform::Object {
    virtual void changed(int value) = 0;
};
struct OtherTopic : virtual platform::Object {
    virtual void otherChanged() = 0;
};
struct Listener final : Topic, OtherTopic {
    void changed(int value) override {
        onMain = MainQueue::shared()->isCurrent();
        values.push_back(value);
    }
    void otherChanged() override { ++others; }
    std::vector<int> values;
    std::atomic<int> others = 0;
    bool onMain = false;
};

class NotificationTest : public FoundationTest {
protected:
    void post(int value, bool onMainThread = true) {
        center.notify<Topic>(onMainThread, [value](Topic& topic) { topic.changed(value); });
    }
    BrenNotificationCenter& center = BrenNotificationCenter::shared();
};

TEST_F(NotificationTest, EachObserverOfATopicIsNotifiedOnceOnTheRequestedQueue) {
    auto one = std::make_shared<Listener>(), two = std::make_shared<Listener>();
    center.add<Topic>(one);
    center.add<Topic>(one);
    center.add<Topic>(two);
    center.add<OtherTopic>(one);
    post(1);
    settle();
    EXPECT_EQ(one->values, std::vector{1});
    EXPECT_EQ(two->values, std::vector{1});
    EXPECT_TRUE(one->onMain);
    EXPECT_EQ(one->others, 0);
    post(2, false);
    settle();
    EXPECT_FALSE(one->onMain);
    center.notify<OtherTopic>(false, [](OtherTopic& topic) { topic.otherChanged(); });
    settle();
    EXPECT_EQ(one->others, 1);
}

TEST_F(NotificationTest, RemovedAndDeadObserversAreNotNotified) {
    auto staying = std::make_shared<Listener>(), removed = std::make_shared<Listener>(),
         gone = std::make_shared<Listener>();
    for (auto& listener : {staying, removed, gone}) center.add<Topic>(listener);
    post(1);
    // The notice is pending; an observer that is unregistered when it arrives does not get it.
    center.remove<Topic>(removed);
    gone.reset();
    settle();
    EXPECT_EQ(staying->values, std::vector{1});
    EXPECT_TRUE(removed->values.empty());
    post(2);
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
    post(5);
    settle();
    EXPECT_TRUE(first->values.empty());
    EXPECT_EQ(second->values, std::vector{5});
}

TEST_F(NotificationTest, ObserversMayDieWhileNoticesArePending) {
    struct Fragile final : OtherTopic {
        void otherChanged() override { ASSERT_EQ(alive, 42); }
        ~Fragile() override {
            BrenNotificationCenter::shared().remove<OtherTopic>(this);
            alive = 0;
        }
        int alive = 42;
    };
    for (int round = 0; round < 300; ++round) {
        auto fragile = std::make_shared<Fragile>();
        center.add<OtherTopic>(fragile);
        center.notify<OtherTopic>(false, [](OtherTopic& topic) { topic.otherChanged(); });
        fragile.reset();
    }
    settle();
    EXPECT_EQ(center.count<OtherTopic>(), 0u);
}

}  // namespace
}  // namespace tarvo
