// Second-instance handover: from the start of a secondary (the test program IpcInstance) to
// the moment this process, the primary, receives its file as a Command::AddFile from its
// command provider, over 100 runs; against a plain start of the same program that exits at
// once (EU_IPC_PLAIN). The difference of the medians is what a handover adds to a start
// (goal: under 20 ms). Run:
//   ./build/default/bench/bench_handover
#include <Util/CommandProvider.h>
#include <Util/Launcher.h>

#include <EditorModel/GlobalObjects.h>
#include <PubSub/PubSub.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QProcess>
#include <QTemporaryDir>
#include <QTimer>
#include <QUuid>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <vector>

namespace {

const int kRuns = 100;

double percentile99(const std::vector<double>& values)
{
    std::vector<double> sorted = values;
    std::sort(sorted.begin(), sorted.end());
    return sorted[std::min(sorted.size() - 1, size_t(double(sorted.size()) * 0.99))];
}

QProcess* instance(const QString& key, bool plain)
{
    auto* process = new QProcess;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("EU_IPC_KEY"), key);
    if (plain)
        environment.insert(QStringLiteral("EU_IPC_PLAIN"), QStringLiteral("1"));
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    return process;
}

// A plain start: process start to exit.
void BM_PlainStart(benchmark::State& state)
{
    const QString key = QUuid::createUuid().toString();
    for (auto _ : state) {
        std::unique_ptr<QProcess> process(instance(key, true));
        QElapsedTimer clock;
        clock.start();
        process->start(QStringLiteral(IPC_INSTANCE_PROGRAM), {QStringLiteral("clip.mp4")});
        process->waitForFinished();
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
    }
}

class Receiver : public PubSub::Subscriber<Command::AddFile>, public PubSub::Publisher<AppEvents::StartupCompleted>
{
public:
    Receiver() { subscribe(Command::globalObject()); }
    ~Receiver() override { unsubscribeEverything(); }
    void startupCompleted() { publish(AppEvents::StartupCompleted()); }
    void notify(const Command::AddFile&) override
    {
        ++received;
        loop.quit();
    }
    int received = 0;
    QEventLoop loop;
};

// A secondary's start to its file at this primary's command provider.
void BM_Handover(benchmark::State& state)
{
    // The secondaries are IpcInstance programs: register under their name so they find us.
    QCoreApplication::setApplicationName(QStringLiteral("IpcInstance"));
    const QString key = QUuid::createUuid().toString();
    CommandProvider commands(QStringList{QStringLiteral("bench")});
    Launcher::Options options;
    options.key = key;
    Launcher launcher(&commands, {QStringLiteral("bench")}, options);
    if (launcher.start() != IPC::Controller::Role::Primary) {
        state.SkipWithError("this process did not become the primary");
        return;
    }
    Receiver receiver;
    receiver.startupCompleted();
    QCoreApplication::processEvents();
    for (auto _ : state) {
        std::unique_ptr<QProcess> process(instance(key, false));
        const int before = receiver.received;
        QElapsedTimer clock;
        clock.start();
        process->start(QStringLiteral(IPC_INSTANCE_PROGRAM), {QStringLiteral("clip.mp4")});
        QTimer::singleShot(10000, &receiver.loop, &QEventLoop::quit);
        while (receiver.received == before && process->state() != QProcess::NotRunning)
            receiver.loop.exec();
        state.SetIterationTime(double(clock.nsecsElapsed()) / 1e9);
        if (receiver.received == before)
            state.SkipWithError("the secondary's file never arrived");
        process->waitForFinished();
    }
}

void configure(benchmark::internal::Benchmark* b)
{
    b->UseManualTime()
        ->Iterations(1)
        ->Repetitions(kRuns)
        ->ReportAggregatesOnly(true)
        ->ComputeStatistics("p99", percentile99)
        ->Unit(benchmark::kMillisecond);
}

} // namespace

BENCHMARK(BM_PlainStart)->Apply(configure);
BENCHMARK(BM_Handover)->Apply(configure);
