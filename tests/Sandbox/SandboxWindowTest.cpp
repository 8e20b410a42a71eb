// The sandbox window as a user drives it: imports with a failing file, drops from the bin,
// drags with and without snapping, an aborted drag, save and open, and the search for a moved
// file, all through events on the real widgets.

#include "BinView.h"
#include "SandboxFixture.h"

#include "Panels.h"

#include <Util/Dialog/MissingFilesDialog/MissingFilesDialog.h>
#include <Util/Filesystem.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Interfaces/EditorSettings.h>

#include <MediaEngine/Probe.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDateTime>
#include <QDir>
#include <QDoubleSpinBox>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>

#include <gtest/gtest.h>

using Sandbox::SandboxWindow;
using Sandbox::TimelineView;

namespace {

using SandboxTest::second;

class SandboxWindowTest : public SandboxTest::WindowFixture
{
protected:
    Types::Time positionOf(const Timeline::Clip* clip) const { return project()->clipTiming(clip).position; }

    // Drops a bin file on the timeline; the clip it made.
    const Timeline::Clip* drop(const QString& path, Types::Time time, const Timeline::Track* track)
    {
        const std::size_t before = project()->clips().size();
        EXPECT_TRUE(Scripted::dropFiles(viewport, {path}, pointAt(time, track)));
        return project()->clips().size() > before ? project()->clips()[before] : nullptr;
    }
};

} // namespace

TEST_F(SandboxWindowTest, importWithAFailingFileAsksOneQuestionAndGreysTheFileInTheBin)
{
    import(SandboxTest::samples());
    ASSERT_EQ(dialogs->failedFilesQuestions.size(), 1u);
    EXPECT_TRUE(dialogs->failedFilesQuestions[0].allowKeep);
    ASSERT_EQ(window->bin()->files().size(), 5u);
    int failed = 0;
    for (const Media::File* file : window->bin()->files())
        failed += file->isFailed() ? 1 : 0;
    EXPECT_EQ(failed, 1);
    EXPECT_TRUE(window->binFile(sample(4))->isFailed());
    // Thumbnails for the two videos and the still; none for the tone or the broken file.
    EXPECT_TRUE(Scripted::waitFor([&] { return window->bin()->thumbnailCount() == 3; }));

    // A second import of the good files alone asks nothing more.
    import({sample(3)});
    EXPECT_EQ(dialogs->failedFilesQuestions.size(), 1u);
}

TEST_F(SandboxWindowTest, aDropFromTheBinPutsTheClipAtTheDropTimeOnATrackOfItsKind)
{
    import({sample(0), sample(1), sample(2)});
    struct Row
    {
        const char* name;
        int sample;
        Types::Time time;
        const Timeline::Track* dropTrack;
        Timeline::Track::Kind expectedKind;
    };
    const Row rows[] = {
        {"video on the main track", 0, 2 * second, project()->primaryTrack(), Timeline::Track::Video},
        {"video on the overlay track", 1, 9 * second, project()->extraVideoTrack(), Timeline::Track::ExtraVideo},
        {"sound dropped on a picture track goes to the audio track", 2, 3 * second, project()->primaryTrack(),
         Timeline::Track::Audio},
        {"video dropped on the audio track goes to the main track", 1, 12 * second, project()->tracks().back(),
         Timeline::Track::Video},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const Timeline::Clip* clip = drop(sample(row.sample), row.time, row.dropTrack);
        ASSERT_NE(clip, nullptr);
        EXPECT_EQ(positionOf(clip), row.time);
        EXPECT_EQ(project()->clipTiming(clip).track->kind(), row.expectedKind);
        EXPECT_EQ(timeline->selectedClip(), clip);
    }
    // The bars' sound lies under them on the native audio track, tied to them.
    const Timeline::Clip* bars = project()->clips()[0];
    const Timeline::Clip* sound = project()->findNativeAudio(bars);
    ASSERT_NE(sound, nullptr);
    EXPECT_EQ(positionOf(sound), 2 * second);
}

