#include "SessionFixture.h"

#include <Util/Editor/ModelEditor.h>
#include <Util/Editor/SceneEditor.h>

#include <TestSupport.h>

#include <QCoreApplication>
#include <QGraphicsScene>
#include <QSignalSpy>

#include <gmock/gmock.h>

#include <memory>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Runs everything posted so far, as one turn of the event loop would.
void runEventLoopTurn() { QCoreApplication::sendPostedEvents(); }

// A clip edited on the scene: the frames come from a delegate that notes what it is asked
// for and draws a frame of 64 x 36.
class SceneEditorTest : public SessionFixture
{
protected:
    SceneEditorTest()
    {
        editor = std::make_unique<SceneEditor>(panel, host.editor());
        editor->setSceneHelper(&helper);
        editor->setSceneSizeDelegate([this](const Editor::Object* session, const Timeline::Clip* edited) {
            journal.push_back(std::string("size asked")
                              + (edited == clip && session == host.editor() ? " for the clip" : ""));
            return QSizeF(1280, 720);
        });
        editor->setBackgroundDelegate([this](const Timeline::Clip* edited, Types::Time time) {
            journal.push_back("frame " + std::to_string(time) + (edited == clip ? " of the clip" : ""));
            auto image = std::make_shared<Types::Image>(64, 36, QImage::Format_RGB32);
            image->fill(Qt::green);
            return std::shared_ptr<const Types::Image>(image);
        });
        note(editor.get(), &AbstractEditor::load, "scene editor loaded");
        note(editor.get(), &AbstractEditor::reset, "scene editor reset");
        note(editor->sceneClient(), &ExclusiveClient::released, "scene let go");
        QObject::connect(&helper, &SceneHelper::sceneBackgroundChanged, &listenerContext, [this](const QPixmap& p) {
            journal.push_back("background " + std::to_string(p.width()) + "x" + std::to_string(p.height()));
        });
        QObject::connect(editor.get(), &SceneEditor::sceneRectChanged, &listenerContext, [this](const QRectF& r) {
            journal.push_back("scene " + std::to_string(int(r.width())) + "x" + std::to_string(int(r.height())));
        });
    }

    void editTheClip()
    {
        host.beginSession(timeline, clip);
        runEventLoopTurn();
        journal.clear();
    }

    SceneHelper helper;
    ModelEditor panel{[](const auto&, const auto*) { return true; }, nullptr};
    std::unique_ptr<SceneEditor> editor;
};

// Loading sizes the scene before passing the step on; resizing redraws the background once per
// turn of the loop.
TEST_F(SceneEditorTest, LoadingSizesTheSceneAndResizingRedrawsOncePerTurnOfTheLoop)
{
    editor->enableBackgroundPreview(true);
    host.beginSession(timeline, clip);
    EXPECT_THAT(journal, ElementsAre("size asked for the clip", "scene 1280x720", "scene editor loaded"));
    EXPECT_EQ(helper.scene()->sceneRect(), QRectF(0, 0, 1280, 720));
    runEventLoopTurn();
    journal.clear();

    helper.scene()->setSceneRect(0, 0, 640, 360);
    helper.scene()->setSceneRect(0, 0, 320, 180);
    editor->scheduleBackground();
    EXPECT_THAT(journal, ElementsAre("scene 640x360", "scene 320x180"));

    runEventLoopTurn();
    EXPECT_THAT(journal, ElementsAre("scene 640x360", "scene 320x180", "frame 0 of the clip", "background 320x180"));

    journal.clear();
    runEventLoopTurn();
    EXPECT_THAT(journal, IsEmpty());
}

