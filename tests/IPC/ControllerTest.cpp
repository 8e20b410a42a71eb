#include <Util/CommandProvider.h>
#include <Util/Launcher.h>

#include <gtest/gtest.h>

#include <QDataStream>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QUuid>

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace {

QString S(const char* text) { return QString::fromUtf8(text); }

// Real instances of IpcInstance sharing one key, one runtime folder and one command log.
class IpcTest : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDir(m_dir.path()).mkpath(S("run")));
        ASSERT_TRUE(QDir(m_dir.path()).mkpath(S("media/sub")));
        m_oldRuntime = qgetenv("XDG_RUNTIME_DIR");
        qputenv("XDG_RUNTIME_DIR", path("run").toUtf8());
    }
    void TearDown() override
    {
        for (auto& p : m_processes) {
            p->kill();
            p->waitForFinished();
        }
        qputenv("XDG_RUNTIME_DIR", m_oldRuntime);
    }

    QString path(const char* relative) const { return m_dir.filePath(S(relative)); }
    QString socketPath() const { return IPC::Controller::serverNameFor(S("IpcInstance"), m_key); }
    QString lockPath() const { return socketPath().replace(S(".sock"), S(".lock")); }

    QProcess* launch(const QStringList& arguments, const std::map<const char*, QString>& env = {},
                     const QString& folder = QString())
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(S("EU_IPC_KEY"), m_key);
        environment.insert(S("EU_IPC_LOG"), path("commands.log"));
        environment.insert(S("EU_IPC_TIMEOUT_MS"), S("5000"));
        for (const auto& [name, value] : env)
            environment.insert(S(name), value);
        process->setProcessEnvironment(environment);
        process->setWorkingDirectory(folder.isEmpty() ? path("media") : folder);
        process->setStandardErrorFile(path("stderr-") + QString::number(m_processes.size()));
        process->start(S(IPC_INSTANCE_PROGRAM), arguments);
        EXPECT_TRUE(process->waitForStarted());
        m_processes.push_back(std::move(process));
        return m_processes.back().get();
    }
    static QString read(const QString& file)
    {
        QFile f(file);
        f.open(QIODevice::ReadOnly);
        return QString::fromUtf8(f.readAll());
    }
    QString errors(const QProcess* process) const
    {
        for (size_t i = 0; i < m_processes.size(); ++i)
            if (m_processes[i].get() == process)
                return read(path("stderr-") + QString::number(i));
        return QString();
    }
    // Lines of the command log, without the process id; `pid` 0 means every instance.
    QStringList commands(qint64 pid = 0, const QString& kind = QString()) const
    {
        QStringList result;
        for (const QString& line : read(path("commands.log")).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            if ((pid == 0 || line.section(QLatin1Char(' '), 0, 0).toLongLong() == pid)
                && line.section(QLatin1Char(' '), 1).startsWith(kind))
                result << line.section(QLatin1Char(' '), 1);
        return result;
    }
    // The pids that announced themselves as the primary, with how ("lock" or "takeover").
    std::map<qint64, QString> primaries() const
    {
        std::map<qint64, QString> result;
        for (const QString& line : read(path("commands.log")).split(QLatin1Char('\n'), Qt::SkipEmptyParts))
            if (line.section(QLatin1Char(' '), 1, 1) == S("PRIMARY"))
                result[line.section(QLatin1Char(' '), 0, 0).toLongLong()] = line.section(QLatin1Char(' '), 2);
        return result;
    }
    QProcess* startPrimary(const std::map<const char*, QString>& env = {})
    {
        QProcess* primary = launch({}, env);
        EXPECT_TRUE(QTest::qWaitFor([&] { return primaries().count(primary->processId()) == 1; }, 10000));
        return primary;
    }
    // Waits for the process to end; true when it ended with status 0.
    static bool finishedWithZero(QProcess* process)
    {
        // waitForFinished() is false for a process that has already ended.
        return (process->state() == QProcess::NotRunning || process->waitForFinished(15000))
               && process->exitStatus() == QProcess::NormalExit && process->exitCode() == 0;
    }
    // Every file of `files` added exactly once over all instances, and each sender's files
    // in its own order.
    void expectEachOnceInOrder(const std::vector<QStringList>& files)
    {
        const QStringList added = commands(0, S("AddFile"));
        for (const QStringList& sender : files) {
            int previous = -1;
            for (const QString& file : sender) {
                const QString line = S("AddFile ") + file;
                EXPECT_EQ(added.count(line), 1) << file.toStdString();
                EXPECT_GT(added.indexOf(line), previous) << file.toStdString();
                previous = added.indexOf(line);
            }
        }
    }
    static QStringList absolute(const QString& folder, const QStringList& names)
    {
        QStringList result;
        for (const QString& name : names)
            result << QDir::cleanPath(folder + QLatin1Char('/') + name);
        return result;
    }

    QTemporaryDir m_dir;
    QString m_key = QUuid::createUuid().toString(QUuid::WithoutBraces);
    QByteArray m_oldRuntime;
    std::vector<std::unique_ptr<QProcess>> m_processes;
};

