// 100 thumbnails of one picture at 160 x 90 through Util::ThumbnailRequester (the model's
// still-picture thumbnail service behind the bus) against decoding and scaling the same
// picture 100 times with QImageReader. The requester's figure is the time until the last
// thumbnailReady() arrived, with a cold cache in every iteration.
//
//   ./build/default/bench/bench_thumbnails --benchmark_counters_tabular=true

#include <Util/Preview/Resource.h>
#include <Util/Preview/ThumbnailRequester.h>

#include <EditorModel/StillImageThumbnails.h>

#include <QCoreApplication>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QRandomGenerator>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <memory>

namespace {

constexpr int Thumbnails = 100;
const QSize ThumbnailSize(160, 90);

// A 1920 x 1080 picture with gradients and noise, written once per format.
const QString& picturePath(const char* format)
{
    static QTemporaryDir dir;
    static QString paths[2];
    const bool jpeg = qstrcmp(format, "jpg") == 0;
    QString& path = paths[jpeg ? 0 : 1];
    if (path.isEmpty()) {
        QImage image(1920, 1080, QImage::Format_RGB32);
        QPainter painter(&image);
        QLinearGradient gradient(0, 0, 1920, 1080);
        gradient.setColorAt(0, QColor(40, 90, 160));
        gradient.setColorAt(1, QColor(230, 180, 90));
        painter.fillRect(image.rect(), gradient);
        QRandomGenerator random(7);
        for (int i = 0; i < 4000; ++i)
            painter.fillRect(int(random.bounded(1920)), int(random.bounded(1080)), 12, 12,
                             QColor::fromRgb(random.generate()));
        painter.end();
        path = dir.filePath(QString::fromLatin1("picture.") + QString::fromLatin1(format));
        image.save(path, nullptr, 90);
    }
    return path;
}

const char* formatOf(const benchmark::State& state) { return state.range(0) == 0 ? "jpg" : "png"; }

// The baseline: what a program without the service does for each thumbnail.
void DirectDecodeAndScale(benchmark::State& state)
{
    const QString path = picturePath(formatOf(state));
    for (auto _ : state) {
        for (int i = 0; i < Thumbnails; ++i) {
            QImageReader reader(path);
            const QImage thumbnail =
                reader.read().scaled(ThumbnailSize, Qt::KeepAspectRatioByExpanding, Qt::SmoothTransformation);
            benchmark::DoNotOptimize(thumbnail.constBits());
        }
    }
    state.counters["thumbnails"] = Thumbnails;
}

// The requester asks for `times(i)` for i in 0..99, at the size `sizes(i)`, and waits for
// the last frame.
template <class Times, class Sizes>
void Requester(benchmark::State& state, Times times, Sizes sizes)
{
    const QString path = picturePath(formatOf(state));
    Model::Host host;
    const auto resource = Resource::encode(path, Resource::Video, 0);
    QList<qint64> requested;
    for (int i = 0; i < Thumbnails; ++i)
        requested << times(i);
    int decodes = 0;
    for (auto _ : state) {
        state.PauseTiming();
        // A new service each time: nothing decoded before.
        auto service = std::make_shared<Thumbnail::StillImageProvider>(host);
        host.setThumbnailProvider(service);
        Util::ThumbnailRequester requester(resource, nullptr);
        int received = 0;
        QObject::connect(&requester, &Util::ThumbnailRequester::thumbnailReady, [&](Types::Time, const QPixmap& frame) {
            ++received;
            benchmark::DoNotOptimize(frame.cacheKey());
        });
        state.ResumeTiming();

        for (int i = 0; i < requested.size(); ++i) {
            requester.setSize(sizes(i));
            requester.request(requested.at(i));
        }
        while (received < requested.size())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);

        state.PauseTiming();
        decodes += service->decodeCount();
        state.ResumeTiming();
    }
    state.counters["thumbnails"] = Thumbnails;
    state.counters["decodes"] = benchmark::Counter(decodes, benchmark::Counter::kAvgIterations);
}

QSize sameSize(int) { return ThumbnailSize; }

void RequesterSeveralTimes(benchmark::State& state)
{
    Requester(
        state, [](int i) { return qint64(i) * 400000; }, sameSize);
}

void RequesterSameTime(benchmark::State& state)
{
    Requester(
        state, [](int) { return qint64(0); }, sameSize);
}

// Every request of another size: nothing can be shared, each thumbnail is a decode of its
// own, which shows what the bus and the service add to the decoding itself.
void RequesterDistinctSizes(benchmark::State& state)
{
    Requester(
        state, [](int i) { return qint64(i) * 400000; }, [](int i) { return ThumbnailSize + QSize(i, 0); });
}

} // namespace

// Argument 0: JPEG, 1: PNG.
BENCHMARK(DirectDecodeAndScale)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(RequesterSeveralTimes)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(RequesterSameTime)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(RequesterDistinctSizes)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