// A blocked editor asks for no redraw; unblocked, it takes the frame at the edit position.
TEST_F(SceneEditorTest, ABlockedEditorAsksForNoRedrawAndTheFrameIsTakenAtTheEditPosition)
{
    editor->enableBackgroundPreview(true);
    editTheClip();
    editor->blockBackgroundUpdates(true);

    editor->scheduleBackground();
    runEventLoopTurn();
    EXPECT_THAT(journal, IsEmpty());

    editor->blockBackgroundUpdates(false);
    editor->scheduleBackground();
    runEventLoopTurn();
    EXPECT_THAT(journal, ElementsAre("frame 0 of the clip", "background 1280x720"));

    journal.clear();
    host.setEditPosition(ClipStart + 250);
    editor->scheduleBackground();
    runEventLoopTurn();
    EXPECT_THAT(journal, ElementsAre("frame 250 of the clip", "background 1280x720"));
    EXPECT_EQ(helper.sceneBackground().size(), QSize(1280, 720));
}

TEST_F(SceneEditorTest, NothingIsDrawnOutsideASessionWhileDisabledOrJustByEnabling)
{
    editor->enableBackgroundPreview(true);
    editor->scheduleBackground();
    runEventLoopTurn();
    EXPECT_THAT(journal, IsEmpty()) << "outside a session";

    editor->enableBackgroundPreview(false);
    editTheClip();
    helper.scene()->setSceneRect(0, 0, 640, 360);
    runEventLoopTurn();
    EXPECT_THAT(journal, ElementsAre("scene 640x360")) << "disabled";

    journal.clear();
    editor->enableBackgroundPreview(true);
    runEventLoopTurn();
    EXPECT_THAT(journal, IsEmpty()) << "only enabled";
    EXPECT_TRUE(helper.sceneBackground().isNull());
}

TEST_F(SceneEditorTest, ABackgroundClearedBySomebodyElseIsDrawnAgain)
{
    editor->enableBackgroundPreview(true);
    editTheClip();
    editor->scheduleBackground();
    runEventLoopTurn();
    journal.clear();

    helper.setSceneBackground(QPixmap());
    runEventLoopTurn();

    EXPECT_THAT(journal, ElementsAre("background 0x0", "frame 0 of the clip", "background 1280x720"));
}

// Resetting passes the step on, then lets the scene go; so does a load with nothing to edit.
TEST_F(SceneEditorTest, ResettingOrALoadWithNothingToEditLetsTheSceneGo)
{
    editTheClip();
    ASSERT_TRUE(editor->sceneClient()->acquire());
    host.resetSession();
    EXPECT_THAT(journal, ElementsAre("scene editor reset", "scene let go"));

    editTheClip();
    ASSERT_TRUE(editor->sceneClient()->acquire());
    host.applySession();
    journal.clear();
    host.loadSession();
    // The session is over (inactive) though it still names its clip.
    EXPECT_THAT(journal, ElementsAre("size asked for the clip", "scene let go", "scene editor loaded"));
}

TEST_F(SceneEditorTest, AnotherHelperTakesOverTheScene)
{
    SceneHelper other;
    QSignalSpy changed(editor.get(), &SceneEditor::sceneHelperChanged);

    editor->setSceneHelper(&other);
    editor->setSceneHelper(&other);

    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.at(0).at(0).value<SceneHelper*>(), &helper);
    EXPECT_EQ(changed.at(0).at(1).value<SceneHelper*>(), &other);
    EXPECT_EQ(editor->sceneClient()->service(), other.service());
    EXPECT_EQ(editor->sceneHelper(), &other);

    helper.scene()->setSceneRect(0, 0, 10, 10);
    EXPECT_THAT(journal, IsEmpty());
    other.scene()->setSceneRect(0, 0, 20, 20);
    EXPECT_THAT(journal, ElementsAre("scene 20x20"));
}

