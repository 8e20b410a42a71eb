// The file-open pipeline's processing pass over a large batch, against a reference that follows
// the steps of the pass literally (every resolve() collects the files stored under code 20 anew),
// and a whole import of small real files against opening the same files alone.
//
//   ./build/release/bench/bench_import --benchmark_counters_tabular=true

#include "common/ThreadClock.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Error.h>
#include <Util/Import/BaseFileOpenHandler.h>
#include <Util/Import/TimelineFileOpenHandler.h>
#include <Util/Import/TimelineShadowChange.h>
#include <Util/Interfaces/Core.h>
#include <Util/Interfaces/EditorModel.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtEndian>

#include <benchmark/benchmark.h>

#include <memory>
#include <set>

namespace {

// Never answers: the benchmark finishes files itself.
class SilentOpener : public Media::Opener
{
public:
    void open(const Types::String&, Done) override {}
};

// Runs processing passes on demand and keeps its batch between them.
class PassHandler : public BaseFileOpenHandler
{
public:
    using BaseFileOpenHandler::files;
    using BaseFileOpenHandler::makeFilesAnalyze;
    using BaseFileOpenHandler::openErrors;

    void watch(const Media::File* file) { fileAdded(file); }
    void runPass() { processing(); }
    AnalyzedProduct lastAnalysis;

protected:
    void postProcessing(bool) override { lastAnalysis = makeFilesAnalyze(); }
    void clear() override {}
};

// The pass as its steps read, with resolve() collecting the code-20 files for every file.
BaseFileOpenHandler::AnalyzedProduct referenceAnalyze(const std::deque<const Media::File*>& files,
                                                      const std::multimap<qint32, const Media::File*>& openErrors)
{
    auto resolve = [&openErrors](const Media::File* file) {
        std::set<const Media::File*> code20;
        const auto range = openErrors.equal_range(20);
        for (auto it = range.first; it != range.second; ++it)
            code20.insert(it->second);
        if (code20.count(file))
            return BaseFileOpenHandler::Code20Failed;
        return file->isFailed() ? BaseFileOpenHandler::OpenFailed : BaseFileOpenHandler::NoError;
    };
    BaseFileOpenHandler::AnalyzedProduct product;
    for (const Media::File* file : files) {
        const BaseFileOpenHandler::ErrorType type = resolve(file);
        if (type != BaseFileOpenHandler::NoError)
            product.failedFiles.insert(file);
        if (type == BaseFileOpenHandler::Code20Failed)
            product.code20Files.insert(file);
    }
    return product;
}

struct ReferencePass
{
    BaseFileOpenHandler::AnalyzedProduct analysis;
    void run(const PassHandler& handler)
    {
        analysis = referenceAnalyze(handler.files(), handler.openErrors());
        if (analysis.failedFiles.empty())
            return;
        QString message;
        if (!analysis.code20Files.empty())
            message +=
                Error::describeTranscodingError(Dravik::Proc::ProcessingError(20, {}, {}, {}, {}, 0), Error::Analyze)
                    .toQString();
        Dialog::showHasFailedFiles(false, message);
    }
};

// A batch of `count` files of which a tenth failed, half of those with code 20.
struct Batch
{
    explicit Batch(int count)
    {
        Dialog::initialize(false);
        host.setOpener(std::make_shared<SilentOpener>());
        for (int i = 0; i < count; ++i) {
            const Media::File* file = host.addFile(Types::String("/batch/file" + std::to_string(i) + ".mp4"));
            handler.watch(file);
            if (i % 10 != 3) {
                host.edit(file)->setOpened(true);
                continue;
            }
            const bool licence = (i / 10) % 2 == 0;
            failures.publish(Media::FileOpenFailedNotification(
                file, {Media::OpenError{licence ? 5 : 36, {}}, Media::OpenError{licence ? 20 : 26, {}}}));
            host.edit(file)->setFailed(true);
        }
        QCoreApplication::removePostedEvents(nullptr); // the benchmark runs passes itself
    }

