// A drop of many files onto a timeline, from the drop event to the one question about the files
// that failed, against the same files handed to a shadow change already listed (the import the
// drop is built on, without expansion, ordering or landing); and the JSON of a quiz of 1,000
// questions written and read, against Qt's own JSON of the same document.
// Opening is answered at once (no probing) so that what is measured is the work of the library
// and the model.
//
//   ./build/default/bench/bench_drops --benchmark_counters_tabular=true

#include <Util/Dialog/Dialog.h>
#include <Util/Import/DragAndDropHandler.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Import/QuizUtils.h>
#include <Util/Import/TimelineFileOpenHandler.h>
#include <Util/Import/TimelineShadowChange.h>
#include <Util/Interfaces/EditorModel.h>

#include <QCoreApplication>
#include <QDir>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <map>
#include <memory>

namespace {

// Answers every open from the event loop without reading the file: names ending in "0.mp4"
// (a tenth of them) fail.
class InstantOpener : public Media::Opener
{
public:
    void open(const Types::String& path, Done done) override
    {
        Media::OpenResult result;
        if (QString::fromStdString(path.str()).endsWith(QLatin1String("0.mp4"))) {
            result.errors.push_back(Media::OpenError{36, {}});
        } else {
            result.ok = true;
            result.metadata.videos.emplace_back();
        }
        QTimer::singleShot(0, &m_context, [done = std::move(done), result] { done(result); });
    }

private:
    QObject m_context;
};

// Notes when the failure question is asked.
class TimedStrategy : public Dialog::DialogStrategyEmpty
{
public:
    bool asked = false;
    bool showHasFailedFiles(bool, const QString&) override
    {
        asked = true;
        return true;
    }
};

// A folder of `count` empty files, made once per count.
const QString& folderOf(int count)
{
    static std::map<int, std::unique_ptr<QTemporaryDir>> dirs;
    auto& dir = dirs[count];
    if (!dir) {
        dir = std::make_unique<QTemporaryDir>();
        for (int i = 0; i < count; ++i) {
            QFile file(dir->filePath(QStringLiteral("clip%1.mp4").arg(i)));
            file.open(QIODevice::WriteOnly);
        }
    }
    static std::map<int, QString> paths;
    return paths[count] = dir->path();
}

template <class Start>
void runUntilAsked(benchmark::State& state, Start start)
{
    auto strategy = std::make_shared<TimedStrategy>();
    Dialog::setStrategy(strategy);
    for (auto _ : state) {
        Model::Host host;
        host.setOpener(std::make_shared<InstantOpener>());
        Model::installDefaultServices(host);
        const Timeline::Object* timeline = host.addTimeline("Project");
        strategy->asked = false;
        QElapsedTimer timer;
        timer.start();
        auto keep = start(timeline);
        while (!strategy->asked)
            QCoreApplication::processEvents(QEventLoop::AllEvents);
        state.SetIterationTime(double(timer.nsecsElapsed()) / 1e9);
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
    Dialog::initialize(false);
    state.counters["files"] = double(state.range(0));
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_DropToQuestion(benchmark::State& state)
{
    const QString folder = folderOf(int(state.range(0)));
    runUntilAsked(state, [&folder](const Timeline::Object* timeline) {
        auto handler = std::make_shared<DragAndDropHandler>(timeline);
        QMimeData data;
        MimeUtils::packFiles(&data, {folder});
        QDropEvent event(QPointF(1, 1), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
        handler->dropEvent(&event, DragAndDropHandler::Target::onTimeline(timeline->primaryTrack(), 0));
        return handler;
    });
}
BENCHMARK(BM_DropToQuestion)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseManualTime();

// The import under the drop: the listed files handed to a shadow change and its failure handler.
void BM_ShadowImportToQuestion(benchmark::State& state)
{
    const QString folder = folderOf(int(state.range(0)));
    QStringList files;
    for (int i = 0; i < state.range(0); ++i)
        files << QDir(folder).filePath(QStringLiteral("clip%1.mp4").arg(i));
    runUntilAsked(state, [&files](const Timeline::Object* timeline) {
        struct Import
        {
            explicit Import(const Timeline::Object* t)
                : change(t, Timeline::Object::Project), handler(change.shadowTimeline())
            {}
            TimelineShadowChange change;
            TimelineFileOpenHandler handler;
        };
        auto import = std::make_shared<Import>(timeline);
        import->change.addFiles(files, FileAdder::DragAndDrop, 0, timeline->primaryTrack());
        return import;
    });
}
BENCHMARK(BM_ShadowImportToQuestion)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond)->UseManualTime();

// --- quiz JSON ---------------------------------------------------------------------------------------

Quiz::Utils::Session bigSession()
{
    Quiz::Utils::Session session;
    for (int i = 0; i < 1000; ++i) {
        Quiz::Question q;
        q.text = Types::String("Question number " + std::to_string(i) + " of the big quiz?");
        for (int a = 0; a < 4; ++a)
            q.answers.emplace_back("Answer " + std::to_string(a) + " to question " + std::to_string(i));
        q.correctAnswers = {i % 4};
        session.questions.push_back(std::move(q));
    }
    session.timestamp = 3600 * Types::TimeUnitsPerSecond;
    session.replayFrom = 60 * Types::TimeUnitsPerSecond;
    return session;
}

void BM_QuizWrite(benchmark::State& state)
{
    const Quiz::Utils::Session session = bigSession();
    for (auto _ : state)
        benchmark::DoNotOptimize(Quiz::Utils::write(session));
    state.counters["bytes"] = double(Quiz::Utils::write(session).size());
}
BENCHMARK(BM_QuizWrite)->Unit(benchmark::kMillisecond);

void BM_QuizRead(benchmark::State& state)
{
    const QByteArray text = Quiz::Utils::write(bigSession());
    for (auto _ : state) {
        const auto session = Quiz::Utils::read(text);
        if (!session || session->questions.size() != 1000)
            state.SkipWithError("the quiz did not read back");
        benchmark::DoNotOptimize(session);
    }
}
BENCHMARK(BM_QuizRead)->Unit(benchmark::kMillisecond);

// Qt's JSON alone: the same document parsed and written, nothing checked or converted.
void BM_QtJsonRoundTripBaseline(benchmark::State& state)
{
    const QByteArray text = Quiz::Utils::write(bigSession());
    for (auto _ : state) {
        const QJsonDocument document = QJsonDocument::fromJson(text);
        benchmark::DoNotOptimize(document.toJson(QJsonDocument::Compact));
    }
}
BENCHMARK(BM_QtJsonRoundTripBaseline)->Unit(benchmark::kMillisecond);

} // namespace