TEST_F(SceneEditorTest, AVideoOfAnotherSizeMakesTheHeldSceneUnavailable)
{
    editTheClip();
    // Within the relative tolerance the scene still fits the video.
    helper.scene()->setSceneRect(0, 0, 1280 + 1e-10, 720 - 1e-10);
    journal.clear();
    auto video = std::make_unique<Media::Video>();
    video->width = 1280;
    video->height = 720;
    const Media::Video* record = host.add(std::move(video));
    editor->setVideo(record);
    note(editor.get(), &SceneEditor::sceneBecomeUnavailable, "scene unavailable");

    host.edit(record)->codec = "h264";
    EXPECT_THAT(journal, IsEmpty()) << "same size, scene not held";

    ASSERT_TRUE(editor->sceneClient()->acquire());
    host.edit(record)->codec = "vp9";
    EXPECT_THAT(journal, IsEmpty()) << "same size, scene held";

    host.edit(record)->width = 1920;
    EXPECT_THAT(journal, ElementsAre("scene unavailable"));

    editor->sceneClient()->finalize();
    journal.clear();
    host.edit(record)->height = 1080;
    EXPECT_THAT(journal, IsEmpty()) << "no longer held: nobody to tell";
}

TEST_F(SceneEditorTest, WithoutABackgroundDelegateTheLoopLogsAndADirectCallThrows)
{
    TestSupport::LogCapture log;
    editor->setBackgroundDelegate(nullptr);
    editor->enableBackgroundPreview(true);
    editTheClip();

    editor->scheduleBackground();
    runEventLoopTurn();
    EXPECT_TRUE(log.containsError("no background delegate"));

    EXPECT_THROW(editor->updateBackground(), std::bad_function_call);

    host.resetSession();
    editor->setSceneSizeDelegate(nullptr);
    EXPECT_THROW(host.beginSession(timeline, clip), std::bad_function_call) << "no size delegate";
}

TEST_F(SceneEditorTest, WithoutAHelperNothingBreaks)
{
    editor->setSceneHelper(nullptr);
    editor->enableBackgroundPreview(true);
    editor->setVideo(nullptr);

    host.beginSession(timeline, clip);
    editor->scheduleBackground();
    runEventLoopTurn();

    EXPECT_THAT(journal, ElementsAre("size asked for the clip", "scene editor loaded", "frame 0 of the clip"));
    EXPECT_EQ(editor->sceneClient()->service(), nullptr);
}

TEST_F(SceneEditorTest, AnEditorDestroyedWithARedrawPendingDrawsNothing)
{
    editor->enableBackgroundPreview(true);
    editTheClip();
    editor->scheduleBackground();

    editor.reset();
    runEventLoopTurn();

    EXPECT_THAT(journal, IsEmpty());
}

class ClipEditTimeTest : public SessionFixture
{
};

// clipEditTime for a clip from 1000 to 3000, by the recorded edit position.
TEST_F(ClipEditTimeTest, StaysWithinTheClip)
{
    const struct
    {
        const char* name;
        std::optional<Types::Time> position;
        Types::Time expected;
    } rows[] = {
        {"no position", std::nullopt, 0}, {"at start", 1000, 0},  {"inside", 1500, 500},
        {"before start", 10, 0},          {"at end", 3000, 1999}, {"past end", 99999, 1999},
    };
    host.beginSession(timeline, clip);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        host.setEditPosition(row.position);
        EXPECT_EQ(SceneEditor::clipEditTime(clip), row.expected);
    }
}

TEST_F(ClipEditTimeTest, AClipOfZeroLengthOrNoneGivesZeroAndAnotherClipsPositionIsNotUsed)
{
    const Timeline::Clip* empty = host.addClip(Timeline::Clip(Timeline::Clip::Video));
    host.edit(timeline)->addClip(empty, Timeline::ClipTiming(timeline->primaryTrack(), 5000, 0));
    host.beginSession(timeline, empty);
    host.setEditPosition(5000);
    EXPECT_EQ(SceneEditor::clipEditTime(empty), 0);
    EXPECT_EQ(SceneEditor::clipEditTime(nullptr), 0);

    host.resetSession();
    const Timeline::Clip* other = host.addClip(Timeline::Clip(Timeline::Clip::Video));
    host.edit(timeline)->addClip(other, Timeline::ClipTiming(timeline->primaryTrack(), 4000, 1000));
    host.beginSession(timeline, other);
    host.setEditPosition(4500);

    EXPECT_EQ(SceneEditor::clipEditTime(other), 500);
    EXPECT_EQ(SceneEditor::clipEditTime(clip), 0);
}

} // namespace
