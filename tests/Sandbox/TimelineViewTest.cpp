// The sandbox timeline as a user drives it with the mouse, the keyboard and desktop drops: drags
// between tracks with and without snapping, Escape in the middle of a drag, files and folders
// dropped from the desktop, and drops that cannot land.

#include "BinView.h"
#include "SandboxFixture.h"

#include <Util/Import/MimeUtils.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QApplication>
#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

#include <optional>

using Sandbox::TimelineView;

namespace {

using SandboxTest::second;

void mouse(QWidget* viewport, QEvent::Type type, QPoint at, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const Qt::MouseButton button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
    const Qt::MouseButtons buttons = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, at, viewport->mapToGlobal(at), button, buttons, modifiers);
    QApplication::sendEvent(viewport, &event);
}

// What a drag from the desktop carries: the files, no origin.
std::unique_ptr<QMimeData> desktopFiles(const QStringList& paths)
{
    auto data = std::make_unique<QMimeData>();
    MimeUtils::packFiles(data.get(), paths);
    return data;
}

struct Dropped
{
    bool entered;
    bool moved;
    bool dropped;
};

// A drag that enters at `enterAt`, moves to `at` and is released there. As on a desktop, a
// drag whose enter was refused is never dropped.
Dropped sendDrop(QWidget* viewport, const QMimeData* data, QPoint at, std::optional<QPoint> enterAt = {})
{
    QDragEnterEvent enter(enterAt.value_or(at), Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    if (!enter.isAccepted())
        return {false, false, false};
    QDragMoveEvent move(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    QDropEvent drop(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &drop);
    return {true, move.isAccepted(), drop.isAccepted()};
}

class TimelineViewTest : public SandboxTest::WindowFixture
{
protected:
    const Timeline::ClipTiming& timingOf(const Timeline::Clip* clip) const { return project()->clipTiming(clip); }
    const Timeline::Clip* clipOf(const QString& path, Timeline::Track::Kind kind) const
    {
        for (const Timeline::Clip* clip : project()->clips())
            if (clip->file() && QFileInfo(clip->file()->path().toQString()).fileName() == QFileInfo(path).fileName()
                && timingOf(clip).track->kind() == kind)
                return clip;
        return nullptr;
    }
    // Bars at 0 on Video (their sound below), the tone at 1 s on Audio, the shape at 8 s on
    // Overlay video; the playhead at 6 s.
    void placeSamples()
    {
        import({sample(0), sample(1), sample(2)});
        ASSERT_TRUE(Scripted::dropFiles(viewport, {sample(0)}, pointAt(0, project()->primaryTrack())));
        ASSERT_TRUE(Scripted::dropFiles(viewport, {sample(2)}, pointAt(second, project()->tracks().back())));
        ASSERT_TRUE(Scripted::dropFiles(viewport, {sample(1)}, pointAt(8 * second, project()->extraVideoTrack())));
        bars = clipOf(sample(0), Timeline::Track::Video);
        sound = clipOf(sample(0), Timeline::Track::NativeAudio);
        tone = clipOf(sample(2), Timeline::Track::Audio);
        shape = clipOf(sample(1), Timeline::Track::ExtraVideo);
        ASSERT_TRUE(bars && sound && tone && shape);
        timeline->setPlayhead(6 * second);
    }

    const Timeline::Clip* bars = nullptr;
    const Timeline::Clip* sound = nullptr;
    const Timeline::Clip* tone = nullptr;
    const Timeline::Clip* shape = nullptr;
};

} // namespace

TEST_F(TimelineViewTest, dragsLandOnATrackOfTheClipsKindSnappingToEdgesAndThePlayheadUnlessAltIsHeld)
{
    placeSamples();
    // The shape's start a whole number of pixels from the bars' end, so rows land exactly.
    Timeline::ClipTiming start = timingOf(shape);
    start.position = timingOf(bars).end() + 4 * second;
    window->host().edit(project())->moveClip(shape, start);
    const double playheadX = TimelineView::xOf(6 * second);
    const double barsEndX = TimelineView::xOf(timingOf(bars).end());
    struct Row
    {
        const char* name;
        bool dragTone; // else the shape
        double startX; // where the dragged clip's start is taken
        int rows;      // tracks down (negative: up)
        Qt::KeyboardModifiers modifiers;
        Timeline::Track::Kind track;
        bool snapped;
        Types::Time position; // -1: where startX puts it, within a pixel
    };
    const Row rows[] = {
        {"7 px after the playhead snaps to it", false, playheadX + 7, 0, Qt::NoModifier, Timeline::Track::ExtraVideo,
         true, 6 * second},
        {"the same with Alt stays off it", false, playheadX + 7, 0, Qt::AltModifier, Timeline::Track::ExtraVideo, false,
         -1},
        {"10 px after the bars' end snaps to it", false, barsEndX + 10, 0, Qt::NoModifier, Timeline::Track::ExtraVideo,
         true, timingOf(bars).end()},
        {"20 px after the bars' end stays", false, barsEndX + 20, 0, Qt::NoModifier, Timeline::Track::ExtraVideo, false,
         -1},
        {"up two tracks onto Video, 4 px after the bars' end", false, barsEndX + 4, -2, Qt::NoModifier,
         Timeline::Track::Video, true, timingOf(bars).end()},
        {"a picture held over the Titles track stays on a picture track", false, playheadX + 80, -1, Qt::AltModifier,
         Timeline::Track::ExtraVideo, false, -1},
        {"the tone held over the Video track goes to the nearest sound track, its end on the bars' end", true,
         TimelineView::xOf(second), -4, Qt::NoModifier, Timeline::Track::NativeAudio, true,
         timingOf(bars).end() - timingOf(tone).length},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Timeline::Clip* clip = row.dragTone ? tone : shape;
        const Timeline::ClipTiming before = timingOf(clip);
        QSignalSpy ended(timeline, &TimelineView::dragEnded);
        const QPoint from = timeline->clipPoint(clip, 0.5);
        const QPoint by(int(std::lround(row.startX - TimelineView::xOf(before.position))),
                        row.rows * int(TimelineView::trackHeight) + (row.rows < 0 ? 6 : 0));
        Scripted::drag(viewport, from, from + by, row.modifiers);
        ASSERT_EQ(ended.count(), 1);
        EXPECT_EQ(ended[0][0].value<const Timeline::Clip*>(), clip);
        EXPECT_EQ(ended[0][2].toBool(), row.snapped);
        EXPECT_EQ(timingOf(clip).track->kind(), row.track);
        if (row.position >= 0)
            EXPECT_EQ(timingOf(clip).position, row.position);
        else
            EXPECT_NEAR(double(timingOf(clip).position), double(TimelineView::timeOf(row.startX)),
                        second / TimelineView::pixelsPerSecond);
        window->host().edit(project())->moveClip(clip, before);
    }

    // Dragging the bars moves their sound by the same amount.
    const QPoint from = timeline->clipPoint(bars, 0.5);
    Scripted::drag(viewport, from, from + QPoint(int(TimelineView::pixelsPerSecond) * 3, 0), Qt::AltModifier);
    EXPECT_EQ(timingOf(bars).position, 3 * second);
    EXPECT_EQ(timingOf(sound).position, 3 * second);
    window->undoStack().undo();
    EXPECT_EQ(timingOf(sound).position, 0);

    // Delete (in the menu of the clip pressed with the right button) takes the bars off with
    // their sound; Undo puts them back, tied again.
    QTest::mousePress(viewport, Qt::RightButton, {}, timeline->clipPoint(bars, 0.5));
    ASSERT_EQ(timeline->selectedClip(), bars);
    ASSERT_TRUE(timeline->removeSelected());
    EXPECT_FALSE(project()->contains(bars) || project()->contains(sound));
    EXPECT_FALSE(timeline->removeSelected()) << "nothing is selected any more";
    window->undoStack().undo();
    EXPECT_EQ(project()->findNativeAudio(bars), sound);

    // Their end dragged a second earlier trims the bars and their sound; Undo lengthens them.
    const Types::Time length = timingOf(bars).length;
    const QPoint end = timeline->clipPoint(bars, 1.0) - QPoint(2, 0);
    Scripted::drag(viewport, end, end - QPoint(int(TimelineView::pixelsPerSecond), 0));
    EXPECT_NEAR(double(timingOf(bars).length), double(length - second), 2.0 * second / TimelineView::pixelsPerSecond);
    EXPECT_EQ(timingOf(sound).length, timingOf(bars).length);
    window->undoStack().undo();
    EXPECT_EQ(timingOf(bars).length, length);
}

TEST_F(TimelineViewTest, escapeInTheMiddleOfADragPutsTheClipAndItsSoundBack)
{
    placeSamples();
    const Project::Document before = window->document();
    const QPoint barsAt = timeline->clipPoint(bars, 0.5);
    const QPoint soundAt = timeline->clipPoint(sound, 0.5);
    QSignalSpy ended(timeline, &TimelineView::dragEnded);
    QSignalSpy changed(timeline, &TimelineView::timelineChanged);
    mouse(viewport, QEvent::MouseButtonPress, barsAt);
    for (int step = 1; step <= 4; ++step)
        mouse(viewport, QEvent::MouseMove, barsAt + QPoint(50 * step, 23 * step));
    // On its way down to Overlay video, the bars' sound following on its own track.
    ASSERT_TRUE(timeline->dragging());
    EXPECT_EQ(timeline->clipPoint(bars, 0.5).y(), pointAt(0, project()->extraVideoTrack()).y());
    EXPECT_EQ(timeline->clipPoint(sound, 0.5), soundAt + QPoint(200, 0));

    QTest::keyClick(timeline, Qt::Key_Escape);
    EXPECT_FALSE(timeline->dragging());
    EXPECT_EQ(timeline->clipPoint(bars, 0.5), barsAt);
    EXPECT_EQ(timeline->clipPoint(sound, 0.5), soundAt);
    ASSERT_EQ(ended.count(), 1);
    EXPECT_FALSE(ended[0][1].toBool());
    // The rest of the gesture does nothing.
    mouse(viewport, QEvent::MouseMove, barsAt + QPoint(300, 0));
    mouse(viewport, QEvent::MouseButtonRelease, barsAt + QPoint(300, 0));
    EXPECT_EQ(timeline->clipPoint(bars, 0.5), barsAt);
    EXPECT_EQ(ended.count(), 1);
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(window->document(), before);
}

TEST_F(TimelineViewTest, aFileOrAFolderFromTheDesktopLandsAtTheDropTimeAndJoinsTheBin)
{
    QTemporaryDir work;
    const QString folder = work.filePath(QStringLiteral("drop"));
    QDir().mkpath(folder + QStringLiteral("/.hidden"));
    ASSERT_TRUE(QFile::copy(sample(3), folder + QStringLiteral("/b2.png")));
    ASSERT_TRUE(QFile::copy(sample(2), folder + QStringLiteral("/b10.wav")));
    ASSERT_TRUE(QFile::copy(sample(4), folder + QStringLiteral("/broken.mp4")));
    ASSERT_TRUE(QFile::copy(sample(1), folder + QStringLiteral("/.hidden/skipped.mkv")));
    QSignalSpy landed(timeline, &TimelineView::filesLanded);

    // One file on Overlay video at 3 s.
    const auto file = desktopFiles({sample(1)});
    const Dropped one = sendDrop(viewport, file.get(), pointAt(3 * second, project()->extraVideoTrack()));
    EXPECT_TRUE(one.entered && one.moved && one.dropped);
    ASSERT_TRUE(Scripted::waitFor([&] { return landed.count() == 1; }));
    EXPECT_EQ(landed[0][0].toInt(), 1);
    const Timeline::Clip* shape = clipOf(sample(1), Timeline::Track::ExtraVideo);
    ASSERT_NE(shape, nullptr);
    EXPECT_EQ(timingOf(shape).position, 3 * second);
    EXPECT_TRUE(dialogs->failedFilesQuestions.empty());

    // A folder on Video at 2 s: its files in natural order, each on a track of its kind, the
    // hidden one left out, one question about the broken one.
    const auto tree = desktopFiles({folder});
    const Dropped all = sendDrop(viewport, tree.get(), pointAt(2 * second, project()->primaryTrack()));
    EXPECT_TRUE(all.entered && all.moved && all.dropped);
    ASSERT_TRUE(Scripted::waitFor([&] { return landed.count() == 2; }));
    EXPECT_EQ(landed[1][0].toInt(), 3);
    ASSERT_EQ(dialogs->failedFilesQuestions.size(), 1u);
    EXPECT_TRUE(dialogs->failedFilesQuestions[0].allowKeep);
    const Timeline::Clip* still = clipOf(QStringLiteral("b2.png"), Timeline::Track::Video);
    const Timeline::Clip* wave = clipOf(QStringLiteral("b10.wav"), Timeline::Track::Audio);
    const Timeline::Clip* broken = clipOf(QStringLiteral("broken.mp4"), Timeline::Track::Video);
    ASSERT_TRUE(still && wave && broken);
    EXPECT_EQ(timingOf(still).position, 2 * second);
    EXPECT_EQ(timingOf(wave).position, 2 * second);
    EXPECT_GT(timingOf(broken).position, timingOf(still).position);
    EXPECT_EQ(project()->clips().size(), 4u);

    // Every file that landed is in the bin, once.
    QStringList inBin;
    for (const Media::File* f : window->bin()->files())
        inBin << QFileInfo(f->path().toQString()).fileName();
    inBin.sort();
    EXPECT_EQ(inBin, (QStringList{QStringLiteral("b10.wav"), QStringLiteral("b2.png"), QStringLiteral("broken.mp4"),
                                  QFileInfo(sample(1)).fileName()}));
}

TEST_F(TimelineViewTest, aDropThatCannotLandIsRefusedAndChangesNothing)
{
    placeSamples();
    const Project::Document before = window->document();
    const std::size_t binFiles = window->bin()->files().size();
    auto text = std::make_unique<QMimeData>();
    text->setText(QStringLiteral("just words"));
    struct Row
    {
        const char* name;
        std::unique_ptr<QMimeData> data;
        const Timeline::Track* track;
        bool entersOverVideo;
        QString reason;
    };
    Row rows[] = {
        {"a desktop file on the Titles track", desktopFiles({sample(3)}), project()->titleTrack(), true,
         QStringLiteral("Media cannot go on this track.")},
        {"a bin file on the video sound track", std::unique_ptr<QMimeData>(Sandbox::BinView::mimeDataFor({sample(0)})),
         project()->nativeAudioTrack(), true, QStringLiteral("Media cannot go on this track.")},
        {"text", std::move(text), project()->primaryTrack(), false,
         QStringLiteral("The editor cannot use what is dragged.")},
    };
    const QPoint video = pointAt(2 * second, project()->primaryTrack());
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QSignalSpy refused(timeline, &TimelineView::dropRefused);
        QSignalSpy status(timeline, &TimelineView::dropStatus);
        QSignalSpy placed(timeline, &TimelineView::filesDropped);
        // Entered over the Video track, moved to where it cannot land, released there.
        const Dropped result = sendDrop(viewport, row.data.get(), pointAt(2 * second, row.track), video);
        EXPECT_EQ(result.entered, row.entersOverVideo);
        EXPECT_FALSE(result.moved);
        EXPECT_FALSE(result.dropped);
        ASSERT_GE(status.count(), 1);
        EXPECT_EQ(status[0][0].toString(), row.reason);
        EXPECT_EQ(refused.count(), row.entersOverVideo ? 1 : 0);
        if (!refused.isEmpty()) {
            EXPECT_EQ(refused[0][0].toString(), row.reason);
        }
        EXPECT_EQ(placed.count(), 0);
    }
    Scripted::waitFor([] { return false; }, 100); // nothing is opening in the background either
    EXPECT_EQ(window->document(), before);
    EXPECT_EQ(window->bin()->files().size(), binFiles);
    EXPECT_TRUE(dialogs->failedFilesQuestions.empty());
}