TEST_F(SandboxWindowTest, anEdgeSnapsWithinTenPixelsUnlessAltIsHeldAndTheLinkedSoundFollows)
{
    import({sample(0), sample(1)});
    const Timeline::Clip* bars = drop(sample(0), 0, project()->primaryTrack());
    const Timeline::Clip* shape = drop(sample(1), 8 * second, project()->extraVideoTrack());
    ASSERT_TRUE(bars && shape);
    const Types::Time barsEnd = project()->clipTiming(bars).end();
    struct Row
    {
        const char* name;
        double pixelsAfterEdge;
        Qt::KeyboardModifiers modifiers;
        bool snaps;
    };
    const Row rows[] = {
        {"6 px after the edge snaps", 6, Qt::NoModifier, true},
        {"10 px after the edge snaps", 10, Qt::NoModifier, true},
        {"6 px after the edge with Alt stays", 6, Qt::AltModifier, false},
        {"20 px after the edge stays", 20, Qt::NoModifier, false},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        // From about 8 s each time, the shape's start is taken near the end of the bars.
        QSignalSpy ended(timeline, &TimelineView::dragEnded);
        const double dx = TimelineView::xOf(barsEnd) + row.pixelsAfterEdge - TimelineView::xOf(positionOf(shape));
        const QPoint from = timeline->clipPoint(shape, 0.5);
        const Types::Time before = positionOf(shape);
        Scripted::drag(viewport, from, from + QPoint(int(std::lround(dx)), 0), row.modifiers);
        ASSERT_EQ(ended.count(), 1);
        EXPECT_EQ(ended[0][2].toBool(), row.snaps);
        if (row.snaps)
            EXPECT_EQ(positionOf(shape), barsEnd);
        else
            EXPECT_NEAR(double(positionOf(shape)),
                        double(TimelineView::timeOf(TimelineView::xOf(barsEnd) + row.pixelsAfterEdge)),
                        second / TimelineView::pixelsPerSecond);
        // Back to 8 s for the next row, with Alt so that nothing snaps.
        const QPoint back = timeline->clipPoint(shape, 0.5);
        Scripted::drag(
            viewport, back,
            back + QPoint(int(std::lround(TimelineView::xOf(before) - TimelineView::xOf(positionOf(shape)))), 0),
            Qt::AltModifier);
    }

    // Dragging the bars moves their sound by the same amount.
    const Timeline::Clip* sound = project()->findNativeAudio(bars);
    const QPoint from = timeline->clipPoint(bars, 0.5);
    Scripted::drag(viewport, from, from + QPoint(int(TimelineView::pixelsPerSecond) * 3, 0), Qt::AltModifier);
    EXPECT_EQ(positionOf(bars), 3 * second);
    EXPECT_EQ(positionOf(sound), 3 * second);
}

TEST_F(SandboxWindowTest, escapeDuringADragLeavesTheTimelineAsItWas)
{
    import({sample(0)});
    const Timeline::Clip* bars = drop(sample(0), second, project()->primaryTrack());
    ASSERT_NE(bars, nullptr);
    const Project::Document before = window->document();
    QSignalSpy ended(timeline, &TimelineView::dragEnded);
    QSignalSpy changed(timeline, &TimelineView::timelineChanged);
    const QPoint from = timeline->clipPoint(bars, 0.5);
    Scripted::drag(viewport, from, from + QPoint(200, 2 * int(TimelineView::trackHeight)), Qt::NoModifier, true,
                   timeline);
    ASSERT_EQ(ended.count(), 1);
    EXPECT_FALSE(ended[0][1].toBool());
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(window->document(), before);
    // The picture is back too: the clip is drawn where it was.
    EXPECT_EQ(timeline->clipPoint(bars, 0.5), from);
}

