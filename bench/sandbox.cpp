// The sandbox editor's window, each figure against a plain Qt baseline in the same process:
// - start to the first painted window with the sample project open, vs a bare QMainWindow of
//   the same size to its first paint;
// - importing 200 generated pictures until every thumbnail is shown in the bin, vs decoding
//   and scaling the same pictures with QImageReader; the longest stretch the event loop was
//   blocked during the import is reported too (goal: under 100 ms);
// - a timeline of 10,000 clips scrolled and zoomed: the time of one painted frame, vs a bare
//   QGraphicsView painting 10,000 rectangles (goal: under 16 ms).
//
//   ./build/default/bench/bench_sandbox --benchmark_counters_tabular=true

#include "BinView.h"
#include "SampleMedia.h"
#include "SandboxWindow.h"
#include "Scripted.h"
#include "TimelineView.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QDir>
#include <QElapsedTimer>
#include <QGraphicsRectItem>
#include <QGraphicsView>
#include <QImage>
#include <QImageReader>
#include <QMainWindow>
#include <QPainter>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>

namespace {

using Sandbox::SandboxWindow;

constexpr Types::Time second = Types::TimeUnitsPerSecond;
constexpr int Pictures = 200;
constexpr int Clips = 10000;

QTemporaryDir& scratch()
{
    static QTemporaryDir dir;
    return dir;
}

void useScriptedDialogs()
{
    static const bool once = [] {
        Settings::useStoreFile(scratch().filePath(QStringLiteral("settings.ini")));
        Settings::setProjectPath(scratch().filePath(QStringLiteral("Projects")));
        Dialog::setStrategy(std::make_shared<Scripted::ScriptedStrategy>());
        return true;
    }();
    (void)once;
}

// Counts the paint events a widget gets.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget* widget) { widget->installEventFilter(this); }
    int paints = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint)
            ++paints;
        return false;
    }
};

// The sample project, built and saved once.
const QString& sampleProject()
{
    static QString path;
    if (path.isEmpty()) {
        useScriptedDialogs();
        SandboxWindow window;
        bool built = false;
        bool done = false;
        window.buildSampleProject(scratch().filePath(QStringLiteral("samples")), [&](bool ok) {
            built = ok;
            done = true;
        });
        Scripted::waitFor([&] { return done; }, 120000);
        const QString target = scratch().filePath(QStringLiteral("sample.dscproj"));
        if (built && window.saveProjectAs(target))
            path = target;
    }
    return path;
}