// 20 starts at once, each with five files of its own: against a primary still in its start-up,
// and with no primary at all (one of them wins).
TEST_F(IpcTest, TwentySimultaneousStartsHandEveryFileToOnePrimaryOnceAndInOrder)
{
    for (const bool primaryRunning : {true, false}) {
        SCOPED_TRACE(primaryRunning ? "primary in its start-up" : "no primary");
        m_key = QUuid::createUuid().toString(QUuid::WithoutBraces);
        QFile::remove(path("commands.log"));
        qint64 primaryPid = 0;
        if (primaryRunning)
            primaryPid = startPrimary({{"EU_IPC_STARTUP_MS", S("500")}})->processId();
        std::vector<QStringList> files;
        std::vector<QProcess*> starts;
        for (int i = 0; i < 20; ++i) {
            QStringList names;
            for (int j = 0; j < 5; ++j)
                names << QStringLiteral("s%1-%2.mp4").arg(i).arg(j);
            files.push_back(absolute(path("media"), names));
            starts.push_back(launch(names));
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return commands(0, S("AddFile")).size() >= 100; }, 15000));
        int secondaries = 0;
        for (QProcess* start : starts)
            if (primaries().count(start->processId()) == 0) {
                EXPECT_TRUE(finishedWithZero(start));
                ++secondaries;
            }
        EXPECT_EQ(secondaries, primaryRunning ? 20 : 19);
        ASSERT_EQ(primaries().size(), 1u);
        if (primaryRunning) {
            EXPECT_EQ(primaries().begin()->first, primaryPid);
        }
        EXPECT_EQ(primaries().begin()->second, S("lock"));
        EXPECT_EQ(commands(0, S("AddFile")).size(), 100);
        expectEachOnceInOrder(files);
        for (auto& p : m_processes)
            p->kill(), p->waitForFinished();
    }
}

// The primary dies by SIGKILL while requests wait in its gateway: the next instance takes the
// dead primary's lock at once (a later start gets one second in all) and no file is lost.
TEST_F(IpcTest, KilledPrimaryIsReplacedByTheNextStartWithoutLosingFiles)
{
    QProcess* primary = startPrimary({{"EU_IPC_GATEWAY_MS", S("100")}});
    std::vector<QStringList> files;
    std::vector<QProcess*> starts;
    for (int i = 0; i < 10; ++i) {
        const QStringList names{QStringLiteral("k%1-a.mp4").arg(i), QStringLiteral("k%1-b.mp4").arg(i)};
        files.push_back(absolute(path("media"), names));
        starts.push_back(launch(names));
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return commands(primary->processId(), S("AddFile")).size() >= 2; }, 10000));
    primary->kill();
    primary->waitForFinished();
    EXPECT_LT(commands(primary->processId(), S("AddFile")).size(), 20);
    starts.push_back(launch({S("late.mp4")}, {{"EU_IPC_TIMEOUT_MS", S("1000")}}));
    files.push_back({path("media/late.mp4")});

    ASSERT_TRUE(QTest::qWaitFor([&] { return commands(0, S("AddFile")).size() >= 21; }, 15000));
    const auto chosen = primaries();
    ASSERT_EQ(chosen.size(), 2u);
    for (const auto& [pid, how] : chosen)
        EXPECT_EQ(how, S("lock")) << pid;
    for (QProcess* start : starts)
        if (chosen.count(start->processId()) == 0) {
            EXPECT_TRUE(finishedWithZero(start));
        }
    EXPECT_EQ(commands(0, S("AddFile")).size(), 21);
    expectEachOnceInOrder(files);
}

