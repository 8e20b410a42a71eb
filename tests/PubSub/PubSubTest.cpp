#include <PubSub/PubSub.h>

#include "TestSupport.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

using PubSub::Details::Dispatcher;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Record : virtual PubSub::Object
{
    int value = 0;
};

struct Ping : PubSub::Details::MessageBase
{
    Ping(const Record* r, int n) : MessageBase(r), number(n) {}
    int number;
};

struct Pong : PubSub::Details::MessageBase
{
    using MessageBase::MessageBase;
};

using Log = std::vector<std::string>;

class Listener : public PubSub::Subscriber<Ping>, public PubSub::Subscriber<Pong>
{
public:
    Listener(std::string name, Log& log) : m_name(std::move(name)), m_log(&log) {}

    void notify(const Ping& message) override
    {
        m_log->push_back(m_name + ":ping" + std::to_string(message.number));
        if (onPing)
            onPing(message);
    }
    void notify(const Pong&) override { m_log->push_back(m_name + ":pong"); }

    using SubscriberBase::subscribeAll;
    using SubscriberBase::unsubscribeAll;

    std::function<void(const Ping&)> onPing;

private:
    std::string m_name;
    Log* m_log;
};

class Sender : public PubSub::Publisher<Ping, Pong>
{
};

class PubSubTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        baseSubscriptions = Dispatcher::instance().subscriptionCount();
        baseRegistrations = Dispatcher::instance().registrationCount();
    }
    void TearDown() override
    {
        // Every subscriber of a test is gone by now: whatever it held must have been released.
        EXPECT_EQ(Dispatcher::instance().subscriptionCount(), baseSubscriptions);
        EXPECT_EQ(Dispatcher::instance().registrationCount(), baseRegistrations);
    }

    std::size_t baseSubscriptions = 0;
    std::size_t baseRegistrations = 0;
    Log log;
    Sender sender;
    Record a;
    Record b;
};

TEST_F(PubSubTest, DeliversToSubscribersOfTheSourceInSubscriptionOrder)
{
    Listener first("first", log), second("second", log), other("other", log);
    second.subscribe(&a);
    first.subscribe(&a);
    other.subscribe(&b);

    sender.publish(Ping(&a, 1));
    EXPECT_THAT(log, ElementsAre("second:ping1", "first:ping1"));

    log.clear();
    sender.publish(Ping(&b, 2));
    sender.publish(Pong(&a));
    EXPECT_THAT(log, ElementsAre("other:ping2", "second:pong", "first:pong"));

    // A copy of a watched record is another object, one that nobody watches: nothing happens.
    TestSupport::LogCapture capture;
    log.clear();
    Record copy(a);
    sender.publish(Ping(&copy, 3));
    EXPECT_THAT(log, IsEmpty());
    EXPECT_THAT(capture.errors(), IsEmpty());
}

TEST_F(PubSubTest, UnsubscribingKeepsTheOrderOfTheOthersResubscribingGoesLastAndTwiceIsOnce)
{
    Listener first("first", log), second("second", log), third("third", log);
    first.subscribe(&a);
    second.subscribe(&a);
    third.subscribe(&a);
    second.unsubscribe(&a); // from the middle of the list
    sender.publish(Ping(&a, 1));
    first.unsubscribe(&a); // from its head
    second.subscribe(&a);
    sender.publish(Ping(&a, 2));
    third.unsubscribe(&a);
    first.subscribe(&a);
    sender.publish(Ping(&a, 3));
    EXPECT_THAT(
        log, ElementsAre("first:ping1", "third:ping1", "third:ping2", "second:ping2", "second:ping3", "first:ping3"));

    // Subscribing twice is harmless and still one subscription; unsubscribing twice is refused.
    log.clear();
    EXPECT_FALSE(first.isSubscribed(&b));
    EXPECT_TRUE(first.subscribe(&b));
    EXPECT_TRUE(first.subscribe(&b));
    EXPECT_TRUE(first.isSubscribed(&b));
    sender.publish(Ping(&b, 4));
    EXPECT_THAT(log, ElementsAre("first:ping4"));
    EXPECT_TRUE(first.unsubscribe(&b));
    EXPECT_FALSE(first.unsubscribe(&b));
    EXPECT_FALSE(first.isSubscribed(&b));
    sender.publish(Ping(&b, 5));
    EXPECT_THAT(log, ElementsAre("first:ping4"));
}

