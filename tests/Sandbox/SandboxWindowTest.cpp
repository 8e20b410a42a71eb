// The sandbox window as a user drives it: drops from the bin, the preview under the playhead,
// save and open, the recent list, and the search for moved or lost files, all through events on
// the real widgets. Drags and desktop drops: TimelineViewTest; imports and refused saves:
// ProjectJobsTest; playback with a clip selected and the clip panel: PanelsTest.

#include "SandboxFixture.h"

#include "Panels.h"

#include <Util/Dialog/MissingFilesDialog/MissingFilesDialog.h>
#include <Util/Filesystem.h>
#include <Util/Interfaces/EditorSettings.h>

#include <MediaEngine/Probe.h>

#include <QAction>
#include <QApplication>
#include <QDateTime>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QSignalSpy>
#include <QTimer>

#include <functional>

#include <gtest/gtest.h>

using Sandbox::SandboxWindow;

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
    // A project in `work` with a copy of the tone at `time`, saved; the path of the copy.
    QString saveWithCopiedTone(const QTemporaryDir& work, Types::Time time)
    {
        const QString tone = work.filePath(QStringLiteral("tone.wav"));
        EXPECT_TRUE(QFile::copy(sample(2), tone));
        import({tone});
        drop(tone, time, project()->tracks().back());
        EXPECT_TRUE(window->saveProjectAs(work.filePath(QStringLiteral("p.dscproj"))));
        return tone;
    }
    // Opens the project in `work`, `answer` handling the missing-files dialog when it shows.
    void openAnswering(const QTemporaryDir& work, const std::function<void(MissingFilesDialog*)>& answer)
    {
        QTimer driver;
        driver.setInterval(10);
        QObject::connect(&driver, &QTimer::timeout, [&] {
            if (auto* dialog = qobject_cast<MissingFilesDialog*>(QApplication::activeModalWidget()))
                answer(dialog);
        });
        driver.start();
        QSignalSpy loaded(window.get(), &SandboxWindow::projectLoaded);
        ASSERT_TRUE(window->openProject(work.filePath(QStringLiteral("p.dscproj"))));
        ASSERT_TRUE(Scripted::waitFor([&] { return loaded.count() == 1; }));
    }
};

} // namespace

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
    // Each drop is one command: undone, the clips leave the timeline again, and a clip placed
    // outside the stack (as an import does) stays.
    EXPECT_EQ(window->undoStack().text(0), QStringLiteral("Add clip"));
    const Timeline::Clip* outside =
        timeline->placeFile(window->binFile(sample(1)), 30 * second, project()->primaryTrack());
    while (window->undoStack().canUndo())
        window->undoStack().undo();
    EXPECT_EQ(project()->clips(), std::vector<const Timeline::Clip*>{outside});
}

TEST_F(SandboxWindowTest, saveThenOpenGivesTheSameTimelineAndBinAndTheRecentListMarksGoneProjects)
{
    const QString gone = settings.folder() + QStringLiteral("/gone.dscproj");
    Project::rememberProject(gone);
    import({sample(0), sample(2), sample(3)});
    const Timeline::Clip* bars = drop(sample(0), second, project()->primaryTrack());
    drop(sample(3), 0, project()->extraVideoTrack());
    drop(sample(2), 2 * second, project()->tracks().back());
    // What the browser gives the bars and the title track is kept as well.
    const std::pair<const char*, QPoint> given[] = {{"Colour filters", timeline->clipPoint(bars)},
                                                    {"Animations", timeline->clipPoint(bars)},
                                                    {"Titles", pointAt(0, project()->titleTrack())},
                                                    {"Quizzes", pointAt(6 * second, project()->titleTrack())}};
    for (const auto& [kind, at] : given) {
        std::unique_ptr<QMimeData> data(window->browser()->mimeDataFor(QString::fromLatin1(kind), 1));
        ASSERT_TRUE(Scripted::drop(viewport, data.get(), at)) << kind;
    }
    ASSERT_EQ(bars->effects().size(), 1u);
    ASSERT_TRUE(bars->animation());
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

    // The recent list keeps a project that is gone, marked and disabled.
    QMenu* recent = nullptr;
    for (QMenu* menu : window->menuBar()->findChildren<QMenu*>())
        if (menu->title() == QStringLiteral("Open &Recent"))
            recent = menu;
    ASSERT_NE(recent, nullptr);
    QMetaObject::invokeMethod(recent, "aboutToShow");
    const QList<QAction*> actions = recent->actions();
    ASSERT_EQ(actions.size(), 2);
    EXPECT_EQ(actions[0]->text(), Filesystem::cleanPath(path));
    EXPECT_TRUE(actions[0]->isEnabled());
    EXPECT_EQ(actions[1]->text(), Filesystem::cleanPath(gone) + QStringLiteral(" (not found)"));
    EXPECT_FALSE(actions[1]->isEnabled());
}