// What a crash or another program leaves at the lock and socket paths never blocks a start,
// and the instance that starts serves the next one.
TEST_F(IpcTest, LeftoversAtTheLockAndSocketPathsNeverBlockAStart)
{
    QLocalServer foreign;
    std::unique_ptr<QLockFile> held;
    struct Row
    {
        const char* name;
        std::function<void()> leave;
        const char* becomes;
        const char* logged;
    };
    const std::vector<Row> rows{
        {"lock and socket of a primary killed by SIGKILL",
         [&] {
             QProcess* killed = startPrimary();
             killed->kill();
             killed->waitForFinished();
             EXPECT_TRUE(QFile::exists(lockPath()));
             EXPECT_TRUE(QFile::exists(socketPath()));
         },
         "lock", ""},
        {"lock naming a running process that holds no lock on it",
         [&] {
             // A lock file as this (running) test process would write it, but not locked by it:
             // what a reused or sandboxed process id looks like.
             QLockFile own(path("own.lock"));
             ASSERT_TRUE(own.tryLock(0));
             QFile contents(path("own.lock"));
             contents.open(QIODevice::ReadOnly);
             QFile lock(lockPath());
             ASSERT_TRUE(lock.open(QIODevice::WriteOnly));
             lock.write(contents.readAll());
             lock.flush();
             lock.setFileTime(QDateTime::currentDateTime().addSecs(-10), QFileDevice::FileModificationTime);
         },
         "lock", "removed the lock"},
        {"plain file at the socket path",
         [&] {
             QFile file(socketPath());
             ASSERT_TRUE(file.open(QIODevice::WriteOnly));
         },
         "lock", ""},
        {"socket name served by a foreign program", [&] { ASSERT_TRUE(foreign.listen(socketPath())); }, "lock", ""},
        {"hung primary: lock held, socket accepts and never answers",
         [&] {
             held = std::make_unique<QLockFile>(lockPath());
             ASSERT_TRUE(held->tryLock(0));
             ASSERT_TRUE(foreign.listen(socketPath()));
         },
         "takeover", "the primary did not answer"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        m_key = QUuid::createUuid().toString(QUuid::WithoutBraces);
        QFile::remove(path("commands.log"));
        foreign.close();
        held.reset();
        row.leave();
        QProcess* first = launch({S("first.mp4")}, {{"EU_IPC_TIMEOUT_MS", S("500")}});
        ASSERT_TRUE(QTest::qWaitFor([&] { return commands(0, S("AddFile")).size() == 1; }, 10000));
        EXPECT_EQ(primaries()[first->processId()], S(row.becomes));
        EXPECT_TRUE(errors(first).contains(S(row.logged))) << errors(first).toStdString();
        QProcess* second = launch({S("second.mp4")});
        EXPECT_TRUE(finishedWithZero(second));
        ASSERT_TRUE(QTest::qWaitFor([&] { return commands(0, S("AddFile")).size() == 2; }, 10000));
        EXPECT_EQ(commands(first->processId(), S("AddFile")),
                  QStringList({S("AddFile ") + path("media/first.mp4"), S("AddFile ") + path("media/second.mp4")}));
    }
}

// Starts with odd command lines, each against the same running primary: what the primary's
// command provider publishes for each.
TEST_F(IpcTest, EveryCommandLineReachesThePrimaryAsItsSenderMeantIt)
{
    QProcess* primary = startPrimary();
    // The primary's own start (no files) shows its window once start-up completed.
    ASSERT_TRUE(QTest::qWaitFor([&] { return commands(primary->processId()).size() == 2; }, 5000));
    QStringList many;
    for (int i = 0; i < 10000; ++i)
        many << QStringLiteral("f%1.mp4").arg(i, 5, 10, QLatin1Char('0'));
    struct Row
    {
        const char* name;
        QStringList arguments;
        const char* folder;
        QStringList published;
        const char* logged;
    };
    const std::vector<Row> rows{
        {"no arguments", {}, "media", {S("ShowMainWindow")}, ""},
        {"nonexistent file",
         {S("missing.mp4")},
         "media",
         {S("AddFile ") + path("media/missing.mp4"), S("ShowAddMediaCategory video"), S("ShowMainWindow")},
         "1 of 1 files do not exist"},
        {"relative paths against the sender's folder",
         {S("clip.mp4"), S("../up.mp4"), S("--mode"), S("normal")},
         "media/sub",
         {S("AddFile ") + path("media/sub/clip.mp4"), S("AddFile ") + path("media/up.mp4"),
          S("ShowAddMediaCategory video"), S("ShowMainWindow")},
         ""},
        {"10,000 files", many, "media", {}, "10000 of 10000 files do not exist"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const int before = commands(primary->processId()).size();
        QProcess* start = launch(row.arguments, {{"EU_IPC_CATEGORY", S("video")}}, path(row.folder));
        EXPECT_TRUE(finishedWithZero(start));
        QStringList published = row.published;
        if (published.isEmpty()) {
            for (const QString& file : absolute(path("media"), many))
                published << S("AddFile ") + file;
            published << S("ShowAddMediaCategory video") << S("ShowMainWindow");
        }
        ASSERT_TRUE(
            QTest::qWaitFor([&] { return commands(primary->processId()).size() >= before + published.size(); }, 10000));
        EXPECT_EQ(commands(primary->processId()).mid(before), published);
        EXPECT_TRUE(errors(start).contains(S(row.logged)));
    }
}

// `length` 0: the payload's own size.
QByteArray framed(const QByteArray& payload, quint32 length = 0)
{
    if (length == 0)
        length = quint32(payload.size());
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << length;
    return bytes + payload;
}

// Frames that are not a request of this program are refused one connection at a time; the
// primary logs each and keeps serving.
TEST_F(IpcTest, BadFramesAreRefusedAndLoggedWhileThePrimaryKeepsServing)
{
    QProcess* primary = startPrimary();
    auto payload = [](quint32 magic, quint16 version, quint32 count, bool withPaths) {
        QByteArray bytes;
        QDataStream out(&bytes, QIODevice::WriteOnly);
        out.setVersion(QDataStream::Qt_5_15);
        out << magic << version << quint64(7) << quint8(1) << QString() << QString() << count;
        if (withPaths)
            for (quint32 i = 0; i < count; ++i)
                out << QStringLiteral("/x");
        return bytes;
    };
    struct Row
    {
        const char* name;
        QByteArray bytes;
        const char* logged;
    };
    const QByteArray garbage("hello, are you the editor?");
    // Frames that never end their request: the primary stops taking them in past the limit.
    IPC::Frame part{9, false, {}};
    for (int i = 0; i < IPC::Controller::MaxFilesPerFrame; ++i)
        part.request.files << S("/x");
    QByteArray endless;
    for (int i = 0; i * IPC::Controller::MaxFilesPerFrame <= IPC::Controller::MaxFilesPerRequest; ++i)
        endless += framed(IPC::Controller::encodeFrame(part));
    const std::vector<Row> rows{
        {"oversized frame", framed(QByteArray(16, 'x'), 0x7fffffff), "an oversized frame"},
        {"another program's bytes", framed(garbage), "not a request of this program"},
        {"another protocol version", framed(payload(0x45554950, 99, 0, false)), "protocol version 99"},
        {"paths missing", framed(payload(0x45554950, 1, 3, false)), "truncated"},
        {"too many paths", framed(payload(0x45554950, 1, 20000, true)), "20000 files"},
        {"a request without end", endless, "a request of more than 100000 files"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QLocalSocket socket;
        socket.connectToServer(socketPath());
        ASSERT_TRUE(socket.waitForConnected(5000));
        socket.write(row.bytes);
        ASSERT_TRUE(socket.waitForBytesWritten(5000));
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(5000)) {
        }
        EXPECT_TRUE(socket.state() == QLocalSocket::UnconnectedState || socket.waitForDisconnected(5000));
        EXPECT_TRUE(QTest::qWaitFor([&] { return errors(primary).contains(S(row.logged)); }, 5000))
            << errors(primary).toStdString();
    }
    EXPECT_TRUE(finishedWithZero(launch({S("after.mp4")})));
    EXPECT_TRUE(QTest::qWaitFor([&] { return commands(primary->processId(), S("AddFile")).size() == 1; }, 5000));
    EXPECT_EQ(primary->state(), QProcess::Running);
}

// The payload a start writes is what the primary reads back; trailing bytes are refused.
TEST(IpcFrameTest, FramesDecodeAsEncodedAndDamagedOnesSayWhy)
{
    const IPC::Frame sent{42, false, {{S("/v/a.mp4"), S("/v/été.mov"), QString()}, S("video"), S("slideshow")}};
    const QByteArray payload = IPC::Controller::encodeFrame(sent);
    const auto received = IPC::Controller::decodeFrame(payload);
    ASSERT_TRUE(received);
    EXPECT_EQ(received->id, 42u);
    EXPECT_FALSE(received->final);
    EXPECT_EQ(received->request.files, sent.request.files);
    EXPECT_EQ(received->request.category, S("video"));
    EXPECT_EQ(received->request.mode, S("slideshow"));

    // Damage the primary meets (cut short, foreign bytes, another version) is in the table above.
    QString problem;
    EXPECT_FALSE(IPC::Controller::decodeFrame(payload + 'x', &problem));
    EXPECT_TRUE(problem.contains(S("trailing bytes"))) << problem.toStdString();
}

// A start while the primary is quitting becomes the primary itself: its file is handled once.
TEST_F(IpcTest, StartDuringThePrimarysShutdownHandlesItsOwnFiles)
{
    QProcess* primary = startPrimary({{"EU_IPC_SHUTDOWN_MS", S("1500")}});
    EXPECT_TRUE(finishedWithZero(launch({S("quit")})));
    ASSERT_TRUE(QTest::qWaitFor([&] { return commands(primary->processId(), S("AddFile")).size() == 1; }, 5000));
    // The primary released its lock on its way out.
    ASSERT_TRUE(QTest::qWaitFor([&] { return !QFile::exists(lockPath()); }, 5000));
    QProcess* next = launch({S("next.mp4")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return commands(0, S("AddFile")).size() == 2; }, 10000));
    EXPECT_EQ(commands(0, S("AddFile")).count(S("AddFile ") + path("media/next.mp4")), 1);
    EXPECT_EQ(primaries()[next->processId()], S("lock"));
    EXPECT_EQ(primary->state(), QProcess::Running); // still shutting down
}

// Socket names: short, per user and key, the same in every session, inside the sandbox's
// runtime folder.
TEST(IpcNameTest, SocketPathsStayShortPerUserAndInsideTheSandbox)
{
    const QByteArray runtime = qgetenv("XDG_RUNTIME_DIR");
    const QByteArray sandbox = qgetenv("FLATPAK_ID");
    QTemporaryDir dir;
    QDir(dir.path()).mkpath(S("app/org.example.Editor"));
    qputenv("XDG_RUNTIME_DIR", dir.path().toUtf8());
    qunsetenv("FLATPAK_ID");
    const QString plain = IPC::Controller::serverNameFor(S("Editor"), S("k"));
    EXPECT_TRUE(plain.startsWith(dir.path() + S("/eu-")));
    EXPECT_NE(plain, IPC::Controller::serverNameFor(S("Editor"), S("other key")));
    qputenv("XDG_SESSION_ID", "another session");
    EXPECT_EQ(IPC::Controller::serverNameFor(S("Editor"), S("k")), plain);
    EXPECT_LE(IPC::Controller::serverNameFor(S("Editor"), QString(2000, QLatin1Char('k'))).size(), 100);

    qputenv("FLATPAK_ID", "org.example.Editor");
    EXPECT_TRUE(
        IPC::Controller::serverNameFor(S("Editor"), S("k")).startsWith(dir.path() + S("/app/org.example.Editor/")));

    const QString deep = dir.path() + S("/") + QString(120, QLatin1Char('d'));
    QDir().mkpath(deep);
    qputenv("XDG_RUNTIME_DIR", deep.toUtf8());
    qunsetenv("FLATPAK_ID");
    const QString fallback = IPC::Controller::serverNameFor(S("Editor"), S("k"));
    EXPECT_LE(fallback.size(), 100);
    EXPECT_FALSE(fallback.startsWith(deep));

    qputenv("XDG_RUNTIME_DIR", runtime);
    if (!sandbox.isEmpty())
        qputenv("FLATPAK_ID", sandbox);
}

// The request a start hands over: absolute paths against its folder, its mode, and no values
// of the application's own options among the files.
TEST(IpcNameTest, LauncherRequestHoldsAbsolutePathsAndTheMode)
{
    CommandProvider commands(QStringList{S("editor")});
    Launcher::Options options;
    options.workingDirectory = S("/home/someone/clips");
    options.handoverCategory = S("audio");
    options.options << QCommandLineOption(S("profile"), QString(), S("name"));
    Launcher launcher(&commands,
                      {S("editor"), S("--profile"), S("work"), S("a.mp4"), S("--mode"), S("slideshow"), S("../b.mp4"),
                       S("/abs/c.mp4")},
                      options);
    EXPECT_EQ(launcher.request().files,
              QStringList({S("/home/someone/clips/a.mp4"), S("/home/someone/b.mp4"), S("/abs/c.mp4")}));
    EXPECT_EQ(launcher.request().mode, S("slideshow"));
    EXPECT_EQ(launcher.request().category, S("audio"));
    EXPECT_EQ(launcher.controller(), nullptr);
}

} // namespace
