#include "ImportTestSupport.h"
#include "TestSupport.h"

#include <Util/Import/TimelineFileOpenHandler.h>
#include <Util/Import/TimelineShadowChange.h>

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace ImportTest;

namespace {

constexpr Types::Time second = Types::TimeUnitsPerSecond;

class TrackedPreset : public Overlay::Preset
{
public:
    explicit TrackedPreset(bool* destroyed) : m_destroyed(destroyed) {}
    ~TrackedPreset() override { *m_destroyed = true; }

private:
    bool* m_destroyed;
};

class TimelineShadowChangeTest : public ::testing::Test
{
protected:
    TimelineShadowChangeTest()
    {
        Model::installDefaultServices(host);
        source = host.addTimeline("Source");
        first = host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("First"));
        auto edit = host.edit(source);
        edit->addClip(first, {source->primaryTrack(), 0, 4 * second});
    }

    Model::Host host;
    StrategyScope dialog;
    const Timeline::Object* source = nullptr;
    const Timeline::Clip* first = nullptr;
};

} // namespace

TEST_F(TimelineShadowChangeTest, ShadowIsADeepCopyAndAQuizMakesItReadyInTheNextTurn)
{
    TimelineShadowChange change(source, Timeline::Object::Project);
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    const Timeline::Object* shadow = change.shadowTimeline();
    EXPECT_EQ(change.sourceTimeline(), source);
    ASSERT_NE(shadow, source);
    ASSERT_EQ(shadow->clips().size(), 1u);
    const Timeline::Clip* copy = shadow->clips().front();
    EXPECT_NE(copy, first);
    EXPECT_EQ(copy->name(), first->name());
    EXPECT_EQ(shadow->clipTiming(copy), source->clipTiming(first));

    change.addQuiz(std::make_unique<Quiz::Preset>());
    EXPECT_EQ(ready.count(), 0) << "readiness comes from the event loop";
    const auto quizzes = shadow->clipsByType(Timeline::Clip::Quiz);
    ASSERT_EQ(quizzes.size(), 1u) << "the request is served at once";
    EXPECT_EQ(shadow->clipTiming(*quizzes.begin()).position, 4 * second) << "(-1, 0) appends";
    spinTurns();
    EXPECT_EQ(ready.count(), 1);
    EXPECT_EQ(source->clips(), std::vector<const Timeline::Clip*>{first}) << "the source is never touched";
}

TEST_F(TimelineShadowChangeTest, OverlayThenFilesWaitsForTheFiles)
{
    auto opener = std::make_shared<ManualOpener>();
    host.setOpener(opener);
    const QString clip = QStringLiteral("/media/clip.mp4");

    TimelineShadowChange change(source, Timeline::Object::Project);
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    auto preset = std::make_unique<Overlay::Preset>();
    preset->name = "Hello";
    change.addOverlay(std::move(preset));
    change.addFiles({clip}, FileAdder::DragAndDrop);
    EXPECT_TRUE(change.filesPending());
    spinTurns();
    EXPECT_EQ(ready.count(), 0) << "the overlay's check finds files pending";

    ASSERT_TRUE(opener->answer(clip, opened()));
    spinTurns();
    EXPECT_EQ(ready.count(), 1);
    EXPECT_FALSE(change.filesPending());

    const Timeline::Object* shadow = change.shadowTimeline();
    const auto titles = shadow->clipsByType(Timeline::Clip::Title);
    ASSERT_EQ(titles.size(), 1u);
    const Timeline::Clip* title = *titles.begin();
    EXPECT_EQ(title->name(), Types::String("Hello"));
    EXPECT_EQ(shadow->clipTiming(title).track, shadow->titleTrack());
    ASSERT_TRUE(shadow->isSlave(title));
    EXPECT_EQ(shadow->masterOf(title)->name(), first->name()) << "placed over the first clip of the primary track";
    EXPECT_EQ(shadow->clipsByType(Timeline::Clip::Video).size(), 1u);
}

TEST_F(TimelineShadowChangeTest, ReadyOnlyWhenEveryBatchOfFilesFinished)
{
    auto opener = std::make_shared<ManualOpener>();
    host.setOpener(opener);
    TimelineShadowChange change(source, Timeline::Object::Project);
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    change.addFiles({QStringLiteral("/media/first.mp4")}, FileAdder::DragAndDrop);
    change.addImport("/media/second.mp4");
    change.addFiles({QStringLiteral("/media/third.mp4")}, FileAdder::DragAndDrop);
    const char* const order[] = {"/media/second.mp4", "/media/first.mp4", "/media/third.mp4"};
    for (const char* path : order) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(change.filesPending());
        spinTurns();
        EXPECT_EQ(ready.count(), 0);
        ASSERT_TRUE(opener->answer(QLatin1String(path), opened()));
    }
    spinTurns();
    EXPECT_EQ(ready.count(), 1);
    EXPECT_FALSE(change.filesPending());
    EXPECT_EQ(change.shadowTimeline()->clipsByType(Timeline::Clip::Video).size(), 3u);
}