    Model::Host host;
    PassHandler handler;
    struct : PubSub::Publisher<Media::FileOpenFailedNotification>
    {
    } failures;
};

void setCounters(benchmark::State& state, const BaseFileOpenHandler::AnalyzedProduct& analysis)
{
    state.counters["files"] = double(state.range(0));
    state.counters["failed"] = double(analysis.failedFiles.size());
    state.counters["code20"] = double(analysis.code20Files.size());
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_ProcessingPass(benchmark::State& state)
{
    const int count = int(state.range(0));
    Batch batch(count);
    batch.handler.runPass();
    const auto& analysis = batch.handler.lastAnalysis;
    // Up to 10,000 files the pass is checked against the reference; beyond, the reference takes
    // minutes, and the counts the batch was built with are checked instead.
    bool agrees = analysis.failedFiles.size() == std::size_t(count / 10)
                  && analysis.code20Files.size() == std::size_t(count / 20);
    if (count <= 10000) {
        ReferencePass reference;
        reference.run(batch.handler);
        agrees = agrees && analysis.failedFiles == reference.analysis.failedFiles
                 && analysis.code20Files == reference.analysis.code20Files;
    }
    if (!agrees) {
        state.SkipWithError("the pass and the reference disagree");
        return;
    }
    for (auto _ : state) {
        batch.handler.runPass();
        benchmark::DoNotOptimize(batch.handler.lastAnalysis);
    }
    setCounters(state, batch.handler.lastAnalysis);
}
BENCHMARK(BM_ProcessingPass)->Arg(1000)->Arg(10000)->Arg(100000)->Unit(benchmark::kMillisecond);

// The growth of the pass for 10x more files, measured within each iteration (thread CPU time)
// so that a busy machine slows the sizes alike: after one pass to warm up, 100 passes over 1,000
// files, 10 over 10,000 and one over 100,000. "growth_10k" is the time of a 10,000-file pass over that of a 1,000-file
// pass, "growth_100k" that of 100,000 over 10,000 (goal: at most 11 each).
void BM_ProcessingPassGrowth(benchmark::State& state)
{
    Batch small(1000), middle(10000), large(100000);
    double seconds[3] = {};
    for (auto _ : state) {
        int round = 0;
        for (Batch* batch : {&small, &middle, &large}) {
            const int passes = 100000 / int(batch->handler.files().size());
            batch->handler.runPass(); // each size is measured warm, as BM_ProcessingPass measures it
            const double start = Bench::threadSeconds();
            for (int i = 0; i < passes; ++i)
                batch->handler.runPass();
            const double perPass = (Bench::threadSeconds() - start) / passes;
            seconds[round++] += perPass;
            benchmark::DoNotOptimize(batch->handler.lastAnalysis);
            if (batch == &large)
                state.SetIterationTime(perPass);
        }
    }
    if (large.handler.lastAnalysis.failedFiles.size() != 10000
        || large.handler.lastAnalysis.code20Files.size() != 5000) {
        state.SkipWithError("the pass lost failed files");
        return;
    }
    state.counters["ms_1k"] = seconds[0] / double(state.iterations()) * 1e3;
    state.counters["ms_10k"] = seconds[1] / double(state.iterations()) * 1e3;
    state.counters["ms_100k"] = seconds[2] / double(state.iterations()) * 1e3;
    state.counters["growth_10k"] = seconds[1] / seconds[0];
    state.counters["growth_100k"] = seconds[2] / seconds[1];
}
BENCHMARK(BM_ProcessingPassGrowth)->Iterations(30)->UseManualTime()->Unit(benchmark::kMillisecond);

void BM_ProcessingPassReference(benchmark::State& state)
{
    Batch batch(int(state.range(0)));
    ReferencePass reference;
    for (auto _ : state) {
        reference.run(batch.handler);
        benchmark::DoNotOptimize(reference.analysis);
    }
    setCounters(state, reference.analysis);
}
BENCHMARK(BM_ProcessingPassReference)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);

// --- whole import of small real files -----------------------------------------------------------

QByteArray be32(quint32 v)
{
    QByteArray b(4, '\0');
    qToBigEndian(v, reinterpret_cast<uchar*>(b.data()));
    return b;
}

QByteArray smallMp4(int i)
{
    auto box = [](const char* type, const QByteArray& payload) {
        return be32(quint32(8 + payload.size())) + QByteArray(type, 4) + payload;
    };
    return box("ftyp", QByteArray("isom", 4) + be32(0) + QByteArray("isomavc1", 8)) + box("moov", QByteArray(64, 'm'))
           + box("mdat", QByteArray(512 + i % 64, 'd'));
}

// 1,000 files: 800 small MP4 files, 150 small PNG pictures and 50 files that fail (truncated).
const QStringList& importFiles()
{
    static QTemporaryDir dir;
    static const QStringList files = [] {
        QStringList paths;
        QImage image(16, 16, QImage::Format_RGB32);
        QByteArray picture;
        QBuffer buffer(&picture);
        buffer.open(QIODevice::WriteOnly);
        image.fill(Qt::darkGreen);
        image.save(&buffer, "PNG");
        for (int i = 0; i < 1000; ++i) {
            QByteArray content = i % 20 == 7 ? smallMp4(i).left(40) : i % 20 < 3 ? picture : smallMp4(i);
            const QString path = dir.filePath(QStringLiteral("f%1.%2").arg(i).arg(
                i % 20 < 3 && i % 20 != 7 ? QStringLiteral("png") : QStringLiteral("mp4")));
            QFile file(path);
            if (file.open(QIODevice::WriteOnly))
                file.write(content);
            paths.append(path);
        }
        return paths;
    }();
    return files;
}

void spinUntil(const std::function<bool()>& done)
{
    while (!done())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 5);
}

void BM_ImportPipeline(benchmark::State& state)
{
    const QStringList& files = importFiles();
    Dialog::initialize(false);
    for (auto _ : state) {
        Model::Host host;
        Model::installDefaultServices(host);
        const Timeline::Object* scene = host.addTimeline("Scene");
        TimelineShadowChange change(scene, Timeline::Object::Project);
        TimelineFileOpenHandler handler(change.shadowTimeline());
        bool ready = false;
        QObject::connect(&change, &TimelineShadowChange::shadowReady, [&ready] { ready = true; });
        change.addFiles(files, FileAdder::DragAndDrop);
        spinUntil([&ready] { return ready; });
        state.counters["clips"] = double(change.shadowTimeline()->clips().size());
    }
    state.SetItemsProcessed(state.iterations() * files.size());
}
BENCHMARK(BM_ImportPipeline)->Unit(benchmark::kMillisecond)->UseRealTime();

// Opening the same files alone, through the same opener and event loop.
void BM_OpenFilesOnly(benchmark::State& state)
{
    const QStringList& files = importFiles();
    for (auto _ : state) {
        Media::SignatureOpener opener;
        int answered = 0;
        for (const QString& path : files)
            opener.open(Types::String(path), [&answered](const Media::OpenResult&) { ++answered; });
        spinUntil([&] { return answered == files.size(); });
    }
    state.SetItemsProcessed(state.iterations() * files.size());
}
BENCHMARK(BM_OpenFilesOnly)->Unit(benchmark::kMillisecond)->UseRealTime();

} // namespace