TEST_F(PubSubTest, SubscribeAllReceivesEveryObjectOfThatMessageTypeOnce)
{
    Listener all("all", log), own("own", log);
    all.subscribeAll(typeid(Ping));
    all.subscribe(&a); // also subscribed to a: still one delivery
    own.subscribe(&a);

    sender.publish(Ping(&a, 1));
    sender.publish(Ping(&b, 2));
    sender.publish(Pong(&b)); // all-source subscription is per message type
    EXPECT_THAT(log, ElementsAre("all:ping1", "own:ping1", "all:ping2"));

    log.clear();
    EXPECT_TRUE(all.unsubscribeAll(typeid(Ping)));
    EXPECT_FALSE(all.unsubscribeAll(typeid(Ping)));
    sender.publish(Ping(&b, 3));
    sender.publish(Ping(&a, 4));
    EXPECT_THAT(log, ElementsAre("all:ping4", "own:ping4"));
}

// What the first of three subscribers of `a` does to the others, to itself or to a fourth, not
// yet subscribed, while its first message is being delivered; two messages are sent.
TEST_F(PubSubTest, DeliveryHonoursChangesMadeDuringIt)
{
    using L = std::unique_ptr<Listener>;
    struct Row
    {
        const char* name;
        std::function<void(L* listeners, Record& a)> act;
        Log log;
    };
    const Row rows[] = {
        {"unsubscribed one is never called afterwards",
         [](L* l, Record& a) { l[2]->unsubscribe(&a); },
         {"first:ping1", "second:ping1", "first:ping2", "second:ping2"}},
        {"destroyed one is never called",
         [](L* l, Record&) { l[1].reset(); },
         {"first:ping1", "third:ping1", "first:ping2", "third:ping2"}},
        {"destroying itself stops only its own calls",
         [](L* l, Record&) { l[0].reset(); },
         {"first:ping1", "second:ping1", "third:ping1", "second:ping2", "third:ping2"}},
        {"new subscriber waits for the next message",
         [](L* l, Record& a) { l[3]->subscribe(&a); },
         {"first:ping1", "second:ping1", "third:ping1", "first:ping2", "second:ping2", "third:ping2", "late:ping2"}},
        {"resubscribed one misses the message in flight",
         [](L* l, Record& a) {
             l[1]->unsubscribe(&a);
             l[1]->subscribe(&a);
         },
         {"first:ping1", "third:ping1", "first:ping2", "third:ping2", "second:ping2"}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        log.clear();
        L listeners[4];
        const char* names[] = {"first", "second", "third", "late"};
        for (int i = 0; i < 4; ++i) {
            listeners[i] = std::make_unique<Listener>(names[i], log);
            if (i < 3)
                listeners[i]->subscribe(&a);
        }
        listeners[0]->onPing = [&](const Ping& p) {
            if (p.number == 1)
                row.act(listeners, a);
        };
        sender.publish(Ping(&a, 1));
        sender.publish(Ping(&a, 2));
        EXPECT_EQ(log, row.log);
    }
}

TEST_F(PubSubTest, ThrowingSubscriberStopsTheDeliveryAndLeavesTheBusUsable)
{
    Listener first("first", log), thrower("thrower", log), last("last", log);
    first.subscribe(&a);
    thrower.subscribe(&a);
    last.subscribe(&a);
    thrower.onPing = [](const Ping& p) {
        if (p.number == 1)
            throw std::runtime_error("refused");
    };

    EXPECT_THROW(sender.publish(Ping(&a, 1)), std::runtime_error);
    EXPECT_THAT(log, ElementsAre("first:ping1", "thrower:ping1"));

    log.clear();
    sender.publish(Ping(&a, 2));
    EXPECT_THAT(log, ElementsAre("first:ping2", "thrower:ping2", "last:ping2"));
}

TEST_F(PubSubTest, DestroyedSubscriberReleasesEverySubscription)
{
    const std::size_t before = Dispatcher::instance().subscriptionCount();
    {
        Listener listener("l", log);
        listener.subscribe(&a);
        listener.subscribe(&b);
        listener.subscribeAll(typeid(Pong));
        // Two message types for each of two objects, plus one all-source subscription.
        EXPECT_EQ(Dispatcher::instance().subscriptionCount(), before + 5);
        EXPECT_TRUE(Dispatcher::instance().hasSubscribers(typeid(Ping), &a));
    }
    EXPECT_EQ(Dispatcher::instance().subscriptionCount(), before);
    EXPECT_FALSE(Dispatcher::instance().hasSubscribers(typeid(Ping), &a));
    EXPECT_FALSE(Dispatcher::instance().hasSubscribers(typeid(Pong), &b));
    sender.publish(Ping(&a, 1));
    EXPECT_THAT(log, IsEmpty());
}

// Subscribers of one message type each, sharing objects: each object's lists of the two types
// come and go independently, and many objects reuse the freed lists in any order.
class PingOnly : public PubSub::Subscriber<Ping>
{
public:
    void notify(const Ping& message) override { received.push_back(message.number); }
    std::vector<int> received;
};

class PongOnly : public PubSub::Subscriber<Pong>
{
public:
    void notify(const Pong&) override { ++pongs; }
    int pongs = 0;
};

TEST_F(PubSubTest, SubscribersOfDifferentTypesOnOneObjectComeAndGoApart)
{
    Dispatcher& dispatcher = Dispatcher::instance();
    std::vector<Record> records(300);
    auto pongOnly = std::make_unique<PongOnly>();
    PingOnly pingOnly;
    for (std::size_t i = 0; i < records.size(); ++i) {
        pongOnly->subscribe(&records[i]);
        if (i % 3 != 0)
            pingOnly.subscribe(&records[i]);
    }
    for (std::size_t i = 0; i < records.size(); i += 2)
        pongOnly->unsubscribe(&records[i]); // objects left with Ping only, or with nothing
    for (std::size_t i = 0; i < records.size(); ++i) {
        SCOPED_TRACE(i);
        EXPECT_EQ(dispatcher.hasSubscribers(typeid(Ping), &records[i]), i % 3 != 0);
        EXPECT_EQ(dispatcher.hasSubscribers(typeid(Pong), &records[i]), i % 2 != 0);
        sender.publish(Ping(&records[i], int(i)));
        sender.publish(Pong(&records[i]));
    }
    EXPECT_EQ(pingOnly.received.size(), 200u);
    EXPECT_EQ(pongOnly->pongs, 150);

    pongOnly.reset(); // the Ping lists of the same objects stay
    pingOnly.received.clear();
    for (std::size_t i = records.size(); i-- > 0;)
        sender.publish(Ping(&records[i], int(i)));
    ASSERT_EQ(pingOnly.received.size(), 200u);
    EXPECT_EQ(pingOnly.received.front(), 299);
    EXPECT_FALSE(dispatcher.hasSubscribers(typeid(Pong), &records[1]));

    // Freed lists are taken again by a new subscriber, in its own order.
    PongOnly late;
    for (std::size_t i = records.size(); i-- > 0;)
        late.subscribe(&records[i]);
    for (const Record& record : records)
        sender.publish(Pong(&record));
    EXPECT_EQ(late.pongs, 300);
}

TEST_F(PubSubTest, CopiedSubscriberHasTheSameSubscriptionsAndOutlivesNothing)
{
    Listener original("original", log);
    original.subscribe(&a);
    {
        Listener copy(original);
        EXPECT_TRUE(copy.isSubscribed(&a));
        sender.publish(Ping(&a, 1));
        EXPECT_THAT(log, ElementsAre("original:ping1", "original:ping1"));
    }
    log.clear();
    sender.publish(Ping(&a, 2));
    EXPECT_THAT(log, ElementsAre("original:ping2"));

    Listener assigned("assigned", log);
    assigned.subscribe(&b);
    assigned = original; // takes the other's subscriptions, drops its own
    EXPECT_TRUE(assigned.isSubscribed(&a));
    EXPECT_FALSE(assigned.isSubscribed(&b));
    log.clear();
    sender.publish(Ping(&b, 3));
    EXPECT_THAT(log, IsEmpty());
}

TEST_F(PubSubTest, NullObjectsAreRefusedWithAnError)
{
    TestSupport::LogCapture capture;
    Listener listener("l", log);
    listener.subscribeAll(typeid(Ping));
    EXPECT_FALSE(listener.subscribe(nullptr));
    EXPECT_TRUE(capture.containsError("null object"));
    EXPECT_FALSE(listener.isSubscribed(nullptr));

    sender.publish(Ping(nullptr, 1));
    EXPECT_TRUE(capture.containsError("without a source object"));
    EXPECT_THAT(log, IsEmpty());
}

} // namespace