void PlainWindowFirstPaint(benchmark::State& state)
{
    for (auto _ : state) {
        auto window = std::make_unique<QMainWindow>();
        window->resize(1400, 860);
        PaintCounter counter(window.get());
        window->show();
        Scripted::waitFor([&] { return counter.paints > 0; }, 10000);
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}

void SandboxFirstPaintWithSampleProject(benchmark::State& state)
{
    const QString project = sampleProject();
    if (project.isEmpty()) {
        state.SkipWithError("the sample project could not be made");
        return;
    }
    for (auto _ : state) {
        auto window = std::make_unique<SandboxWindow>();
        PaintCounter counter(window.get());
        QSignalSpy loaded(window.get(), &SandboxWindow::projectLoaded);
        window->openProject(project);
        window->show();
        Scripted::waitFor([&] { return counter.paints > 0 && loaded.count() == 1; }, 20000);
        state.PauseTiming();
        window.reset();
        state.ResumeTiming();
    }
}

// 200 pictures of 640 x 360, each with its own pattern.
const QStringList& pictures()
{
    static QStringList paths;
    if (paths.isEmpty()) {
        QDir().mkpath(scratch().filePath(QStringLiteral("pictures")));
        for (int i = 0; i < Pictures; ++i) {
            QImage image(640, 360, QImage::Format_RGB32);
            image.fill(QColor::fromHsv((i * 37) % 360, 160, 200));
            QPainter painter(&image);
            painter.setBrush(Qt::white);
            painter.drawEllipse(QPoint(20 + 3 * i, 180), 40, 40);
            painter.end();
            const QString path =
                scratch().filePath(QStringLiteral("pictures/picture-%1.png").arg(i, 3, 10, QLatin1Char('0')));
            image.save(path);
            paths << path;
        }
    }
    return paths;
}

void DirectDecodeOf200Pictures(benchmark::State& state)
{
    const QStringList& paths = pictures();
    for (auto _ : state) {
        for (const QString& path : paths) {
            QImageReader reader(path);
            const QImage thumbnail = reader.read().scaled(QSize(Sandbox::BinView::tileWidth - 18, 72),
                                                          Qt::KeepAspectRatio, Qt::SmoothTransformation);
            benchmark::DoNotOptimize(thumbnail.constBits());
        }
    }
    state.counters["files"] = Pictures;
}

void SandboxImportOf200PicturesToAllThumbnails(benchmark::State& state)
{
    useScriptedDialogs();
    const QStringList& paths = pictures();
    qint64 longestBlock = 0;
    for (auto _ : state) {
        state.PauseTiming();
        auto window = std::make_unique<SandboxWindow>();
        window->show();
        Scripted::waitFor([] { return false; }, 50);
        // The longest gap between two turns of a 5 ms timer tells how long the window froze.
        QElapsedTimer sinceTick;
        QTimer ticker;
        ticker.setInterval(5);
        QObject::connect(&ticker, &QTimer::timeout,
                         [&] { longestBlock = std::max(longestBlock, sinceTick.restart()); });
        state.ResumeTiming();

        sinceTick.start();
        ticker.start();
        window->importFiles(paths);
        Scripted::waitFor([&] { return !window->importRunning() && window->bin()->thumbnailCount() == Pictures; },
                          120000);
        ticker.stop();

        state.PauseTiming();
        if (window->bin()->thumbnailCount() != Pictures)
            state.SkipWithError("not every thumbnail arrived");
        window.reset();
        state.ResumeTiming();
    }
    state.counters["files"] = Pictures;
    state.counters["longest_block_ms"] = double(longestBlock);
}

// A timeline of 10,000 two-second clips, two by two on the video and overlay tracks.
std::unique_ptr<SandboxWindow> windowWith10000Clips()
{
    useScriptedDialogs();
    auto window = std::make_unique<SandboxWindow>();
    Model::Host& host = window->host();
    const Timeline::Object* timeline = window->projectTimeline();
    {
        auto edit = host.edit(timeline);
        for (int i = 0; i < Clips; ++i) {
            const Timeline::Track* track = i % 2 == 0 ? timeline->primaryTrack() : timeline->extraVideoTrack();
            const Timeline::Clip* clip = host.addClip(
                Timeline::Clip(Timeline::Clip::Color).setName(Types::String(QStringLiteral("clip %1").arg(i))));
            edit->addClip(clip, Timeline::ClipTiming(track, Types::Time(i / 2) * 2 * second, 2 * second));
        }
    }
    window->show();
    Scripted::waitFor([] { return false; }, 100);
    return window;
}

// One step of the frames: a scroll by a screen's third across the whole timeline, every
// eighth frame also zooming between 1x and 1/8x.
template <class View>
void paintFrames(benchmark::State& state, View* view)
{
    QScrollBar* bar = view->horizontalScrollBar();
    int frame = 0;
    double longest = 0;
    for (auto _ : state) {
        if (frame % 8 == 0) {
            const double zoom = 1.0 / double(1 << ((frame / 8) % 4));
            view->setTransform(QTransform::fromScale(zoom, 1));
        }
        const int step = std::max(1, view->viewport()->width() / 3);
        bar->setValue(bar->value() + step > bar->maximum() ? bar->minimum() : bar->value() + step);
        QElapsedTimer timer;
        timer.start();
        view->viewport()->repaint();
        longest = std::max(longest, double(timer.nsecsElapsed()) / 1e6);
        ++frame;
    }
    state.counters["items"] = double(view->scene()->items().size());
    state.counters["longest_frame_ms"] = longest;
}

void PlainViewFrameOf10000Rectangles(benchmark::State& state)
{
    QGraphicsScene scene;
    for (int i = 0; i < Clips; ++i) {
        auto* item =
            scene.addRect(QRectF(Sandbox::TimelineView::xOf(Types::Time(i / 2) * 2 * second),
                                 (i % 2) * Sandbox::TimelineView::trackHeight * 4,
                                 2 * Sandbox::TimelineView::pixelsPerSecond, Sandbox::TimelineView::trackHeight - 8),
                          QPen(Qt::black), QColor(70, 110, 190));
        benchmark::DoNotOptimize(item);
    }
    QGraphicsView view(&scene);
    view.resize(1400, 340);
    view.show();
    Scripted::waitFor([] { return false; }, 100);
    paintFrames(state, &view);
}

void SandboxTimelineFrameOf10000Clips(benchmark::State& state)
{
    const std::unique_ptr<SandboxWindow> window = windowWith10000Clips();
    if (window->projectTimeline()->clips().size() != std::size_t(Clips)) {
        state.SkipWithError("the timeline did not take the clips");
        return;
    }
    paintFrames(state, window->timeline());
}

} // namespace

BENCHMARK(PlainWindowFirstPaint)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);
BENCHMARK(SandboxFirstPaintWithSampleProject)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(10);
BENCHMARK(DirectDecodeOf200Pictures)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(SandboxImportOf200PicturesToAllThumbnails)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(3);
BENCHMARK(PlainViewFrameOf10000Rectangles)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(200);
BENCHMARK(SandboxTimelineFrameOf10000Clips)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(200);