TEST_F(SandboxWindowTest, saveThenOpenGivesTheSameTimelineAndBin)
{
    import({sample(0), sample(2), sample(3)});
    drop(sample(0), second, project()->primaryTrack());
    drop(sample(3), 0, project()->extraVideoTrack());
    drop(sample(2), 2 * second, project()->tracks().back());
    const QString path = settings.folder() + QStringLiteral("/same.dscproj");
    ASSERT_TRUE(window->saveProjectAs(path));
    const Project::Document saved = window->document();
    EXPECT_FALSE(window->isModified());

    window->newProject();
    EXPECT_TRUE(project()->clips().empty());
    QSignalSpy loaded(window.get(), &SandboxWindow::projectLoaded);
    ASSERT_TRUE(window->openProject(path));
    ASSERT_TRUE(Scripted::waitFor([&] { return loaded.count() == 1; }));
    EXPECT_EQ(window->document(), saved);
    EXPECT_EQ(window->projectPath(), Filesystem::cleanPath(path));
    EXPECT_EQ(Project::recentProjects().value(0).path, Filesystem::cleanPath(path));
    EXPECT_TRUE(dialogs->warnings.empty());
}

TEST_F(SandboxWindowTest, aMovedFileIsFoundByTheMissingFilesSearchWhenTheProjectOpens)
{
    QTemporaryDir work;
    const QString tone = work.filePath(QStringLiteral("tone.wav"));
    ASSERT_TRUE(QFile::copy(sample(2), tone));
    import({tone});
    drop(tone, second, project()->tracks().back());
    const QString path = work.filePath(QStringLiteral("moved.dscproj"));
    ASSERT_TRUE(window->saveProjectAs(path));
    QDir().mkpath(work.filePath(QStringLiteral("later/deeper")));
    const QString moved = work.filePath(QStringLiteral("later/deeper/tone.wav"));
    ASSERT_TRUE(QFile::rename(tone, moved));

    int searched = 0;
    QTimer driver;
    driver.setInterval(10);
    QObject::connect(&driver, &QTimer::timeout, [&] {
        auto* dialog = qobject_cast<MissingFilesDialog*>(QApplication::activeModalWidget());
        if (!dialog || searched)
            return;
        ++searched;
        EXPECT_EQ(dialog->remainingFiles(), QStringList{Filesystem::cleanPath(tone)});
        QObject::connect(dialog, &MissingFilesDialog::searchFinished, dialog, &QDialog::accept);
        dialog->searchFolder(work.filePath(QStringLiteral("later")));
    });
    driver.start();
    QSignalSpy loaded(window.get(), &SandboxWindow::projectLoaded);
    ASSERT_TRUE(window->openProject(path));
    ASSERT_TRUE(Scripted::waitFor([&] { return loaded.count() == 1; }));
    EXPECT_EQ(searched, 1);
    ASSERT_EQ(project()->clips().size(), 1u);
    const Timeline::Clip* clip = project()->clips()[0];
    EXPECT_EQ(clip->file()->path().toQString(), Filesystem::cleanPath(moved));
    EXPECT_FALSE(clip->isBroken());
    EXPECT_EQ(positionOf(clip), second);
    EXPECT_TRUE(dialogs->failedFilesQuestions.empty());
}

TEST_F(SandboxWindowTest, aDamagedProjectIsRefusedWithAMessageAndTheOpenProjectStays)
{
    import({sample(0)});
    drop(sample(0), 0, project()->primaryTrack());
    const Project::Document before = window->document();
    const QString path = settings.folder() + QStringLiteral("/damaged.dscproj");
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("{\"format\": \"dscproj\", \"version\": 1, \"clips\": [");
    file.close();
    EXPECT_FALSE(window->openProject(path));
    ASSERT_EQ(dialogs->warnings.size(), 1u);
    EXPECT_EQ(dialogs->warnings[0].title, QStringLiteral("Open Project"));
    EXPECT_TRUE(dialogs->warnings[0].text.contains(QStringLiteral("damaged")));
    EXPECT_EQ(window->document(), before);
}