TEST_F(TimelineShadowChangeTest, IntroGoesFirstAndMovesThePrimaryTrack)
{
    TimelineShadowChange change(source, Timeline::Object::Project);
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    change.addIntro("My holiday", "Summer 2026");
    spinTurns();
    EXPECT_EQ(ready.count(), 1);
    const Timeline::Object* shadow = change.shadowTimeline();
    const auto primary = shadow->clipsOnTrack(shadow->primaryTrack());
    ASSERT_EQ(primary.size(), 2u);
    EXPECT_EQ(primary[0]->type(), Timeline::Clip::Nested);
    EXPECT_EQ(shadow->clipTiming(primary[1]).position, Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION);
    const Timeline::Object* intro = primary[0]->nestedTimeline();
    ASSERT_NE(intro, nullptr);
    ASSERT_EQ(intro->clips().size(), 1u);
    const Overlay::Preset* texts = intro->clips().front()->overlay();
    ASSERT_NE(texts, nullptr);
    ASSERT_EQ(texts->items().size(), 2u);
    EXPECT_EQ(texts->items()[0].text(), "My holiday");
    EXPECT_EQ(texts->items()[1].text(), "Summer 2026");
}

TEST_F(TimelineShadowChangeTest, UnservedRequestsStillGiveReadinessAndFreeThePreset)
{
    host.setTimelineRequestHandler(nullptr);
    TimelineShadowChange change(source, Timeline::Object::Project);
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    bool destroyed = false;
    change.addOverlay(std::make_unique<TrackedPreset>(&destroyed));
    EXPECT_TRUE(destroyed) << "a preset nobody took dies on return";
    TestSupport::LogCapture log;
    change.addImport("/nowhere/clip.mp4");
    EXPECT_TRUE(log.containsError("no file was added"));
    EXPECT_FALSE(change.filesPending());
    spinTurns();
    EXPECT_EQ(ready.count(), 1) << "both checks fall in one turn";
    EXPECT_EQ(change.shadowTimeline()->clips().size(), 1u);
}

TEST_F(TimelineShadowChangeTest, FailingImportDoesNotBlockReadiness)
{
    TimelineShadowChange change(source, Timeline::Object::Project);
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    change.addImport("/nowhere/clip.mp4");
    EXPECT_TRUE(change.filesPending());
    ASSERT_TRUE(spinUntil([&] { return ready.count() > 0; }));
    spinTurns();
    EXPECT_EQ(ready.count(), 1);
    const auto videos = change.shadowTimeline()->clipsByType(Timeline::Clip::Video);
    ASSERT_EQ(videos.size(), 1u);
    EXPECT_TRUE((*videos.begin())->file()->isFailed());
}

TEST_F(TimelineShadowChangeTest, CopiesNobodyMergedGoWithTheChange)
{
    const Timeline::Clip* copy = nullptr;
    {
        TimelineShadowChange change(source, Timeline::Object::Project);
        copy = change.shadowTimeline()->clips().front();
        EXPECT_TRUE(host.owns(copy)) << "copies are records of the model";
    }
    EXPECT_FALSE(host.owns(copy));
    EXPECT_TRUE(host.owns(first));
}

