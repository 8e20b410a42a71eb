// One start of an editor for the handover tests: a Launcher over a CommandProvider, whose
// published commands it appends to a shared log file as "<pid> <command> <argument>".
//
// Environment: EU_IPC_KEY (the controller key), EU_IPC_LOG (the log file), EU_IPC_TIMEOUT_MS,
// EU_IPC_CATEGORY, EU_IPC_STARTUP_MS (start-up completes this late), EU_IPC_GATEWAY_MS (every
// received request waits this long in the gateway), EU_IPC_SHUTDOWN_MS (quitting takes this
// long after the controller stopped), EU_IPC_PLAIN (exit before the handover, as a baseline).
// A handed-over file named "quit" ends the primary.
#include <Util/CommandProvider.h>
#include <Util/Launcher.h>

#include <EditorModel/GlobalObjects.h>
#include <PubSub/PubSub.h>

#include <glog/logging.h>

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QThread>
#include <QTimer>

namespace {

int envInt(const char* name, int fallback)
{
    bool ok = false;
    const int value = qEnvironmentVariableIntValue(name, &ok);
    return ok ? value : fallback;
}

class Recorder : public PubSub::Subscriber<Command::OpenProject>,
                 public PubSub::Subscriber<Command::AddFile>,
                 public PubSub::Subscriber<Command::ShowMainWindow>,
                 public PubSub::Subscriber<Command::ShowAddMediaCategory>
{
public:
    explicit Recorder(const QString& path) : m_file(path)
    {
        m_file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered);
        subscribe(Command::globalObject());
    }
    ~Recorder() override { unsubscribeEverything(); }

    void write(const QString& line)
    {
        m_file.write((QString::number(QCoreApplication::applicationPid()) + QLatin1Char(' ') + line + QLatin1Char('\n'))
                         .toUtf8());
    }

    void notify(const Command::OpenProject& m) override
    {
        write(QStringLiteral("OpenProject ") + m.path().toQString());
    }
    void notify(const Command::AddFile& m) override
    {
        write(QStringLiteral("AddFile ") + m.path().toQString());
        if (QFileInfo(m.path().toQString()).fileName() == QLatin1String("quit"))
            QTimer::singleShot(0, QCoreApplication::instance(), &QCoreApplication::quit);
    }
    void notify(const Command::ShowMainWindow&) override { write(QStringLiteral("ShowMainWindow")); }
    void notify(const Command::ShowAddMediaCategory& m) override
    {
        write(QStringLiteral("ShowAddMediaCategory ") + m.category().toQString());
    }

private:
    QFile m_file;
};

class Application : public PubSub::Publisher<AppEvents::StartupCompleted>
{
public:
    void startupCompleted() { publish(AppEvents::StartupCompleted()); }
};

} // namespace

int main(int argc, char** argv)
{
    google::InitGoogleLogging(argv[0]);
    FLAGS_logtostderr = true;
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("IpcInstance"));

    Recorder recorder(qEnvironmentVariable("EU_IPC_LOG"));
    CommandProvider commands;
    if (qEnvironmentVariableIsSet("EU_IPC_PLAIN")) // a start without the handover, for comparison
        return 0;
    Launcher::Options options;
    options.key = qEnvironmentVariable("EU_IPC_KEY");
    options.timeoutMs = envInt("EU_IPC_TIMEOUT_MS", 2000);
    options.handoverCategory = qEnvironmentVariable("EU_IPC_CATEGORY");
    Launcher launcher(&commands, QCoreApplication::arguments(), options);
    if (launcher.start() == IPC::Controller::Role::Secondary)
        return 0;

    IPC::Controller* controller = launcher.controller();
    recorder.write(controller->tookOver() ? QStringLiteral("PRIMARY takeover") : QStringLiteral("PRIMARY lock"));
    const int gatewayMs = envInt("EU_IPC_GATEWAY_MS", 0);
    if (gatewayMs > 0)
        controller->setGateway([gatewayMs](const IPC::Request&, const std::function<void()>& deliver) {
            QThread::msleep(gatewayMs);
            deliver();
        });
    Application application;
    QTimer::singleShot(envInt("EU_IPC_STARTUP_MS", 0), [&application] { application.startupCompleted(); });
    // A primary whose test died before sending "quit" must not outlive it for long.
    QTimer::singleShot(envInt("EU_IPC_LIFETIME_MS", 60000), &app, &QCoreApplication::quit);
    const int result = app.exec();
    QThread::msleep(envInt("EU_IPC_SHUTDOWN_MS", 0));
    return result;
}