TEST_F(SandboxWindowTest, playStopsAtTheSelectedClipsEdgeAndThePreviewShowsTheClipOnTop)
{
    import({sample(0), sample(1)});
    const Timeline::Clip* bars = drop(sample(0), 0, project()->primaryTrack());
    const Timeline::Clip* shape = drop(sample(1), 5 * second, project()->extraVideoTrack());
    ASSERT_TRUE(bars && shape);
    auto* preview = window->preview();
    struct Row
    {
        const char* name;
        Types::Time at;
        const Timeline::Clip* shown;
    };
    const Row rows[] = {
        {"inside the bars", second / 2, bars},
        {"the overlay over the main track", 6 * second, shape},
        {"the bars' end edge, nothing after it", project()->clipTiming(bars).end(), bars},
        {"past every clip", 30 * second, nullptr},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        timeline->setPlayhead(row.at);
        EXPECT_EQ(preview->shownClip(), row.shown);
        ASSERT_TRUE(Scripted::waitFor([&] { return preview->frameShown(); }));
        EXPECT_EQ(preview->picture() && !preview->picture()->isNull(), row.shown != nullptr);
    }

    // With the bars selected, playing from 1 s stops on their end edge.
    Scripted::click(viewport, timeline->clipPoint(bars, 0.5));
    EXPECT_EQ(timeline->selectedClip(), bars);
    timeline->setPlayhead(second);
    QSignalSpy stopped(window.get(), &SandboxWindow::playbackStopped);
    window->play();
    EXPECT_TRUE(window->playing());
    ASSERT_TRUE(Scripted::waitFor([&] { return stopped.count() == 1; }));
    EXPECT_EQ(timeline->playhead(), project()->clipTiming(bars).end());
    EXPECT_EQ(window->host().playback()->state()->code, Playback::State::Stopped);

    // A click on an empty place moves the playhead and clears the selection; playing then
    // goes to the end of the timeline.
    Scripted::click(viewport, pointAt(7 * second, project()->titleTrack()));
    EXPECT_EQ(timeline->selectedClip(), nullptr);
    EXPECT_EQ(timeline->playhead(), 7 * second);
    window->play();
    ASSERT_TRUE(Scripted::waitFor([&] { return stopped.count() == 2; }));
    EXPECT_EQ(timeline->playhead(), project()->duration());
}

TEST_F(SandboxWindowTest, theClipPanelChangesTheSpeedAndDirectionOfTheSelectedClip)
{
    import({sample(0)});
    const Timeline::Clip* bars = drop(sample(0), 0, project()->primaryTrack());
    ASSERT_NE(bars, nullptr);
    const Types::Time length = project()->clipTiming(bars).length;
    auto* speed = window->clipPanel()->findChild<QDoubleSpinBox*>();
    auto* backwards = window->clipPanel()->findChild<QCheckBox*>();
    ASSERT_TRUE(speed && backwards);
    ASSERT_TRUE(speed->isEnabled());
    speed->setValue(2.0);
    EXPECT_EQ(project()->clipTiming(bars).speed, 2.0);
    EXPECT_NEAR(double(project()->clipTiming(bars).length), length / 2.0, 1.0);
    backwards->click();
    EXPECT_TRUE(project()->clipTiming(bars).reversed);
    EXPECT_TRUE(window->isModified());
    // Nothing selected: nothing to change.
    timeline->selectClip(nullptr);
    EXPECT_FALSE(speed->isEnabled());
    EXPECT_FALSE(backwards->isEnabled());
}

TEST_F(SandboxWindowTest, theBinDragsItsFilesOutAndImportsFilesDroppedOnIt)
{
    QSignalSpy finished(window.get(), &SandboxWindow::importFinished);
    auto* bin = window->bin();
    ASSERT_TRUE(Scripted::dropFiles(bin->viewport(), {sample(3), sample(2)}, QPoint(40, 40)));
    ASSERT_TRUE(Scripted::waitFor([&] { return finished.count() == 1; }));
    ASSERT_EQ(bin->files().size(), 2u);
    for (const Media::File* file : bin->files())
        EXPECT_EQ(bin->fileAt(bin->tilePoint(file)), file);

    std::unique_ptr<QMimeData> data(Sandbox::BinView::mimeDataFor({sample(3)}));
    EXPECT_EQ(MimeUtils::extractFiles(data.get(), {QStringLiteral("png")}), QStringList{sample(3)});
    EXPECT_EQ(MimeUtils::mimeDragAsrc(data.get()), QStringLiteral("bin"));
}