// Closing the window mid-import drops the change while its files still open.
TEST_F(TimelineShadowChangeTest, DroppingTheChangeWhileFilesOpenIsSafe)
{
    class Announcements : public PubSub::Subscriber<Timeline::AllFilesProcessedNotification>
    {
    public:
        Announcements() { subscribeAll(typeid(Timeline::AllFilesProcessedNotification)); }
        int count = 0;

    private:
        void notify(const Timeline::AllFilesProcessedNotification&) override { ++count; }
    };
    const struct
    {
        const char* name;
        bool keepHandler; // the handler of the shadow outlives it
    } cases[] = {{"change and handler dropped", false}, {"handler kept", true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto opener = std::make_shared<ManualOpener>();
        host.setOpener(opener);
        Announcements announcements;
        dialog->questions.clear();
        auto change = std::make_unique<TimelineShadowChange>(source, Timeline::Object::Project);
        auto handler = std::make_unique<TimelineFileOpenHandler>(change->shadowTimeline());
        change->addFiles({QStringLiteral("/media/a.mp4"), QStringLiteral("/media/b.mp4")}, FileAdder::DragAndDrop);
        ASSERT_EQ(opener->pendingCount(), 2);
        change.reset();
        if (!c.keepHandler)
            handler.reset();
        EXPECT_TRUE(opener->answer(QStringLiteral("/media/a.mp4"), opened()));
        EXPECT_TRUE(opener->answer(QStringLiteral("/media/b.mp4"), failed({36})));
        spinTurns();
        EXPECT_EQ(announcements.count, 0) << "nothing is announced for the freed shadow";
        if (c.keepHandler) {
            EXPECT_EQ(handler->timeline(), nullptr);
            ASSERT_EQ(dialog->questions.size(), 1u) << "the failed file is still reported";
            EXPECT_FALSE(dialog->questions[0].allowKeep) << "no timeline holds its clip any more";
        } else {
            EXPECT_TRUE(dialog->questions.empty());
        }
    }
}

TEST(ReplaceNestedTimelineTest, MarksTheNameOnceAndKeepsThePosition)
{
    const struct
    {
        const char* oldName;
        const char* expected;
    } cases[] = {
        {"Scene", "* Scene"}, {"*Scene", "*Scene"}, {"* Scene", "* Scene"}, {"", "* "}, {"Scene*", "* Scene*"}};
    Model::Host host;
    const Timeline::Object* nested = host.addTimeline("Nested");
    const Timeline::Object* empty = host.addTimeline("Empty replacement");
    for (const auto& c : cases) {
        SCOPED_TRACE(c.oldName);
        const Timeline::Object* container = host.addTimeline("Container");
        const Timeline::Clip* clip =
            host.addClip(Timeline::Clip(Timeline::Clip::Nested).setNestedTimeline(nested).setName(c.oldName));
        host.edit(container)->addClip(clip, {container->primaryTrack(), 7 * second, 2 * second});

        ASSERT_EQ(replaceNestedTimeline(container, nested, empty), 1);
        ASSERT_EQ(container->clips().size(), 1u);
        const Timeline::Clip* replaced = container->clips().front();
        EXPECT_EQ(replaced->name().str(), c.expected);
        EXPECT_EQ(container->clipTiming(replaced).position, 7 * second);
        EXPECT_EQ(container->clipTiming(replaced).length, Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION)
            << "an empty replacement lasts as long as a title";
    }
}

TEST(ReplaceNestedTimelineTest, RefusesMissingTimelines)
{
    Model::Host host;
    const Timeline::Object* timeline = host.addTimeline();
    TestSupport::LogCapture log;
    EXPECT_EQ(replaceNestedTimeline(nullptr, timeline, timeline), 0);
    EXPECT_EQ(replaceNestedTimeline(timeline, nullptr, timeline), 0);
    EXPECT_EQ(replaceNestedTimeline(timeline, timeline, nullptr), 0);
    EXPECT_TRUE(log.containsError("replaceNestedTimeline"));
    EXPECT_EQ(replaceNestedTimeline(timeline, host.addTimeline(), host.addTimeline()), 0) << "nothing shows it";
}

TEST_F(TimelineShadowChangeTest, ProgressCountsEachFileOnceAsItOpensOrFails)
{
    auto opener = std::make_shared<ManualOpener>();
    host.setOpener(opener);
    TimelineShadowChange change(source, Timeline::Object::Project);
    QSignalSpy progress(&change, &TimelineShadowChange::filesProgress);
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    change.addFiles({QStringLiteral("/media/a.mp4"), QStringLiteral("/media/b.mp4")}, FileAdder::ImportPanel);
    change.addImport("/media/c.mp4");
    EXPECT_EQ(change.filesAdded(), 3);
    EXPECT_EQ(change.filesFinished(), 0);
    EXPECT_EQ(progress.count(), 0);

    ASSERT_TRUE(opener->answer(QStringLiteral("/media/b.mp4"), failed({1})));
    ASSERT_TRUE(opener->answer(QStringLiteral("/media/c.mp4"), opened()));
    spinTurns();
    ASSERT_EQ(progress.count(), 2);
    EXPECT_EQ(progress[0], (QVariantList{1, 3}));
    EXPECT_EQ(progress[1], (QVariantList{2, 3}));
    EXPECT_EQ(ready.count(), 0);

    ASSERT_TRUE(opener->answer(QStringLiteral("/media/a.mp4"), opened()));
    spinTurns();
    ASSERT_EQ(progress.count(), 3);
    EXPECT_EQ(progress[2], (QVariantList{3, 3}));
    EXPECT_EQ(ready.count(), 1);

    // A later batch raises the total; the count goes on.
    change.addFiles({QStringLiteral("/media/d.mp4"), QStringLiteral("/media/e.mp4")}, FileAdder::ImportPanel);
    EXPECT_EQ(change.filesAdded(), 5);
    ASSERT_TRUE(opener->answer(QStringLiteral("/media/e.mp4"), opened()));
    spinTurns();
    ASSERT_EQ(progress.count(), 4);
    EXPECT_EQ(progress[3], (QVariantList{4, 5}));
}

TEST_F(TimelineShadowChangeTest, AChangeDroppedWhileFilesOpenReportsNoProgress)
{
    auto opener = std::make_shared<ManualOpener>();
    host.setOpener(opener);
    auto change = std::make_unique<TimelineShadowChange>(source, Timeline::Object::Project);
    QSignalSpy progress(change.get(), &TimelineShadowChange::filesProgress);
    change->addFiles({QStringLiteral("/media/a.mp4")}, FileAdder::ImportPanel);
    change.reset();
    ASSERT_TRUE(opener->answer(QStringLiteral("/media/a.mp4"), opened()));
    spinTurns();
    EXPECT_EQ(progress.count(), 0);
}
