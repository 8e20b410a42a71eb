// The sandbox editor: a window built from the library (media bin, timeline, preview, clip
// panel, projects). Without a display, or with --headless, it runs its scripted tour on the
// offscreen platform; --tour runs the tour in a visible window. A start while a window runs
// hands its files to that window and ends; --key KEY pairs only starts given the same key, and
// --hand-over ends with 1 instead of opening a window when none runs.
#include "SandboxWindow.h"
#include "Scripted.h"
#include "Tour.h"

#include <Util/CommandProvider.h>
#include <Util/Dialog/Dialog.h>
#include <Util/Filesystem.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Interfaces/EditorSettings.h>
#include <Util/Launcher.h>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTimer>

#include <glog/logging.h>

#include <cstdio>
#include <cstring>

namespace {

struct Options
{
    bool headless = false;
    bool tour = false;
    bool handOverOnly = false;
    QString key;
    QString screenshots = QStringLiteral("sandbox-shots");
    QStringList files;
};

Options parse(int argc, char** argv)
{
    Options options;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--headless"))
            options.headless = true;
        else if (!std::strcmp(argv[i], "--tour"))
            options.tour = true;
        else if (!std::strcmp(argv[i], "--hand-over"))
            options.handOverOnly = true;
        else if (!std::strcmp(argv[i], "--key") && i + 1 < argc)
            options.key = QString::fromLocal8Bit(argv[++i]);
        else if (!std::strcmp(argv[i], "--screenshots") && i + 1 < argc)
            options.screenshots = QString::fromLocal8Bit(argv[++i]);
        else if (argv[i][0] != '-')
            options.files << QString::fromLocal8Bit(argv[i]);
    }
    // No display to open a window on: the tour runs offscreen (a start that only hands over
    // never shows one).
    if (!options.handOverOnly && qEnvironmentVariableIsEmpty("DISPLAY")
        && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        options.headless = true;
    if (options.headless) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        options.tour = true;
    }
    return options;
}

QString dataFolder()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
    if (!folder.isEmpty() && QDir().mkpath(folder))
        return QDir(folder).filePath(QStringLiteral("samples"));
    return QDir(QDir::tempPath()).filePath(QStringLiteral("editorutil-sandbox-samples"));
}

// While it lives, requests of later starts reach the window through its action gateway.
class HandoverRoute
{
public:
    HandoverRoute(Launcher& launcher, Sandbox::SandboxWindow& window) : m_controller(launcher.controller())
    {
        if (m_controller)
            m_controller->setGateway([&window](const IPC::Request& request, const std::function<void()>& deliver) {
                window.handOver(request, deliver);
            });
    }
    ~HandoverRoute()
    {
        if (m_controller)
            m_controller->setGateway({});
    }

private:
    IPC::Controller* m_controller;
};

// Application commands (from this start's command line and from later starts handed over by
// the launcher) reach the window here. Files handed over one by one are imported together.
class CommandSink : public PubSub::Subscriber<Command::OpenProject>,
                    public PubSub::Subscriber<Command::AddFile>,
                    public PubSub::Subscriber<Command::ShowMainWindow>,
                    public PubSub::Publisher<AppEvents::StartupCompleted>
{
public:
    explicit CommandSink(Sandbox::SandboxWindow& window) : m_window(window)
    {
        subscribe(Command::globalObject());
        m_flush.setSingleShot(true);
        m_flush.setInterval(0);
        QObject::connect(&m_flush, &QTimer::timeout, [this] {
            m_window.importFiles(m_files);
            m_files.clear();
        });
    }
    ~CommandSink() override { unsubscribeEverything(); }

    // Publishes the start-up event; commands recorded so far arrive now. True when any did.
    bool startupCompleted()
    {
        publish(AppEvents::StartupCompleted());
        return m_received;
    }

    void notify(const Command::OpenProject& m) override
    {
        m_received = true;
        m_window.openProject(m.path().toQString());
    }
    void notify(const Command::AddFile& m) override
    {
        m_received = true;
        m_files << m.path().toQString();
        m_flush.start();
    }
    void notify(const Command::ShowMainWindow&) override
    {
        m_window.showNormal();
        m_window.raise();
        m_window.activateWindow();
    }

private:
    Sandbox::SandboxWindow& m_window;
    QStringList m_files;
    QTimer m_flush;
    bool m_received = false;
};

int runTour(const Options& options)
{
    QTemporaryDir work;
    if (!work.isValid()) {
        std::fprintf(stderr, "no scratch folder for the tour\n");
        return 1;
    }
    // The tour keeps its settings, projects and autosaves in its scratch folder.
    Settings::useStoreFile(work.filePath(QStringLiteral("settings.ini")));
    Settings::setProjectPath(work.filePath(QStringLiteral("Projects")));
    auto dialogs = std::make_shared<Scripted::ScriptedStrategy>();
    Dialog::setStrategy(dialogs);
    // The tour's window is the first instance for a key of its own, so the second start it
    // makes reaches it and never a window the user has open.
    const QString program = QApplication::applicationFilePath();
    const QString key = QStringLiteral("tour-%1").arg(QApplication::applicationPid());
    CommandProvider commands(QStringList{program});
    Launcher::Options launch;
    launch.key = key;
    Launcher launcher(&commands, QStringList{program}, launch);
    const bool primary = launcher.start() == IPC::Controller::Role::Primary;
    std::printf("EditorUtil sandbox tour (%s platform), screenshots in %s\n", qPrintable(QApplication::platformName()),
                qPrintable(QDir(options.screenshots).absolutePath()));
    int result = 1;
    {
        Sandbox::SandboxWindow window;
        window.show();
        HandoverRoute route(launcher, window);
        CommandSink sink(window);
        sink.startupCompleted();
        Sandbox::Tour tour(window, *dialogs, dataFolder(), options.screenshots, work.path());
        if (primary)
            tour.setSecondStart(program, {QStringLiteral("--key"), key, QStringLiteral("--hand-over")});
        result = tour.run();
    }
    Dialog::initialize(false);
    return result;
}

} // namespace

int main(int argc, char** argv)
{
    const Options options = parse(argc, argv);
    google::InitGoogleLogging(argv[0]);
    FLAGS_logtostderr = true;
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("EditorUtil Sandbox"));
    QApplication::setOrganizationName(QStringLiteral("EditorUtil"));

    if (options.tour)
        return runTour(options);

    // A second start hands its files to the running window and ends. The launcher delivers
    // this start's own files too, so the provider is given none of them itself.
    const QString program = QApplication::arguments().value(0);
    CommandProvider commands(QStringList{program});
    Launcher::Options launch;
    launch.key = options.key;
    Launcher launcher(&commands, QStringList{program} + options.files, launch);
    if (launcher.start() == IPC::Controller::Role::Secondary)
        return 0;
    if (options.handOverOnly) {
        std::fprintf(stderr, "no running sandbox window took the files\n");
        return 1;
    }

    Dialog::initialize(true);
    Sandbox::SandboxWindow window;
    window.show();
    HandoverRoute route(launcher, window);
    CommandSink sink(window);
    if (!sink.startupCompleted())
        window.buildSampleProject(dataFolder());
    return app.exec();
}