TEST_F(SandboxWindowTest, theSampleMediaIsWrittenOnceAndOnlyTheBrokenFileFails)
{
    QMap<QString, QDateTime> written;
    for (const QString& path : SandboxTest::samples())
        written[path] = QFileInfo(path).lastModified();
    EXPECT_EQ(SampleMedia::ensure(QFileInfo(sample(0)).absolutePath()), SandboxTest::samples());
    for (const QString& path : SandboxTest::samples())
        EXPECT_EQ(QFileInfo(path).lastModified(), written[path]) << path.toStdString();

    const MediaEngine::ProbeResult bars = MediaEngine::probeFile(sample(0));
    ASSERT_TRUE(bars.ok());
    EXPECT_EQ(bars.video.size(), 1u);
    EXPECT_EQ(bars.audio.size(), 1u);
    EXPECT_NEAR(double(bars.duration), 4'000'000.0, 100'000.0);
    EXPECT_EQ(MediaEngine::probeFile(sample(4)).errorCode, MediaEngine::ErrorCode::FileCorrupted);
}

TEST_F(SandboxWindowTest, recentProjectsThatAreGoneStayInTheMenuMarked)
{
    const QString kept = settings.folder() + QStringLiteral("/kept.dscproj");
    const QString gone = settings.folder() + QStringLiteral("/gone.dscproj");
    Project::rememberProject(gone);
    ASSERT_TRUE(window->saveProjectAs(kept));
    QMenu* recent = nullptr;
    for (QMenu* menu : window->menuBar()->findChildren<QMenu*>())
        if (menu->title() == QStringLiteral("Open &Recent"))
            recent = menu;
    ASSERT_NE(recent, nullptr);
    QMetaObject::invokeMethod(recent, "aboutToShow");
    const QList<QAction*> actions = recent->actions();
    ASSERT_EQ(actions.size(), 2);
    EXPECT_EQ(actions[0]->text(), Filesystem::cleanPath(kept));
    EXPECT_TRUE(actions[0]->isEnabled());
    EXPECT_EQ(actions[1]->text(), Filesystem::cleanPath(gone) + QStringLiteral(" (not found)"));
    EXPECT_FALSE(actions[1]->isEnabled());
}

TEST_F(SandboxWindowTest, aProjectWhoseFilesAreAllGoneSaysSoAndKeepsItsClipsAsMissing)
{
    QTemporaryDir work;
    const QString tone = work.filePath(QStringLiteral("tone.wav"));
    ASSERT_TRUE(QFile::copy(sample(2), tone));
    import({tone});
    drop(tone, 0, project()->tracks().back());
    const QString path = work.filePath(QStringLiteral("lost.dscproj"));
    ASSERT_TRUE(window->saveProjectAs(path));
    ASSERT_TRUE(QFile::remove(tone));

    // The search is skipped without naming a folder.
    QTimer driver;
    driver.setInterval(10);
    QObject::connect(&driver, &QTimer::timeout, [&] {
        if (auto* dialog = qobject_cast<MissingFilesDialog*>(QApplication::activeModalWidget()))
            dialog->reject();
    });
    driver.start();
    QSignalSpy loaded(window.get(), &SandboxWindow::projectLoaded);
    ASSERT_TRUE(window->openProject(path));
    ASSERT_TRUE(Scripted::waitFor([&] { return loaded.count() == 1; }));
    ASSERT_EQ(dialogs->warnings.size(), 1u);
    EXPECT_TRUE(dialogs->warnings[0].text.startsWith(QStringLiteral("None of the media files of this project")));
    EXPECT_EQ(dialogs->failedFilesQuestions.size(), 1u); // the lost tone, when the project opened
    ASSERT_EQ(project()->clips().size(), 1u);
    EXPECT_TRUE(Scripted::waitFor([&] { return project()->clips()[0]->isBroken(); }));
    EXPECT_EQ(positionOf(project()->clips()[0]), 0);
}
