// The sandbox editor: a window built from the library (media bin, timeline, preview, clip
// panel, projects). Without a display, or with --headless, it runs its scripted tour on the
// offscreen platform; --tour runs the tour in a visible window.
#include "SandboxWindow.h"
#include "Scripted.h"
#include "Tour.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Filesystem.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <glog/logging.h>

#include <cstdio>
#include <cstring>

namespace {

struct Options
{
    bool headless = false;
    bool tour = false;
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
        else if (!std::strcmp(argv[i], "--screenshots") && i + 1 < argc)
            options.screenshots = QString::fromLocal8Bit(argv[++i]);
        else if (argv[i][0] != '-')
            options.files << QString::fromLocal8Bit(argv[i]);
    }
    // No display to open a window on: the tour runs offscreen.
    if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")
        && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
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
    std::printf("EditorUtil sandbox tour (%s platform), screenshots in %s\n", qPrintable(QApplication::platformName()),
                qPrintable(QDir(options.screenshots).absolutePath()));
    int result = 1;
    {
        Sandbox::SandboxWindow window;
        window.show();
        Sandbox::Tour tour(window, *dialogs, dataFolder(), options.screenshots, work.path());
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

    Dialog::initialize(true);
    Sandbox::SandboxWindow window;
    window.show();
    const QStringList projects = Filesystem::extractProjectFiles(options.files);
    if (!projects.isEmpty())
        window.openProject(projects.front());
    else if (!options.files.isEmpty())
        window.importFiles(options.files);
    else
        window.buildSampleProject(dataFolder());
    return app.exec();
}
