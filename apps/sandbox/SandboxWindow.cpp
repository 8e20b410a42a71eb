#include "SandboxWindow.h"

#include "BinView.h"
#include "Panels.h"
#include "SampleMedia.h"
#include "TimelineView.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Editor/ClipPlacementCommand.h>
#include <Util/Editor/EditPlaybackTracker.h>
#include <Util/Editor/ModelEditor.h>
#include <Util/Editor/PlayerEditor.h>
#include <Util/Filesystem.h>
#include <Util/Format.h>
#include <Util/Import/TimelineFileOpenHandler.h>
#include <Util/Import/TimelineShadowChange.h>
#include <Util/Interfaces/EditorSettings.h>

#include <MediaEngine/ModelAdapter.h>

#include <QAction>
#include <QCloseEvent>
#include <QFileInfo>
#include <QFutureWatcher>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenuBar>
#include <QProgressBar>
#include <QPushButton>
#include <QSplitter>
#include <QStatusBar>
#include <QtConcurrent>

#include <algorithm>

namespace Sandbox {

namespace {

QString fileName(const Media::File* file) { return QFileInfo(file->path().toQString()).fileName(); }

} // namespace

// Follows the player: where it is, and when it stops.
class SandboxWindow::PlaybackWatch : public Playback::View
{
public:
    std::function<void(Types::Time)> moved;
    std::function<void()> stopped;

private:
    void playbackStopped(const Playback::Object* object) override
    {
        positionChanged(object);
        stopped();
    }
    void positionChanged(const Playback::Object* object) override
    {
        if (const Playback::State* state = object->state())
            moved(state->position);
    }
};

struct SandboxWindow::Import
{
    std::unique_ptr<TimelineShadowChange> change;
    std::unique_ptr<TimelineFileOpenHandler> handler;
    std::function<void(const std::vector<const Media::File*>&)> done;
    bool ready = false; // every file has opened or failed
};

namespace {

const char* const handoverKind = "handover";

} // namespace

SandboxWindow::SandboxWindow(QWidget* parent)
    : QMainWindow(parent), m_actions([this](const Action::Proposal& proposal) {
          const auto it = m_handovers.find(proposal.arguments.value(QStringLiteral("ticket")).toULongLong());
          if (proposal.kind != QLatin1String(handoverKind) || it == m_handovers.end())
              return;
          const std::function<void()> deliver = std::move(it->second);
          m_handovers.erase(it);
          deliver();
      })
{
    connect(&m_actions, &Action::Gateway::blocked, this, [this](quint64, const QString& reason) {
        statusBar()->showMessage(tr("Files from another start wait: %1").arg(reason));
    });
    Model::installDefaultServices(m_host);
    MediaEngine::connectToModel(m_host, m_engine);
    m_binSource = m_host.addTimeline("Media bin");

    m_bin = new BinView(this);
    m_timeline = new TimelineView(m_host, this);
    m_timeline->setUndoStack(&m_undo);
    m_preview = new PreviewPanel(this);
    m_clipPanel = new ClipPanel(m_undo, this);
    m_browser = new PreviewBrowser(m_player, this);
    m_timelineClient = new ExclusiveClient(&m_player, this);
    m_sessionClient = new ExclusiveClient(&m_player, this);
    buildEditors();

    auto* top = new QSplitter(Qt::Horizontal, this);
    top->addWidget(m_bin);
    top->addWidget(m_preview);
    auto* side = new QSplitter(Qt::Vertical, this);
    side->addWidget(m_clipPanel);
    side->addWidget(m_browser);
    top->addWidget(side);
    top->setStretchFactor(0, 2);
    top->setStretchFactor(1, 3);
    top->setStretchFactor(2, 2);
    auto* main = new QSplitter(Qt::Vertical, this);
    main->addWidget(top);
    main->addWidget(m_timeline);
    main->setStretchFactor(0, 3);
    main->setStretchFactor(1, 2);
    setCentralWidget(main);
    m_summary = new QLabel(this);
    m_jobBar = new QProgressBar(this);
    m_jobBar->setFixedWidth(260);
    m_jobCancel = new QPushButton(tr("Cancel"), this);
    connect(m_jobCancel, &QAbstractButton::clicked, this, &SandboxWindow::cancelJobs);
    statusBar()->addPermanentWidget(m_jobBar);
    statusBar()->addPermanentWidget(m_jobCancel);
    statusBar()->addPermanentWidget(m_summary);
    connect(m_bin, &BinView::thumbnailArrived, this, [this](const Media::File* file) {
        m_thumbnailsPending.erase(file);
        updateJobs();
    });
    buildMenus();

    connect(m_timeline, &TimelineView::filesDropped, this, &SandboxWindow::placeDropped);
    // Desktop drops: the bin's are imported as File > Import does, the timeline's go to the
    // project; files that land on the project join the bin.
    m_bin->setDropTimeline(m_binSource);
    connect(m_bin, &BinView::filesDropped, this, [this](const QStringList& paths) { importFiles(paths); });
    connect(m_timeline, &TimelineView::filesLanded, this, [this] {
        for (const Timeline::Clip* clip : m_project->clips())
            if (clip->file() && !binFile(clip->file()->path().toQString()))
                m_bin->addFile(clip->file());
        updateStatus();
    });
    const auto openDropped = [this](const QString& path) { openProject(path); };
    const auto tell = [this](const QString& text) { statusBar()->showMessage(text, 5000); };
    connect(m_bin, &BinView::projectDropped, this, openDropped);
    connect(m_timeline, &TimelineView::projectDropped, this, openDropped);
    connect(m_bin, &BinView::dropStatus, this, tell);
    connect(m_timeline, &TimelineView::dropStatus, this, tell);
    connect(m_bin, &BinView::dropRefused, this, tell);
    connect(m_timeline, &TimelineView::dropRefused, this, tell);
    connect(m_timeline, &TimelineView::selectionChanged, this, [this](const Timeline::Clip* clip) {
        m_clipPanel->setClip(m_project, clip);
        selectForEditing(clip);
    });
    connect(m_timeline, &TimelineView::playheadMoved, this, [this](Types::Time time) {
        if (!m_following) {
            // Moved by the user: the timeline takes the player back from a preview, and the
            // player seeks there.
            if (m_player.holder() == m_browser->client())
                m_timelineClient->acquire();
            m_tracker->seekTo(time);
        }
        showPlayer();
    });
    connect(m_browser, &PreviewBrowser::pictureReady, this, [this](const QImage& picture, const QString& caption) {
        m_preview->showPicture(picture, caption);
        m_preview->setNote(tr("Preview on the stock picture"));
    });
    connect(m_timelineClient, &ExclusiveClient::released, this, [this] {
        if (m_playing)
            stop();
    });
    connect(&m_player, &ExclusiveService::acquired, this, [this] { showPlayer(); });
    connect(m_timeline, &TimelineView::timelineChanged, this, [this] {
        m_modified = true;
        m_clipPanel->setClip(m_project, m_timeline->selectedClip());
        showPlayer();
        updateTitle();
        updateStatus();
    });
    connect(m_timeline, &TimelineView::dragEnded, this, [this](const Timeline::Clip* clip, bool moved, bool snapped) {
        if (!moved)
            statusBar()->showMessage(tr("Drag of %1 aborted: nothing moved").arg(clip->name().toQString()), 5000);
        else
            statusBar()->showMessage(
                tr("%1 moved to %2%3")
                    .arg(clip->name().toQString(),
                         Format::timeMs(m_project->clipTiming(clip).position / Types::TimeUnitsPerMillisecond),
                         snapped ? tr(", snapped to an edge") : QString()),
                5000);
    });
    m_autosaveTimer.setInterval(2 * 60 * 1000);
    connect(&m_autosaveTimer, &QTimer::timeout, this, [this] {
        if (m_modified)
            autosaveNow();
    });
    m_autosaveTimer.start();

    newProject();
    updateJobs();
    resize(1400, 860);
}

SandboxWindow::~SandboxWindow()
{
    m_actions.close();
    m_handovers.clear();
    // The player's users go quietly: nothing is shown or stopped on a closing window.
    disconnect(m_timelineClient, nullptr, this, nullptr);
    disconnect(&m_player, nullptr, this, nullptr);
    m_playbackWatch.reset();
    m_imports.clear();
    m_projectFiles.reset();
    m_engine.cancelAll();
    // The panels hold model records (a drop's shadow change gives its clips back when it goes):
    // they go while the model still lives, not after it with the window's children.
    delete takeCentralWidget();
}

void SandboxWindow::buildMenus()
{
    QMenu* file = menuBar()->addMenu(tr("&File"));
    file->addAction(tr("&New Project"), this, &SandboxWindow::newProject, QKeySequence::New);
    file->addAction(
        tr("&Open Project..."), this,
        [this] {
            const QString path = Filesystem::openProject(QString());
            if (!path.isEmpty())
                openProject(path);
        },
        QKeySequence::Open);
    m_recentMenu = file->addMenu(tr("Open &Recent"));
    connect(m_recentMenu, &QMenu::aboutToShow, this, &SandboxWindow::fillRecentMenu);
    file->addAction(tr("&Save"), this, &SandboxWindow::saveProject, QKeySequence::Save);
    file->addAction(
        tr("Save &As..."), this,
        [this] {
            const QString path = Filesystem::savingProjectPath(m_projectName);
            if (!path.isEmpty())
                saveProjectAs(path);
        },
        QKeySequence::SaveAs);
    file->addSeparator();
    file->addAction(
        tr("&Import Media..."), this,
        [this] {
            const QStringList paths = Filesystem::openFiles(Filesystem::Video | Filesystem::Audio | Filesystem::Image);
            if (!paths.isEmpty())
                importFiles(paths);
        },
        QKeySequence(Qt::CTRL | Qt::Key_I));
    file->addSeparator();
    file->addAction(tr("&Quit"), this, &QWidget::close, QKeySequence::Quit);
    QMenu* edit = menuBar()->addMenu(tr("&Edit"));
    QAction* undo = m_undo.createUndoAction(this, tr("&Undo"));
    undo->setShortcut(QKeySequence::Undo);
    edit->addAction(undo);
    QAction* redo = m_undo.createRedoAction(this, tr("&Redo"));
    redo->setShortcut(QKeySequence::Redo);
    edit->addAction(redo);
    edit->addSeparator();
    QAction* remove = edit->addAction(
        tr("&Delete Clip"), this,
        [this] {
            if (!m_timeline->removeSelected())
                statusBar()->showMessage(tr("Select a clip to delete."), 5000);
        },
        QKeySequence::Delete);
    QAction* split = edit->addAction(
        tr("&Split Clip at the Playhead"), this,
        [this] {
            if (const Timeline::Clip* rest = m_timeline->splitSelected())
                m_timeline->selectClip(rest);
            else
                statusBar()->showMessage(tr("Put the playhead inside the selected clip to split it."), 5000);
        },
        QKeySequence(Qt::CTRL | Qt::Key_K));
    // A clip's menu on the timeline: the same two, and undo.
    m_timeline->addActions({split, remove, undo});
    m_timeline->setContextMenuPolicy(Qt::ActionsContextMenu);
    QMenu* playback = menuBar()->addMenu(tr("&Playback"));
    playback->addAction(tr("&Play to the Clip's Edge"), this, &SandboxWindow::play, QKeySequence(Qt::Key_Space));
    playback->addAction(tr("&Stop"), this, &SandboxWindow::stop);
}

void SandboxWindow::fillRecentMenu()
{
    m_recentMenu->clear();
    const QList<Project::RecentEntry> entries = Project::recentProjects();
    if (entries.isEmpty())
        m_recentMenu->addAction(tr("No recent projects"))->setEnabled(false);
    for (const Project::RecentEntry& entry : entries) {
        QAction* action = m_recentMenu->addAction(entry.reachable ? entry.path : tr("%1 (not found)").arg(entry.path));
        action->setEnabled(entry.reachable);
        connect(action, &QAction::triggered, this, [this, path = entry.path] { openProject(path); });
    }
}

void SandboxWindow::buildEditors()
{
    // The edit session of the selected clip: the panel's root editor (the model's worker), and
    // below it the PlayerEditor whose client holds the session's view of the player while the
    // session's own client holds the preview's player.
    m_clipEditor = std::make_unique<ModelEditor>(
        [](const std::set<const Timeline::Clip*>& clips, const Timeline::Object* timeline) {
            return timeline && !clips.empty()
                   && std::all_of(clips.begin(), clips.end(), [timeline](auto* c) { return timeline->contains(c); });
        },
        nullptr);
    m_playerEditor = std::make_unique<PlayerEditor>(*m_clipEditor, m_host.editor(), m_sessionClient);
    m_playerEditor->setPlayerService(&m_sessionPlayer);
    connect(m_clipEditor.get(), &AbstractEditor::load, this, [this] {
        if (!m_host.editor()->canEdit())
            return;
        m_sessionClient->acquire();
        m_playerEditor->playerClient()->acquire();
    });
    // Follows the player while the clip is edited: playback ends the session's hold, and
    // playback running across the clip's end stops on that edge.
    m_tracker = std::make_unique<EditPlaybackTracker>(
        m_playerEditor->playerClient(), m_playerEditor.get(), m_host.editor(),
        [this]() -> const Timeline::Clip* { return m_host.editor()->canEdit() ? m_host.editor()->clip : nullptr; },
        nullptr);
    m_tracker->setPlayback(m_host.playback());
    m_tracker->setStopAtClipEdge(true);

    m_clock = std::make_unique<Model::PlaybackClock>(m_host);
    m_playbackWatch = std::make_unique<PlaybackWatch>();
    m_playbackWatch->moved = [this](Types::Time position) { playbackMoved(position); };
    m_playbackWatch->stopped = [this] { playbackEnded(); };
    m_playbackWatch->observe(m_host.playback());
}

void SandboxWindow::selectForEditing(const Timeline::Clip* clip)
{
    if (m_host.editor()->active)
        m_host.applySession();
    if (!clip || !m_project || !m_project->contains(clip)) {
        m_sessionClient->finalize();
        showPlayer();
        return;
    }
    // Loading the session takes the player (see buildEditors).
    m_host.beginSession(m_project, clip);
    showPlayer();
}

void SandboxWindow::showPlayer()
{
    ExclusiveClient* holder = m_player.holder();
    if (holder && holder == m_browser->client())
        return; // the browser's picture stays until somebody takes the player
    m_preview->showFrame(m_project, m_timeline->playhead());
    const Editor::Object* session = m_host.editor();
    if (holder == m_sessionClient && session->canEdit())
        m_preview->setNote(tr("Editing %1").arg(session->clip->name().toQString()));
    else
        m_preview->setNote(m_playing ? tr("Playing the timeline") : tr("Timeline"));
}

void SandboxWindow::setProjectTimeline(const Timeline::Object* timeline)
{
    stop();
    if (m_host.editor()->active)
        m_host.applySession();
    m_sessionClient->finalize();
    // A project opens on the timeline: a preview shown meanwhile ends.
    if (m_timelineClient->acquire())
        m_timelineClient->finalize();
    m_undo.clear();
    m_project = timeline;
    m_host.setPlaybackTimeline(timeline);
    m_timeline->setTimeline(timeline);
    m_timeline->setPlayhead(0);
    showPlayer();
    m_clipPanel->setClip(m_project, nullptr);
}

void SandboxWindow::newProject()
{
    const Timeline::Object* timeline = m_host.addTimeline("Project");
    m_host.edit(timeline)->addTrack(Timeline::Track::Audio);
    m_projectFiles = std::make_unique<TimelineFileOpenHandler>(timeline);
    m_bin->clear();
    m_thumbnailsPending.clear();
    updateJobs();
    setProjectTimeline(timeline);
    m_projectPath.clear();
    m_projectName = Settings::projectNameDefault();
    m_modified = false;
    updateTitle();
    updateStatus();
}

const Media::File* SandboxWindow::binFile(const QString& path) const
{
    const QString cleaned = Filesystem::cleanPath(path);
    for (const Media::File* file : m_bin->files())
        if (Filesystem::cleanPath(file->path().toQString()) == cleaned)
            return file;
    return nullptr;
}

void SandboxWindow::importFiles(const QStringList& paths,
                                std::function<void(const std::vector<const Media::File*>&)> done)
{
    auto import = std::make_unique<Import>();
    import->change = std::make_unique<TimelineShadowChange>(m_binSource, Timeline::Object::Nested);
    import->handler = std::make_unique<TimelineFileOpenHandler>(import->change->shadowTimeline());
    import->done = std::move(done);
    Import* raw = import.get();
    // Finished from the event loop (the change is not destroyed inside its own signal) once its
    // files are ready and the question about the failed ones is answered, whichever comes last.
    connect(import->change.get(), &TimelineShadowChange::shadowReady, this, [this, raw] {
        raw->ready = true;
        QTimer::singleShot(0, this, [this, raw] { finishImport(raw); });
    });
    import->handler->onSettled = [this, raw] { QTimer::singleShot(0, this, [this, raw] { finishImport(raw);
});
}; // namespace Sandbox
connect(import->change.get(), &TimelineShadowChange::filesProgress, this, &SandboxWindow::updateJobs);
m_imports.push_back(std::move(import));
statusBar()->showMessage(tr("Importing %n file(s)...", nullptr, int(paths.size())));
raw->change->addFiles(paths, FileAdder::ImportPanel);
updateJobs();
}

void SandboxWindow::cancelImports()
{
    if (m_imports.empty())
        return;
    int files = 0;
    for (const auto& import : m_imports)
        files += import->change->filesAdded();
    // The shadow changes go with their files still opening: nothing reaches the bin.
    m_imports.clear();
    statusBar()->showMessage(tr("Import cancelled: %n file(s) not added", nullptr, files), 8000);
    updateJobs();
    emit importCancelled(files);
}

void SandboxWindow::cancelJobs()
{
    if (!m_imports.empty()) {
        cancelImports();
        return;
    }
    // Tiles keep their place without a picture.
    m_bin->cancelThumbnails();
    m_thumbnailsPending.clear();
    statusBar()->showMessage(tr("Thumbnails cancelled"), 5000);
    updateJobs();
}

void SandboxWindow::addToBin(const Media::File* file)
{
    const std::size_t before = m_bin->files().size();
    m_bin->addFile(file);
    if (m_bin->files().size() > before && file->isOpened() && file->mainVideo()
        && m_thumbnailsPending.insert(file).second)
        ++m_thumbnailsAsked;
}

void SandboxWindow::updateJobs()
{
    int added = 0;
    int finished = 0;
    for (const auto& import : m_imports) {
        added += import->change->filesAdded();
        finished += import->change->filesFinished();
    }
    if (!m_imports.empty()) {
        m_jobBar->setFormat(tr("Importing %v of %m file(s)"));
        m_jobBar->setRange(0, added);
        m_jobBar->setValue(finished);
    } else if (m_thumbnailsAsked) {
        m_jobBar->setFormat(tr("Thumbnails %v of %m"));
        m_jobBar->setRange(0, m_thumbnailsAsked);
        m_jobBar->setValue(m_thumbnailsAsked - int(m_thumbnailsPending.size()));
    }
    if (m_thumbnailsPending.empty())
        m_thumbnailsAsked = 0;
    const bool running = !m_imports.empty() || m_thumbnailsAsked;
    m_jobBar->setVisible(running);
    m_jobCancel->setVisible(running);
    // Handed-over files wait for the imports, so that one question covers each import's
    // failures.
    const QString importing = tr("Importing");
    const bool held = m_actions.lockReasons().contains(importing);
    if (!m_imports.empty() && !held)
        m_actions.lock(importing);
    else if (m_imports.empty() && held)
        m_actions.unlock(importing);
}

void SandboxWindow::handOver(const IPC::Request& request, std::function<void()> deliver)
{
    const quint64 ticket = ++m_nextHandover;
    m_handovers[ticket] = std::move(deliver);
    m_actions.propose({QLatin1String(handoverKind),
                       {{QStringLiteral("ticket"), ticket}, {QStringLiteral("files"), request.files}},
                       tr("another start")});
}

void SandboxWindow::finishImport(Import* import)
{
    const auto it =
        std::find_if(m_imports.begin(), m_imports.end(), [import](const auto& i) { return i.get() == import; });
    if (it == m_imports.end() || !import->ready || !import->handler->isSettled())
        return;
    std::unique_ptr<Import> owned = std::move(*it);
    m_imports.erase(it);
    std::vector<const Media::File*> opened;
    int failed = 0;
    for (const Timeline::Clip* clip : owned->change->shadowTimeline()->clips()) {
        const Media::File* file = clip->file();
        if (!file || binFile(file->path().toQString()))
            continue;
        addToBin(file);
        if (file->isOpened())
            opened.push_back(file);
        else
            ++failed;
    }
    statusBar()->showMessage(failed ? tr("Imported %1 file(s), %2 could not be opened").arg(opened.size()).arg(failed)
                                    : tr("Imported %1 file(s)").arg(opened.size()),
                             8000);
    updateStatus();
    updateJobs();
    if (owned->done)
        owned->done(opened);
    emit importFinished(int(opened.size()), failed);
}

void SandboxWindow::placeDropped(const QStringList& paths, Types::Time time, const Timeline::Track* track)
{
    std::vector<const Media::File*> known;
    QStringList unknown;
    for (const QString& path : paths) {
        if (const Media::File* file = binFile(path))
            known.push_back(file);
        else
            unknown << path;
    }
    time = placeFiles(known, time, track, true);
    // Files from the desktop join the bin first.
    if (!unknown.isEmpty())
        importFiles(unknown, [this, time, track](const std::vector<const Media::File*>& files) {
            placeFiles(files, time, track, false);
        });
}

Types::Time SandboxWindow::placeFiles(const std::vector<const Media::File*>& files, Types::Time time,
                                      const Timeline::Track* track, bool select)
{
    ClipPlacementCommand::Placements before; // none of them was on the timeline
    for (const Media::File* file : files) {
        const Timeline::Clip* clip = m_timeline->placeFile(file, time, track);
        if (!clip)
            continue;
        time = m_project->clipTiming(clip).end();
        if (select)
            m_timeline->selectClip(clip);
        before.push_back({clip, std::nullopt, std::nullopt});
        for (const Timeline::Clip* slave : m_project->findSlaves(clip))
            before.push_back({slave, std::nullopt, std::nullopt});
    }
    if (!before.empty())
        m_undo.push(new ClipPlacementCommand(files.size() > 1 ? tr("Add clips") : tr("Add clip"), m_project,
                                             std::move(before)));
    return time;
}

Project::Document SandboxWindow::document() const { return Project::capture(m_project, m_bin->files(), m_projectName); }

bool SandboxWindow::saveProject()
{
    if (m_projectPath.isEmpty()) {
        const QString path = Filesystem::savingProjectPath(m_projectName);
        return !path.isEmpty() && saveProjectAs(path);
    }
    return saveProjectAs(m_projectPath);
}

bool SandboxWindow::saveProjectAs(const QString& path)
{
    const QString name = QFileInfo(path).completeBaseName();
    Project::Document doc = document();
    doc.name = name;
    if (!Project::saveOrWarn(path, doc).ok())
        return false;
    m_projectPath = Filesystem::cleanPath(path);
    m_projectName = name;
    m_modified = false;
    Project::rememberProject(m_projectPath);
    statusBar()->showMessage(tr("Saved %1").arg(m_projectPath), 8000);
    updateTitle();
    return true;
}

QString SandboxWindow::autosaveNow()
{
    const QString path = Project::autosave(document());
    if (!path.isEmpty())
        statusBar()->showMessage(tr("Autosaved to %1").arg(path), 5000);
    return path;
}

bool SandboxWindow::openProject(const QString& path)
{
    Project::Result result = Project::loadOrWarn(path);
    if (!result.ok())
        return false;
    Project::Document& doc = result.document;
    const QStringList missing = Project::missingFiles(doc);
    if (!missing.isEmpty()) {
        // The user names a folder; its whole tree is searched for the lost names.
        QMap<QString, QString> found;
        Filesystem::findMissingFiles(missing, found);
        const int relinked = Project::relink(doc, found);
        const QStringList still = Project::missingFiles(doc);
        if (!still.isEmpty() && still.size() == missing.size() && still.size() >= doc.media.size())
            Dialog::showWarning(tr("Open Project"),
                                tr("None of the media files of this project were found. Its clips are kept and "
                                   "shown as missing."));
        statusBar()->showMessage(tr("%1 of %2 lost file(s) found").arg(relinked).arg(missing.size()), 8000);
    }
    applyDocument(doc, path);
    return true;
}

void SandboxWindow::applyDocument(const Project::Document& doc, const QString& path)
{
    const Timeline::Object* timeline = m_host.addTimeline(doc.name);
    std::map<QString, const Media::File*> files;
    auto fileOf = [&](const QString& filePath) -> const Media::File* {
        if (filePath.isEmpty())
            return nullptr;
        const Media::File*& file = files[filePath];
        if (!file)
            file = m_host.addFile(filePath);
        return file;
    };
    m_projectFiles = std::make_unique<TimelineFileOpenHandler>(timeline);
    m_loadingBin.clear();
    for (const QString& filePath : doc.media)
        m_loadingBin.push_back(fileOf(filePath));
    {
        auto edit = m_host.edit(timeline);
        for (int i = int(edit->tracks().size()); i < doc.trackKinds.size(); ++i)
            edit->addTrack(Timeline::Track::Kind(doc.trackKinds[i]));
        const std::vector<const Timeline::Track*> tracks = edit->tracks();
        std::vector<const Timeline::Clip*> clips;
        for (const Project::ClipEntry& entry : doc.clips) {
            const Timeline::Clip* clip = m_host.addClip(Project::restoreClip(entry, fileOf(entry.file)));
            Timeline::ClipTiming timing(tracks.at(std::size_t(entry.track)), entry.position, entry.length,
                                        entry.offset);
            timing.speed = entry.speed;
            timing.reversed = entry.reversed;
            edit->addClip(clip, timing);
            if (entry.master >= 0)
                edit->addLink(clips[std::size_t(entry.master)], clip, entry.linkOffset);
            clips.push_back(clip);
        }
    }
    m_bin->clear();
    m_thumbnailsPending.clear();
    m_loading.clear();
    for (const auto& entry : files) {
        m_projectFiles->addFile(entry.second);
        observe(entry.second);
        m_loading.push_back(entry.second);
    }
    m_loadingPath = Filesystem::cleanPath(path);
    setProjectTimeline(timeline);
    m_projectPath = m_loadingPath;
    m_projectName = doc.name;
    m_modified = false;
    Project::rememberProject(m_projectPath);
    updateTitle();
    checkLoaded();
}

void SandboxWindow::fileOpened(const Media::File*) { checkLoaded(); }
void SandboxWindow::fileFailed(const Media::File*) { checkLoaded(); }

void SandboxWindow::checkLoaded()
{
    if (m_loading.empty()
        || !std::all_of(m_loading.begin(), m_loading.end(), [](const Media::File* f) { return f->isFinished(); }))
        return;
    for (const Media::File* file : m_loading)
        forget(file);
    m_loading.clear();
    for (const Media::File* file : m_loadingBin)
        addToBin(file);
    m_loadingBin.clear();
    updateJobs();
    showPlayer();
    updateStatus();
    statusBar()->showMessage(tr("Opened %1").arg(m_loadingPath), 8000);
    emit projectLoaded(m_loadingPath);
}

void SandboxWindow::buildSampleProject(const QString& folder, std::function<void(bool)> done)
{
    statusBar()->showMessage(tr("Making sample media in %1...").arg(folder));
    auto* watcher = new QFutureWatcher<QStringList>(this);
    connect(watcher, &QFutureWatcher<QStringList>::finished, this, [this, watcher, done] {
        const QStringList paths = watcher->result();
        watcher->deleteLater();
        if (paths.isEmpty()) {
            statusBar()->showMessage(tr("The sample media could not be made"));
            if (done)
                done(false);
            return;
        }
        importFiles(paths, [this, done](const std::vector<const Media::File*>& files) {
            auto named = [&](const QString& name) -> const Media::File* {
                for (const Media::File* file : files)
                    if (fileName(file) == name)
                        return file;
                return nullptr;
            };
            const Types::Time second = Types::TimeUnitsPerSecond;
            const Timeline::Clip* bars =
                m_timeline->placeFile(named(SampleMedia::barsFile()), 0, m_project->primaryTrack());
            m_timeline->placeFile(named(SampleMedia::stillFile()), bars ? m_project->clipTiming(bars).end() : 0,
                                  m_project->primaryTrack());
            m_timeline->placeFile(named(SampleMedia::shapeFile()), 2 * second, m_project->extraVideoTrack());
            m_timeline->placeFile(named(SampleMedia::toneFile()), 1 * second, m_project->tracks().back());
            m_timeline->setPlayhead(second);
            if (done)
                done(bars != nullptr);
        });
    });
    watcher->setFuture(QtConcurrent::run([folder] { return SampleMedia::ensure(folder); }));
}

void SandboxWindow::play()
{
    if (!m_project || m_playing)
        return;
    const Types::Time at = m_timeline->playhead();
    if (at >= m_project->duration())
        return;
    // The timeline takes the player (the clip's session lets it go); the player's clock moves
    // it and the tracker stops it on the edited clip's end edge.
    m_timelineClient->acquire();
    m_playing = true;
    m_host.setPlaybackCode(Playback::State::Playing);
    const Editor::Object* session = m_host.editor();
    statusBar()->showMessage(session->canEdit() && at < m_project->clipTiming(session->clip).end()
                                 ? tr("Playing to the end of %1").arg(session->clip->name().toQString())
                                 : tr("Playing to the end of the timeline"));
    showPlayer();
}

void SandboxWindow::stop()
{
    if (m_playing)
        m_host.setPlaybackCode(Playback::State::Stopped);
}

void SandboxWindow::playbackMoved(Types::Time position)
{
    m_following = true;
    m_timeline->setPlayhead(position);
    m_following = false;
}

void SandboxWindow::playbackEnded()
{
    if (!m_playing)
        return;
    m_playing = false;
    m_timelineClient->finalize();
    const Types::Time at = m_timeline->playhead();
    statusBar()->showMessage(tr("Stopped at %1").arg(Format::timeMs(at / Types::TimeUnitsPerMillisecond)), 8000);
    showPlayer();
    emit playbackStopped(at);
}

void SandboxWindow::updateTitle()
{
    setWindowTitle(tr("%1%2 - EditorUtil sandbox").arg(m_projectName, m_modified ? QStringLiteral("*") : QString()));
}

void SandboxWindow::updateStatus()
{
    if (!m_project)
        return;
    m_summary->setText(tr("%1 file(s) in the bin   %2 clip(s)   %3")
                           .arg(m_bin->files().size())
                           .arg(m_project->clips().size())
                           .arg(Format::time(int(m_project->duration() / Types::TimeUnitsPerSecond))));
}

} // namespace Sandbox