TEST_F(SandboxWindowTest, aMovedFileIsFoundByTheMissingFilesSearchWhenTheProjectOpens)
{
    QTemporaryDir work;
    const QString tone = saveWithCopiedTone(work, second);
    QDir().mkpath(work.filePath(QStringLiteral("later/deeper")));
    const QString moved = work.filePath(QStringLiteral("later/deeper/tone.wav"));
    ASSERT_TRUE(QFile::rename(tone, moved));

    int searched = 0;
    openAnswering(work, [&](MissingFilesDialog* dialog) {
        if (searched)
            return;
        ++searched;
        EXPECT_EQ(dialog->remainingFiles(), QStringList{Filesystem::cleanPath(tone)});
        QObject::connect(dialog, &MissingFilesDialog::searchFinished, dialog, &QDialog::accept);
        dialog->searchFolder(work.filePath(QStringLiteral("later")));
    });
    EXPECT_EQ(searched, 1);
    ASSERT_EQ(project()->clips().size(), 1u);
    const Timeline::Clip* clip = project()->clips()[0];
    EXPECT_EQ(clip->file()->path().toQString(), Filesystem::cleanPath(moved));
    EXPECT_FALSE(clip->isBroken());
    EXPECT_EQ(positionOf(clip), second);
    EXPECT_TRUE(dialogs->failedFilesQuestions.empty());
}

TEST_F(SandboxWindowTest, thePreviewShowsTheClipOnTopAndPlayWithNothingSelectedRunsToTheEnd)
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
        EXPECT_EQ(!preview->picture().isNull(), row.shown != nullptr);
    }

    // A click on an empty place moves the playhead and clears the selection; playing then
    // goes to the end of the timeline.
    Scripted::click(viewport, timeline->clipPoint(bars, 0.5));
    ASSERT_EQ(timeline->selectedClip(), bars);
    QSignalSpy stopped(window.get(), &SandboxWindow::playbackStopped);
    Scripted::click(viewport, pointAt(7 * second, project()->titleTrack()));
    EXPECT_EQ(timeline->selectedClip(), nullptr);
    EXPECT_EQ(timeline->playhead(), 7 * second);
    window->play();
    ASSERT_TRUE(Scripted::waitFor([&] { return stopped.count() == 1; }));
    EXPECT_EQ(timeline->playhead(), project()->duration());
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

TEST_F(SandboxWindowTest, aProjectWhoseFilesAreAllGoneSaysSoAndKeepsItsClipsAsMissing)
{
    QTemporaryDir work;
    ASSERT_TRUE(QFile::remove(saveWithCopiedTone(work, 0)));
    // The search is skipped without naming a folder.
    openAnswering(work, [](MissingFilesDialog* dialog) { dialog->reject(); });
    ASSERT_EQ(dialogs->warnings.size(), 1u);
    EXPECT_TRUE(dialogs->warnings[0].text.startsWith(QStringLiteral("None of the media files of this project")));
    EXPECT_EQ(dialogs->failedFilesQuestions.size(), 1u); // the lost tone, when the project opened
    ASSERT_EQ(project()->clips().size(), 1u);
    EXPECT_TRUE(Scripted::waitFor([&] { return project()->clips()[0]->isBroken(); }));
    EXPECT_EQ(positionOf(project()->clips()[0]), 0);
}
