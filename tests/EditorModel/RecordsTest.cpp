#include <EditorModel/EditorModel.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using ::testing::ElementsAre;

TEST(TypesTest, TransformRoundTripsThroughQTransformRowByRow)
{
    const Types::Transform t(1, 2, 0, 3, 4, 0, 5, 6, 1);
    const QTransform q = t.toQTransform();
    EXPECT_EQ(q.m12(), 2);
    EXPECT_EQ(q.m21(), 3);
    EXPECT_EQ(q.dx(), 5);
    EXPECT_EQ(q.dy(), 6);
    EXPECT_EQ(Types::Transform(q), t);
    EXPECT_EQ(t.at(2, 1), 6);
    EXPECT_TRUE(Types::Transform().toQTransform().isIdentity());
}

TEST(AnimationTest, ValuesBetweenKeysAreBlendedAndHeldOutside)
{
    Animation::TransformationItem item;
    Transformation::Object start, end;
    start.setMatrix(Types::Transform(1, 0, 0, 0, 1, 0, 0, 0, 1));
    end.setMatrix(Types::Transform(2, 0, 0, 0, 2, 0, 100, 50, 1));
    item.setKey(100, end).setKey(0, start);
    ASSERT_EQ(item.keys().size(), 2u);
    EXPECT_EQ(item.keys().front().time, 0);

    const auto middle = item.valueAt(25).matrix();
    EXPECT_DOUBLE_EQ(middle.at(0, 0), 1.25);
    EXPECT_DOUBLE_EQ(middle.at(2, 0), 25);
    EXPECT_EQ(item.valueAt(-5), start);
    EXPECT_EQ(item.valueAt(500), end);
    item.setKey(100, start); // same time: replaced
    EXPECT_EQ(item.keys().size(), 2u);
    EXPECT_STREQ(Animation::KeyValue<Transformation::Object>::NameInArchive(), "TransformationKeyValue");
}

class CommandLog : public PubSub::Subscriber<Command::AddFile>,
                   public PubSub::Subscriber<Command::ShowMainWindow>,
                   public PubSub::Subscriber<AppEvents::StartupCompleted>
{
public:
    std::vector<std::string> log;

private:
    void notify(const Command::AddFile& c) override { log.push_back("add " + c.path().str()); }
    void notify(const Command::ShowMainWindow&) override { log.push_back("show"); }
    void notify(const AppEvents::StartupCompleted&) override { log.push_back("started"); }
};

class CommandSource : public PubSub::Publisher<Command::AddFile, Command::ShowMainWindow, AppEvents::StartupCompleted>
{
};

TEST(GlobalObjectsTest, CommandsAndEventsGoToTheirOwnGlobalObjects)
{
    EXPECT_NE(Command::globalObject(), AppEvents::globalObject());
    EXPECT_NE(Command::globalObject(), Statistics::globalObject());
    EXPECT_EQ(Command::globalObject(), Command::globalObject());

    CommandLog commands, events;
    commands.subscribe(Command::globalObject());
    events.subscribe(AppEvents::globalObject());
    CommandSource source;
    source.publish(AppEvents::StartupCompleted());
    source.publish(Command::AddFile(Types::String("/a.mp4")));
    source.publish(Command::ShowMainWindow());
    EXPECT_THAT(commands.log, ElementsAre("add /a.mp4", "show"));
    EXPECT_THAT(events.log, ElementsAre("started"));
}

} // namespace