TEST_F(TimelineViewTest, aFolderDroppedOnTheBinGetsATileForEachFileAndTilesDragOutAsBinFiles)
{
    QTemporaryDir work;
    ASSERT_TRUE(QFile::copy(sample(2), work.filePath(QStringLiteral("tone.wav"))));
    ASSERT_TRUE(QFile::copy(sample(4), work.filePath(QStringLiteral("broken.mp4"))));
    auto* bin = window->bin();
    QSignalSpy landed(window.get(), &Sandbox::SandboxWindow::importFinished);
    const auto tree = desktopFiles({work.path()});
    const Dropped result = sendDrop(bin->viewport(), tree.get(), QPoint(40, 40));
    EXPECT_TRUE(result.entered && result.moved && result.dropped);
    // Imported as the window imports: outside actions wait meanwhile.
    EXPECT_TRUE(window->actions().isLocked());
    ASSERT_TRUE(Scripted::waitFor([&] { return landed.count() == 1; }));
    EXPECT_FALSE(window->actions().isLocked());
    EXPECT_EQ(landed[0][0].toInt(), 1);
    EXPECT_EQ(landed[0][1].toInt(), 1);
    EXPECT_EQ(dialogs->failedFilesQuestions.size(), 1u);
    ASSERT_EQ(bin->files().size(), 2u);
    for (const Media::File* file : bin->files())
        EXPECT_EQ(bin->fileAt(bin->tilePoint(file)), file);
    EXPECT_TRUE(project()->clips().empty()); // the bin's drops leave the project alone

    // The same folder again adds no second tile for a path already shown.
    sendDrop(bin->viewport(), tree.get(), QPoint(40, 40));
    ASSERT_TRUE(Scripted::waitFor([&] { return landed.count() == 2; }));
    EXPECT_EQ(bin->files().size(), 2u);

    // What the bin's tiles carry when dragged out: the files, marked as coming from the bin.
    std::unique_ptr<QMimeData> data(Sandbox::BinView::mimeDataFor({sample(3)}));
    EXPECT_EQ(MimeUtils::extractFiles(data.get(), {QStringLiteral("png")}), QStringList{sample(3)});
    EXPECT_EQ(MimeUtils::mimeDragAsrc(data.get()), QStringLiteral("bin"));
}
