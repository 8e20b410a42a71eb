#include "ImportTestSupport.h"

#include <Util/Import/DeferredCall.h>

#include <QEvent>

#include <gtest/gtest.h>

#include <memory>

using namespace ImportTest;

namespace {

struct Counter
{
    int calls = 0;
    void hit() { ++calls; }
};

} // namespace

TEST(DeferredCallTest, TriggersOfOneTurnPostEventsAndGiveOneLaterCall)
{
    struct Recorder : QObject
    {
        int triggers = 0;
        bool eventFilter(QObject*, QEvent* e) override
        {
            triggers += e->type() == QEvent::Type(1000);
            return false;
        }
    } recorder;
    Counter counter;
    DeferredCall call(&counter, &Counter::hit);
    call.installEventFilter(&recorder);
    for (int i = 0; i < 50; ++i)
        call.trigger();
    EXPECT_EQ(counter.calls, 0) << "nothing may be called in the triggering turn";
    EXPECT_FALSE(call.isTimerActive());

    // Deliver the posted events without letting timers fire: one event per trigger, one timer.
    QCoreApplication::sendPostedEvents(&call, DeferredCall::TriggerEventType);
    EXPECT_EQ(recorder.triggers, 50);
    EXPECT_TRUE(call.isTimerActive());
    EXPECT_EQ(counter.calls, 0);

    ASSERT_TRUE(spinUntil([&] { return counter.calls > 0; }));
    spinTurns(20);
    EXPECT_EQ(counter.calls, 1);
    EXPECT_FALSE(call.isTimerActive());

    call.trigger();
    call.trigger();
    ASSERT_TRUE(spinUntil([&] { return counter.calls == 2; }));
    spinTurns(20);
    EXPECT_EQ(counter.calls, 2) << "a trigger after the call gives another call";
}

TEST(DeferredCallTest, DisabledOrDestroyedObjectCallsNothing)
{
    Counter counter;
    {
        DeferredCall call(&counter, &Counter::hit);
        call.setEnabled(false);
        call.trigger();
        spinTurns(20);
        EXPECT_EQ(counter.calls, 0);
        call.setEnabled(true);
        call.trigger();
        ASSERT_TRUE(spinUntil([&] { return counter.calls > 0; }));
        EXPECT_EQ(counter.calls, 1);
    }
    {
        DeferredCall call(&counter, &Counter::hit);
        call.trigger(); // destroyed with its event still posted
    }
    {
        DeferredCall call(&counter, &Counter::hit);
        call.trigger();
        QCoreApplication::sendPostedEvents(&call, DeferredCall::TriggerEventType);
        ASSERT_TRUE(call.isTimerActive()); // destroyed with its timer running
    }
    spinTurns(20);
    EXPECT_EQ(counter.calls, 1);
}
