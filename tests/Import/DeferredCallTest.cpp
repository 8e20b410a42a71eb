#include <Util/Import/DeferredCall.h>

#include <QCoreApplication>
#include <QEvent>
#include <QTest>

#include <gtest/gtest.h>

#include <memory>

namespace {

struct Counter
{
    int calls = 0;
    void hit() { ++calls; }
};

// Lets posted events and zero-interval timers run until `done` or a generous bound.
template <class Pred>
void spinUntil(Pred done, int maxTurns = 200)
{
    for (int i = 0; i < maxTurns && !done(); ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
}

void spinTurns(int turns)
{
    for (int i = 0; i < turns; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
}

} // namespace

TEST(DeferredCallTest, ManyTriggersInOneTurnGiveOneCall)
{
    Counter counter;
    DeferredCall call(&counter, &Counter::hit);
    for (int i = 0; i < 50; ++i)
        call.trigger();
    EXPECT_EQ(counter.calls, 0) << "nothing may be called in the triggering turn";

    spinUntil([&] { return counter.calls > 0; });
    spinTurns(20);
    EXPECT_EQ(counter.calls, 1);
    EXPECT_FALSE(call.isTimerActive());
}

TEST(DeferredCallTest, TriggerAfterTheCallGivesAnotherCall)
{
    Counter counter;
    DeferredCall call(&counter, &Counter::hit);
    call.trigger();
    spinUntil([&] { return counter.calls == 1; });
    ASSERT_EQ(counter.calls, 1);

    call.trigger();
    call.trigger();
    spinUntil([&] { return counter.calls == 2; });
    spinTurns(20);
    EXPECT_EQ(counter.calls, 2);
}

TEST(DeferredCallTest, DeliveredTriggerStartsACoarseTimerOnlyOnce)
{
    Counter counter;
    DeferredCall call(&counter, &Counter::hit);
    EXPECT_FALSE(call.isTimerActive());

    // Deliver the posted events without letting timers fire.
    call.trigger();
    call.trigger();
    QCoreApplication::sendPostedEvents(&call, DeferredCall::TriggerEventType);
    EXPECT_TRUE(call.isTimerActive());
    EXPECT_EQ(counter.calls, 0);

    spinUntil([&] { return counter.calls > 0; });
    EXPECT_EQ(counter.calls, 1);
    EXPECT_FALSE(call.isTimerActive());
}

TEST(DeferredCallTest, TriggerPostsAnEventOfType1000)
{
    struct Recorder : QObject
    {
        QList<int> types;
        bool eventFilter(QObject*, QEvent* e) override
        {
            types.append(static_cast<int>(e->type()));
            return false;
        }
    } recorder;
    Counter counter;
    DeferredCall call(&counter, &Counter::hit);
    call.installEventFilter(&recorder);
    call.trigger();
    call.trigger();
    QCoreApplication::sendPostedEvents(&call, 0);
    EXPECT_EQ(recorder.types.count(1000), 2) << "each trigger posts one event";
}

TEST(DeferredCallTest, DisabledObjectIgnoresTriggers)
{
    Counter counter;
    DeferredCall call(&counter, &Counter::hit);
    call.setEnabled(false);
    call.trigger();
    spinTurns(20);
    EXPECT_EQ(counter.calls, 0);

    call.setEnabled(true);
    call.trigger();
    spinUntil([&] { return counter.calls > 0; });
    EXPECT_EQ(counter.calls, 1);
}

TEST(DeferredCallTest, DestroyedObjectLeavesNoCallBehind)
{
    auto counter = std::make_unique<Counter>();
    int* calls = &counter->calls;
    {
        DeferredCall call(counter.get(), &Counter::hit);
        call.trigger();
    }
    {
        DeferredCall call(counter.get(), &Counter::hit);
        call.trigger();
        QCoreApplication::sendPostedEvents(&call, DeferredCall::TriggerEventType);
        ASSERT_TRUE(call.isTimerActive());
    }
    spinTurns(20);
    EXPECT_EQ(*calls, 0);
}
