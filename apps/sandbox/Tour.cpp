#include "Tour.h"

#include "BinView.h"
#include "Panels.h"
#include "SampleMedia.h"
#include "SandboxWindow.h"
#include "Scripted.h"
#include "TimelineView.h"

#include <Util/Dialog/MissingFilesDialog/MissingFilesDialog.h>
#include <Util/Filesystem.h>
#include <Util/Format.h>
#include <Util/Project.h>

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QPixmap>
#include <QProcess>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTimer>
#include <QUndoStack>

#include <cstdio>

namespace Sandbox {

namespace {

constexpr Types::Time second = Types::TimeUnitsPerSecond;

QString seconds(Types::Time time) { return Format::timeMs(time / Types::TimeUnitsPerMillisecond); }

const Timeline::Clip* clipNamed(const Timeline::Object* timeline, const QString& name, Timeline::Track::Kind kind)
{
    for (const Timeline::Clip* clip : timeline->clips())
        if (clip->name().toQString() == name && timeline->clipTiming(clip).track->kind() == kind)
            return clip;
    return nullptr;
}

} // namespace

Tour::Tour(SandboxWindow& window, Scripted::ScriptedStrategy& dialogs, const QString& dataFolder,
           const QString& shotsFolder, const QString& workFolder)
    : m_window(window), m_dialogs(dialogs), m_data(dataFolder), m_shots(shotsFolder), m_work(workFolder)
{}

void Tour::setSecondStart(const QString& program, const QStringList& arguments)
{
    m_program = program;
    m_arguments = arguments;
}

QString Tour::shoot(const QString& name)
{
    const QString path =
        QDir(m_shots).absoluteFilePath(QStringLiteral("%1-%2.png").arg(m_number, 2, 10, QLatin1Char('0')).arg(name));
    Scripted::waitFor([] { return false; }, 60); // let the last repaints land
    const bool saved = m_window.grab().save(path);
    return saved ? path : QStringLiteral("(screenshot not written)");
}

bool Tour::step(const QString& name, const std::function<bool(QString& detail)>& action)
{
    ++m_number;
    QString detail;
    m_shotOverride.clear();
    const bool ok = action(detail);
    const QString shot = m_shotOverride.isEmpty() ? shoot(name) : m_shotOverride;
    std::printf("[%s] %d %s: %s -> %s\n", ok ? "ok" : "FAILED", m_number, qPrintable(name), qPrintable(detail),
                qPrintable(shot));
    std::fflush(stdout);
    if (!ok)
        ++m_failures;
    return ok;
}

int Tour::run()
{
    QDir().mkpath(m_shots);
    const QString media = QDir(m_work).filePath(QStringLiteral("media"));
    TimelineView* timeline = m_window.timeline();
    QWidget* viewport = timeline->viewport();
    auto project = [this] { return m_window.projectTimeline(); };
    QStringList samples;
    QString bars, shape, tone;

    step(QStringLiteral("samples"), [&](QString& detail) {
        QString error;
        const QStringList made = SampleMedia::ensure(m_data, &error);
        QDir().mkpath(media);
        for (const QString& path : made) {
            const QString copy = QDir(media).filePath(QFileInfo(path).fileName());
            QFile::copy(path, copy);
            samples << copy;
        }
        if (made.size() != 5) {
            detail = QStringLiteral("sample media not made: %1").arg(error);
            return false;
        }
        bars = samples[0];
        shape = samples[1];
        tone = samples[2];
        detail = QStringLiteral("5 files written by the media engine in %1 (%2 KiB)")
                     .arg(QDir::toNativeSeparators(m_data))
                     .arg((QFileInfo(made[0]).size() + QFileInfo(made[1]).size() + QFileInfo(made[2]).size()
                           + QFileInfo(made[3]).size() + QFileInfo(made[4]).size())
                          / 1024);
        return true;
    });
    if (samples.size() != 5)
        return 1;

    step(QStringLiteral("import"), [&](QString& detail) {
        QSignalSpy finished(&m_window, &SandboxWindow::importFinished);
        m_window.importFiles(samples);
        if (!Scripted::waitFor([&] { return finished.count() == 1; })) {
            detail = QStringLiteral("the import did not finish");
            return false;
        }
        const int opened = finished[0][0].toInt();
        const int failed = finished[0][1].toInt();
        const bool thumbs = Scripted::waitFor([&] { return m_window.bin()->thumbnailCount() == 3; });
        detail = QStringLiteral("%1 opened, %2 failed (broken.mp4); failed-files question asked %3 time(s); %4 "
                                "thumbnails in the bin")
                     .arg(opened)
                     .arg(failed)
                     .arg(m_dialogs.failedFilesQuestions.size())
                     .arg(m_window.bin()->thumbnailCount());
        return opened == 4 && failed == 1 && m_dialogs.failedFilesQuestions.size() == 1 && thumbs
               && m_window.bin()->files().size() == 5;
    });

    step(QStringLiteral("place"), [&](QString& detail) {
        const int videoRow = timeline->rowOf(project()->primaryTrack());
        const int overlayRow = timeline->rowOf(project()->extraVideoTrack());
        const int audioRow = timeline->rowOf(project()->tracks().back());
        auto at = [&](Types::Time t, int row) {
            return timeline->viewportPoint(QPointF(TimelineView::xOf(t), timeline->rowCenter(row)));
        };
        const bool dropped = Scripted::dropFiles(viewport, {bars}, at(0, videoRow))
                             && Scripted::dropFiles(viewport, {shape}, at(5 * second, overlayRow))
                             && Scripted::dropFiles(viewport, {tone}, at(1 * second, audioRow));
        const Timeline::Clip* barsClip = clipNamed(project(), SampleMedia::barsFile(), Timeline::Track::Video);
        const Timeline::Clip* barsSound = clipNamed(project(), SampleMedia::barsFile(), Timeline::Track::NativeAudio);
        const Timeline::Clip* shapeClip = clipNamed(project(), SampleMedia::shapeFile(), Timeline::Track::ExtraVideo);
        const Timeline::Clip* toneClip = clipNamed(project(), SampleMedia::toneFile(), Timeline::Track::Audio);
        if (!dropped || !barsClip || !barsSound || !shapeClip || !toneClip) {
            detail = QStringLiteral("a drop did not give its clip");
            return false;
        }
        detail = QStringLiteral("dropped from the bin: bars at %1 on Video (its sound linked on the sound track), "
                                "shape at %2 on Overlay video, tone at %3 on Audio")
                     .arg(seconds(project()->clipTiming(barsClip).position),
                          seconds(project()->clipTiming(shapeClip).position),
                          seconds(project()->clipTiming(toneClip).position));
        return project()->clipTiming(barsClip).position == 0 && project()->clipTiming(shapeClip).position == 5 * second
               && project()->clipTiming(toneClip).position == second && project()->masterOf(barsSound) == barsClip;
    });

    const Timeline::Clip* barsClip = clipNamed(project(), SampleMedia::barsFile(), Timeline::Track::Video);
    const Timeline::Clip* barsSound = clipNamed(project(), SampleMedia::barsFile(), Timeline::Track::NativeAudio);
    const Timeline::Clip* shapeClip = clipNamed(project(), SampleMedia::shapeFile(), Timeline::Track::ExtraVideo);
    if (!barsClip || !shapeClip || !barsSound)
        return 1;

    step(QStringLiteral("drag-snapping"), [&](QString& detail) {
        // The shape's start is dragged to 6 px after the end of the bars (4 s): it snaps there.
        const double target = TimelineView::xOf(project()->clipTiming(barsClip).end()) + 6;
        const QPoint from = timeline->clipPoint(shapeClip, 0.2);
        const double dx = target - TimelineView::xOf(project()->clipTiming(shapeClip).position);
        QSignalSpy ended(timeline, &TimelineView::dragEnded);
        Scripted::drag(viewport, from, from + QPoint(int(dx), 0));
        const Types::Time at = project()->clipTiming(shapeClip).position;
        detail = QStringLiteral("shape dropped 6 px after the bars' end, now at %1 (bars end at %2)")
                     .arg(seconds(at), seconds(project()->clipTiming(barsClip).end()));
        return ended.count() == 1 && ended[0][2].toBool() && at == project()->clipTiming(barsClip).end();
    });

    step(QStringLiteral("drag-alt"), [&](QString& detail) {
        // The bars are dragged with Alt so that their start stops 6 px after the tone's start (1 s):
        // no snapping, and their sound follows them.
        const QPoint from = timeline->clipPoint(barsClip, 0.5);
        const int dx = int(TimelineView::pixelsPerSecond) + 6;
        QSignalSpy ended(timeline, &TimelineView::dragEnded);
        Scripted::drag(viewport, from, from + QPoint(dx, 0), Qt::AltModifier);
        const Types::Time expected = TimelineView::timeOf(TimelineView::xOf(0) + dx);
        const Types::Time video = project()->clipTiming(barsClip).position;
        const Types::Time sound = project()->clipTiming(barsSound).position;
        detail = QStringLiteral("bars dragged with Alt 6 px past the tone's start (1 s): video at %1, its sound at %2")
                     .arg(seconds(video), seconds(sound));
        return ended.count() == 1 && !ended[0][2].toBool() && video == expected && sound == expected;
    });

    step(QStringLiteral("drag-escape"), [&](QString& detail) {
        const Project::Document before = m_window.document();
        const QPoint from = timeline->clipPoint(shapeClip, 0.5);
        Scripted::drag(viewport, from, from + QPoint(160, TimelineView::trackHeight), Qt::NoModifier, true, timeline);
        detail = QStringLiteral("shape dragged 2 s and one track down, Escape pressed before the release: still at %1 "
                                "on %2")
                     .arg(seconds(project()->clipTiming(shapeClip).position),
                          project()->clipTiming(shapeClip).track == project()->extraVideoTrack()
                              ? QStringLiteral("Overlay video")
                              : QStringLiteral("another track"));
        return m_window.document() == before;
    });

    step(QStringLiteral("play-to-edge"), [&](QString& detail) {
        Scripted::click(viewport, timeline->clipPoint(shapeClip, 0.3));
        timeline->setPlayhead(project()->clipTiming(shapeClip).position + second);
        QSignalSpy stopped(&m_window, &SandboxWindow::playbackStopped);
        m_window.play();
        const bool ok = Scripted::waitFor([&] { return stopped.count() == 1; }, 20000)
                        && Scripted::waitFor([&] { return m_window.preview()->frameShown(); }, 10000);
        const Types::Time edge = project()->clipTiming(shapeClip).end();
        detail = QStringLiteral("played from %1 with the shape selected, stopped at %2 (its end edge: %3); the preview "
                                "shows %4")
                     .arg(seconds(project()->clipTiming(shapeClip).position + second), seconds(timeline->playhead()),
                          seconds(edge),
                          m_window.preview()->shownClip() ? m_window.preview()->shownClip()->name().toQString()
                                                          : QStringLiteral("nothing"));
        const bool stoppedOnEdge = ok && timeline->playhead() == edge && !m_window.preview()->picture().isNull();
        // A look at the browser of effects and presets: a colour filter on its stock picture.
        m_shotOverride = shoot(QStringLiteral("play-to-edge"));
        const bool previewed = m_window.browser()->choose(QStringLiteral("Colour filters"), 1)
                               && m_window.preview()->showsPicture() && !m_window.preview()->picture().isNull();
        detail += QStringLiteral("; the sepia filter previewed on its stock picture (%1)")
                      .arg(previewed ? shoot(QStringLiteral("effect-preview")) : QStringLiteral("not shown"));
        return stoppedOnEdge && previewed;
    });

    step(QStringLiteral("presets"), [&](QString& detail) {
        // Items of the effects browser dragged out: an effect and a pan and zoom onto the bars, a
        // title onto the title track.
        auto dropItem = [&](const char* kind, int index, QPoint at) {
            std::unique_ptr<QMimeData> data(m_window.browser()->mimeDataFor(QString::fromLatin1(kind), index));
            return Scripted::drop(viewport, data.get(), at);
        };
        const QPoint onTitles = timeline->viewportPoint(
            QPointF(TimelineView::xOf(2 * second), timeline->rowCenter(timeline->rowOf(project()->titleTrack()))));
        const bool dropped = dropItem("Effects", 0, timeline->clipPoint(barsClip, 0.3))
                             && dropItem("Pan and zoom", 0, timeline->clipPoint(barsClip, 0.6))
                             && dropItem("Titles", 0, onTitles);
        const auto titles = project()->clipsOnTrack(project()->titleTrack());
        const Timeline::Clip* title = titles.empty() ? nullptr : titles.front();
        const bool blurred = barsClip->findEffect("blur") != nullptr;
        const QString motion = barsClip->animation() ? barsClip->animation()->name.toQString() : QString();
        const QString text = title && title->overlay() && !title->overlay()->items().empty()
                                 ? QString::fromStdString(title->overlay()->items().front().text())
                                 : QString();
        detail = QStringLiteral("dragged from the effects browser: the bars have the blur effect: %1, the pan and "
                                "zoom \"%2\"; a title \"%3\" on the title track at %4")
                     .arg(blurred ? QStringLiteral("yes") : QStringLiteral("no"), motion, text,
                          title ? seconds(project()->clipTiming(title).position) : QStringLiteral("nowhere"));
        return dropped && blurred && motion == QStringLiteral("Close-up") && !text.isEmpty()
               && project()->clipTiming(title).position == 2 * second;
    });

    step(QStringLiteral("edit-undo"), [&](QString& detail) {
        // The tone is deleted and put back; the blur is taken off the bars in the clip panel and
        // put back; the bars are cut in two and joined: each by Undo, as it was.
        const Timeline::Clip* tone = clipNamed(project(), SampleMedia::toneFile(), Timeline::Track::Audio);
        const Timeline::ClipTiming toneWas = tone ? project()->clipTiming(tone) : Timeline::ClipTiming();
        Scripted::click(viewport, timeline->clipPoint(tone, 0.5));
        const bool deleted = timeline->removeSelected() && !project()->contains(tone);
        m_window.undoStack().undo();
        const bool back = project()->clipTiming(tone) == toneWas;
        Scripted::click(viewport, timeline->clipPoint(barsClip, 0.5));
        const bool removed =
            m_window.clipPanel()->adjustments().removeEffect(QStringLiteral("blur")) && !barsClip->findEffect("blur");
        const QString undoText = m_window.undoStack().undoText();
        m_window.undoStack().undo();
        // The bars are cut at 3 s, their sound with them; Undo joins both again.
        const size_t clips = project()->clips().size();
        timeline->setPlayhead(3 * second);
        const Timeline::Clip* rest = timeline->splitSelected();
        const bool split = rest && project()->clips().size() == clips + 2 && project()->findNativeAudio(rest);
        const QString splitShot = shoot(QStringLiteral("split"));
        m_window.undoStack().undo();
        const bool joined = project()->clips().size() == clips && project()->clipTiming(barsClip).end() > 3 * second;
        detail = QStringLiteral("the tone deleted and put back by Undo at %1: %2; the blur taken off the bars in the "
                                "clip panel (Undo reads \"%3\") and put back: %4; the bars cut at 00:03 into two "
                                "clips, their sound too (%5), joined again by Undo: %6")
                     .arg(seconds(toneWas.position), back ? QStringLiteral("yes") : QStringLiteral("no"), undoText,
                          ClipAdjustmentsProvider::contentNames(barsClip).join(QStringLiteral(", ")), splitShot,
                          joined ? QStringLiteral("yes") : QStringLiteral("no"));
        return deleted && back && removed && barsClip->findEffect("blur") != nullptr && split && joined;
    });

    const QString projectPath = QDir(m_work).filePath(QStringLiteral("tour.dscproj"));
    Project::Document saved;
    step(QStringLiteral("save"), [&](QString& detail) {
        const bool ok = m_window.saveProjectAs(projectPath);
        const QString autosaved = m_window.autosaveNow();
        const Project::Result read = Project::load(projectPath);
        saved = m_window.document();
        detail = QStringLiteral("saved %1 (%2 clips, %3 media); read back equal: %4; autosave copy %5")
                     .arg(QDir::toNativeSeparators(projectPath))
                     .arg(saved.clips.size())
                     .arg(saved.media.size())
                     .arg(read.ok() && read.document == saved ? QStringLiteral("yes") : QStringLiteral("no"))
                     .arg(QDir::toNativeSeparators(autosaved));
        return ok && read.ok() && read.document == saved && QFileInfo::exists(autosaved);
    });

    step(QStringLiteral("reopen-relink"), [&](QString& detail) {
        const QString movedFolder = QDir(m_work).filePath(QStringLiteral("moved/elsewhere"));
        QDir().mkpath(movedFolder);
        const QString moved = QDir(movedFolder).filePath(QFileInfo(shape).fileName());
        if (!QFile::rename(shape, moved)) {
            detail = QStringLiteral("could not move %1").arg(shape);
            return false;
        }
        // The search dialog opens inside openProject: it is driven from the event loop.
        QString dialogShot;
        int found = -1;
        QTimer driver;
        driver.setInterval(20);
        QObject::connect(&driver, &QTimer::timeout, [&] {
            auto* dialog = qobject_cast<MissingFilesDialog*>(QApplication::activeModalWidget());
            if (!dialog || dialog->state() != MissingFilesDialog::State::WaitingForFolder || found >= 0)
                return;
            found = 0;
            // The dialog closes itself once every lost file is found; it is pictured just before.
            QObject::connect(dialog, &MissingFilesDialog::stateChanged, dialog,
                             [&, dialog](MissingFilesDialog::State state) {
                                 if (state != MissingFilesDialog::State::Finished)
                                     return;
                                 dialogShot = QDir(m_shots).absoluteFilePath(
                                     QStringLiteral("%1-missing-files.png").arg(m_number, 2, 10, QLatin1Char('0')));
                                 dialog->grab().save(dialogShot);
                             });
            QObject::connect(dialog, &MissingFilesDialog::searchFinished, dialog, [&, dialog](int count) {
                found = count;
                if (!dialog->remainingFiles().isEmpty())
                    QMetaObject::invokeMethod(dialog, &QDialog::reject, Qt::QueuedConnection);
            });
            dialog->searchFolder(QDir(m_work).filePath(QStringLiteral("moved")));
        });
        driver.start();
        QSignalSpy loaded(&m_window, &SandboxWindow::projectLoaded);
        const bool opened = m_window.openProject(projectPath);
        driver.stop();
        const bool ready = opened && Scripted::waitFor([&] { return loaded.count() == 1; });
        Project::Document expected = saved;
        Project::relink(expected, {{Filesystem::cleanPath(shape), Filesystem::cleanPath(moved)}});
        const Project::Document now = m_window.document();
        int broken = 0;
        for (const Timeline::Clip* clip : project()->clips())
            broken += clip->isBroken() ? 1 : 0;
        detail = QStringLiteral("moved the shape to %1; on open the missing-files search found %2 file(s) there (%3); "
                                "timeline equal to the saved one with the new path: %4; %5 broken clip(s)")
                     .arg(QDir::toNativeSeparators(movedFolder))
                     .arg(found)
                     .arg(dialogShot.isEmpty() ? QStringLiteral("no dialog") : dialogShot)
                     .arg(now.clips == expected.clips && now.media == expected.media ? QStringLiteral("yes")
                                                                                     : QStringLiteral("no"))
                     .arg(broken);
        return ready && found == 1 && now.clips == expected.clips && now.media == expected.media && broken == 0;
    });

    step(QStringLiteral("second-start"), [&](QString& detail) {
        if (m_program.isEmpty()) {
            detail = QStringLiteral("this window is not the first instance of its key: nothing to hand over to");
            return false;
        }
        const QString handed = QDir(media).filePath(QStringLiteral("handed-over.mp4"));
        QFile::copy(bars, handed);
        QSignalSpy finished(&m_window, &SandboxWindow::importFinished);
        QProcess second;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
        second.setProcessEnvironment(environment);
        second.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        // The window is held as a long job holds it: the handed-over file waits, and the status
        // line says why, until it is let go.
        const QString holding = QStringLiteral("Exporting");
        m_window.actions().lock(holding);
        second.start(m_program, m_arguments + QStringList{handed});
        const bool ended = Scripted::waitFor([&] { return second.state() == QProcess::NotRunning; });
        const bool waited =
            ended && Scripted::waitFor([&] { return !m_window.actions().queued().empty(); }) && finished.isEmpty();
        const QString waiting = m_window.statusBar()->currentMessage();
        const QString waitShot = shoot(QStringLiteral("second-start-waiting"));
        m_window.actions().unlock(holding);
        const bool imported = ended && Scripted::waitFor([&] { return finished.count() == 1; });
        const Media::File* file = m_window.binFile(handed);
        const bool thumbnail = imported && Scripted::waitFor([&] { return m_window.bin()->thumbnailCount() == 4; });
        if (!ended)
            second.kill();
        detail =
            QStringLiteral("a second start (%1 %2 %3) exited with %4; while the window was held: \"%5\" (%6); "
                           "once let go %7 arrived in the bin (%8 files, %9 thumbnails)")
                .arg(QFileInfo(m_program).fileName(), m_arguments.join(QLatin1Char(' ')), QFileInfo(handed).fileName(),
                     ended && second.exitStatus() == QProcess::NormalExit ? QString::number(second.exitCode())
                                                                          : QStringLiteral("no exit"),
                     waiting, waitShot, file && file->isOpened() ? QStringLiteral("it") : QStringLiteral("nothing"))
                .arg(m_window.bin()->files().size())
                .arg(m_window.bin()->thumbnailCount());
        return ended && second.exitStatus() == QProcess::NormalExit && second.exitCode() == 0 && waited && file
               && file->isOpened() && thumbnail;
    });

    step(QStringLiteral("bad-project"), [&](QString& detail) {
        const Project::Document before = m_window.document();
        QFile original(projectPath);
        original.open(QIODevice::ReadOnly);
        const QByteArray bytes = original.readAll();
        const QString truncated = QDir(m_work).filePath(QStringLiteral("truncated.dscproj"));
        QFile cut(truncated);
        cut.open(QIODevice::WriteOnly);
        cut.write(bytes.left(bytes.size() / 2));
        cut.close();
        const std::size_t warningsBefore = m_dialogs.warnings.size();
        const bool opened = m_window.openProject(truncated);
        const QString message =
            m_dialogs.warnings.size() > warningsBefore ? m_dialogs.warnings.back().text : QStringLiteral("none");
        detail = QStringLiteral("opening a project cut in half: refused with \"%1\"; the open project unchanged: %2")
                     .arg(message, m_window.document() == before ? QStringLiteral("yes") : QStringLiteral("no"));
        return !opened && m_dialogs.warnings.size() == warningsBefore + 1 && m_window.document() == before;
    });

    std::printf("%s: %d of %d steps did what they should\n", m_failures ? "FAILED" : "PASSED", m_number - m_failures,
                m_number);
    return m_failures ? 1 : 0;
}

} // namespace Sandbox
