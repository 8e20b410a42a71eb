#pragma once

#include <Util/IPC/Controller.h>
#include <Util/Import/ActionGateway.h>
#include <Util/Interfaces/DQtUtil.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Project.h>

#include <EditorModel/PlaybackClock.h>
#include <MediaEngine/Engine.h>

#include <QMainWindow>
#include <QTimer>
#include <QUndoStack>

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

class QAbstractButton;
class QLabel;
class QProgressBar;
class QMenu;
class EditPlaybackTracker;
class ModelEditor;
class PlayerEditor;
class TimelineFileOpenHandler;

namespace Sandbox {

class BinView;
class ClipPanel;
class PreviewBrowser;
class PreviewPanel;
class TimelineView;

// The sandbox editor's window: media bin, preview, clip panel, timeline and status line over
// one model whose files the media engine opens. It only wires the library's parts: imports go
// through a shadow change and a file-open handler, projects through Project, lost files
// through the missing-files search, questions through the dialog strategy. The preview's player
// is used by one editor at a time: the timeline (showing and playing it), the edit session of
// the selected clip (a PlayerEditor with an EditPlaybackTracker that stops playback on the
// clip's end edge) or the browser of effects and presets; whoever takes it ends the others'
// use, and playback with it.
class SandboxWindow : public QMainWindow, private Media::View<Media::File>
{
    Q_OBJECT

public:
    explicit SandboxWindow(QWidget* parent = nullptr);
    ~SandboxWindow() override;

    Model::Host& host() { return m_host; }
    BinView* bin() const { return m_bin; }
    TimelineView* timeline() const { return m_timeline; }
    PreviewPanel* preview() const { return m_preview; }
    ClipPanel* clipPanel() const { return m_clipPanel; }
    PreviewBrowser* browser() const { return m_browser; }
    QUndoStack& undoStack() { return m_undo; }
    // The preview's player, and the clients of the timeline and of the clip's edit session.
    ExclusiveService& player() { return m_player; }
    ExclusiveClient* timelineClient() const { return m_timelineClient; }
    ExclusiveClient* sessionClient() const { return m_sessionClient; }
    const PlayerEditor* playerEditor() const { return m_playerEditor.get(); }
    const Timeline::Object* projectTimeline() const { return m_project; }

    // Imports files into the bin (asynchronously); `done` gets the files that opened. The
    // failed files are asked about once, grouped by cause.
    void importFiles(const QStringList& paths, std::function<void(const std::vector<const Media::File*>&)> done = {});
    bool importRunning() const { return !m_imports.empty(); }
    // Drops the running imports: none of their files reaches the bin and their `done` is not
    // called. The files already opening finish in the engine and are forgotten.
    void cancelImports();
    // The status line's progress of the long jobs (importing, then the bin's thumbnails) and
    // its Cancel button, which drops the imports, or else withdraws the thumbnail requests. Both
    // are hidden while nothing runs.
    QProgressBar* jobProgress() const { return m_jobBar; }
    QAbstractButton* jobCancel() const { return m_jobCancel; }
    // The bin's file with that path, or null.
    const Media::File* binFile(const QString& path) const;

    // Projects. A project that cannot be opened leaves the current one as it was.
    void newProject();
    bool openProject(const QString& path);
    bool loading() const { return !m_loading.empty(); }
    bool saveProject();
    bool saveProjectAs(const QString& path);
    QString projectPath() const { return m_projectPath; }
    bool isModified() const { return m_modified; }
    Project::Document document() const;
    QString autosaveNow();

    // Writes the sample media into `folder` (on a worker thread), imports it and lays it out
    // on the timeline; `done` reports whether it worked.
    void buildSampleProject(const QString& folder, std::function<void(bool)> done = {});

    // Files another start hands over go through the window's action gateway: `deliver` runs at
    // once, or when the running imports have ended (the gateway is locked "Importing" while
    // they run), and never once the window is closing.
    void handOver(const IPC::Request& request, std::function<void()> deliver);
    Action::Gateway& actions() { return m_actions; }

    // Plays from the playhead to the selected clip's end edge (or the timeline's end).
    void play();
    void stop();
    bool playing() const { return m_playing; }

Q_SIGNALS:
    void importFinished(int opened, int failed);
    // Running imports were dropped; `files` of them had been asked for.
    void importCancelled(int files);
    void projectLoaded(const QString& path);
    void playbackStopped(Types::Time position);

private:
    struct Import;
    class PlaybackWatch;

    void buildMenus();
    void buildEditors();
    void selectForEditing(const Timeline::Clip* clip);
    void playbackMoved(Types::Time position);
    void playbackEnded();
    void showPlayer();
    void setProjectTimeline(const Timeline::Object* timeline);
    void placeDropped(const QStringList& paths, Types::Time time, const Timeline::Track* track);
    // Puts the files one after another from `time` on `track`, as one command; the time after
    // the last.
    Types::Time placeFiles(const std::vector<const Media::File*>& files, Types::Time time, const Timeline::Track* track,
                           bool select);
    void finishImport(Import* import);
    void addToBin(const Media::File* file);
    void cancelJobs();
    void updateJobs();
    void applyDocument(const Project::Document& document, const QString& path);
    void fileOpened(const Media::File* file) override;
    void fileFailed(const Media::File* file) override;
    void checkLoaded();
    void updateTitle();
    void updateStatus();
    void fillRecentMenu();

    Model::Host m_host;
    MediaEngine::Engine m_engine;
    const Timeline::Object* m_project = nullptr;
    const Timeline::Object* m_binSource = nullptr;
    std::vector<std::unique_ptr<Import>> m_imports;
    std::unique_ptr<TimelineFileOpenHandler> m_projectFiles;
    std::vector<const Media::File*> m_loading;
    std::vector<const Media::File*> m_loadingBin;
    QString m_loadingPath;

    BinView* m_bin;
    TimelineView* m_timeline;
    PreviewPanel* m_preview;
    PreviewBrowser* m_browser;
    ClipPanel* m_clipPanel;
    QLabel* m_summary;
    QProgressBar* m_jobBar;
    QAbstractButton* m_jobCancel;
    std::set<const Media::File*> m_thumbnailsPending;
    int m_thumbnailsAsked = 0; // since the bin last had none pending
    QMenu* m_recentMenu = nullptr;

    QString m_projectPath;
    QString m_projectName;
    bool m_modified = false;
    QTimer m_autosaveTimer;
    QUndoStack m_undo;

    // The preview's player and its users.
    ExclusiveService m_player;
    ExclusiveClient* m_timelineClient;
    ExclusiveClient* m_sessionClient;
    ExclusiveService m_sessionPlayer; // the session's own view of the player
    std::unique_ptr<ModelEditor> m_clipEditor;
    std::unique_ptr<PlayerEditor> m_playerEditor;
    std::unique_ptr<EditPlaybackTracker> m_tracker;
    std::unique_ptr<Model::PlaybackClock> m_clock;
    std::unique_ptr<PlaybackWatch> m_playbackWatch;

    Action::Gateway m_actions;
    std::map<quint64, std::function<void()>> m_handovers; // by ticket, until accepted
    quint64 m_nextHandover = 0;
    bool m_playing = false;
    bool m_following = false; // the playhead follows the player
};

} // namespace Sandbox
