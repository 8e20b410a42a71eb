// Media engine against the plain ways of doing the same work in one program:
//  - probing 200 small files on the engine's pool vs a sequential avformat loop,
//  - a 160x90 thumbnail of a 1080p frame vs seeking and decoding it by hand, and vs one
//    ffmpeg process per thumbnail,
//  - a strip of 10 thumbnails inside one group of pictures vs decoding that group once,
//  - a repeated thumbnail answered from the frame cache.
#include <MediaEngine/Engine.h>
#include <MediaEngine/FrameDecoder.h>
#include <MediaEngine/Probe.h>

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/log.h>
#include <libswscale/swscale.h>
}

#include <memory>
#include <stdexcept>

#include <sys/resource.h>

namespace {

constexpr int probeFileCount = 200;
// Thumbnails are taken at 1 s (25 frames after a key frame: decoding dominates) and at 2 s
// (a key frame: opening the file dominates); key frames come every 2 s.
const QSize thumbnailSize(160, 90);

void ffmpeg(QStringList arguments, const QString& output)
{
    arguments = QStringList{QStringLiteral("-y"), QStringLiteral("-loglevel"), QStringLiteral("error")} + arguments;
    arguments << output;
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), arguments);
    if (!process.waitForFinished(120000) || process.exitCode() != 0)
        throw std::runtime_error("ffmpeg could not make " + output.toStdString());
}

QStringList lavfi(const char* graph)
{
    return {QStringLiteral("-f"), QStringLiteral("lavfi"), QStringLiteral("-i"), QLatin1String(graph)};
}

struct Media
{
    QTemporaryDir folder;
    QStringList smallFiles;
    QString hd;

    Media()
    {
        av_log_set_level(AV_LOG_QUIET);
        const QString mp4 = folder.filePath(QStringLiteral("small.mp4"));
        const QString mkv = folder.filePath(QStringLiteral("small.mkv"));
        const QString wav = folder.filePath(QStringLiteral("small.wav"));
        const QString png = folder.filePath(QStringLiteral("small.png"));
        ffmpeg(lavfi("testsrc=size=320x240:rate=25:duration=1") + lavfi("sine=duration=1")
                   + QStringList{QStringLiteral("-c:v"), QStringLiteral("libx264"), QStringLiteral("-preset"),
                                 QStringLiteral("ultrafast"), QStringLiteral("-c:a"), QStringLiteral("aac")},
               mp4);
        ffmpeg(lavfi("testsrc=size=320x240:rate=25:duration=1")
                   + QStringList{QStringLiteral("-c:v"), QStringLiteral("mpeg4")},
               mkv);
        ffmpeg(lavfi("sine=duration=1"), wav);
        ffmpeg(lavfi("testsrc=size=320x240") + QStringList{QStringLiteral("-frames:v"), QStringLiteral("1")}, png);
        const QStringList sources = {mp4, mkv, wav, png};
        for (int i = 0; i < probeFileCount; ++i) {
            const QString& source = sources[i % sources.size()];
            const QString copy = folder.filePath(QStringLiteral("file%1.%2").arg(i).arg(QFileInfo(source).suffix()));
            QFile::copy(source, copy);
            smallFiles << copy;
        }
        hd = folder.filePath(QStringLiteral("hd.mp4"));
        ffmpeg(lavfi("testsrc2=size=1920x1080:rate=25:duration=3")
                   + QStringList{QStringLiteral("-c:v"), QStringLiteral("libx264"), QStringLiteral("-preset"),
                                 QStringLiteral("veryfast"), QStringLiteral("-pix_fmt"), QStringLiteral("yuv420p"),
                                 QStringLiteral("-g"), QStringLiteral("50")},
               hd);
    }
};

Media& media()
{
    static Media instance;
    return instance;
}

// CPU time of the whole process (all threads), in milliseconds: on a machine shared with
// other work, the wall time of a parallel run says less than how much work it did.
double processCpuMs()
{
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1e3
           + (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e3;
}

// What a developer writes without the engine: open, read the streams, close.
bool probeByHand(const QString& path)
{
    AVFormatContext* context = nullptr;
    const QByteArray name = QFile::encodeName(path);
    if (avformat_open_input(&context, name.constData(), nullptr, nullptr) < 0)
        return false;
    const bool ok = avformat_find_stream_info(context, nullptr) >= 0;
    avformat_close_input(&context);
    return ok;
}

void BM_ProbeSequentialLoop(benchmark::State& state)
{
    const QStringList& files = media().smallFiles;
    const double cpuBefore = processCpuMs();
    for (auto _ : state)
        for (const QString& file : files)
            benchmark::DoNotOptimize(probeByHand(file));
    state.counters["files"] = double(files.size());
    state.counters["process_cpu_ms"] = (processCpuMs() - cpuBefore) / double(state.iterations());
}
BENCHMARK(BM_ProbeSequentialLoop)->Unit(benchmark::kMillisecond)->UseRealTime();

// The engine's probing step alone, one file after the other on the calling thread.
void BM_ProbeFileSequential(benchmark::State& state)
{
    const QStringList& files = media().smallFiles;
    for (auto _ : state)
        for (const QString& file : files)
            benchmark::DoNotOptimize(MediaEngine::probeFile(file).ok());
    state.counters["files"] = double(files.size());
}
BENCHMARK(BM_ProbeFileSequential)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ProbeEnginePool(benchmark::State& state)
{
    const QStringList& files = media().smallFiles;
    MediaEngine::Engine engine;
    const double cpuBefore = processCpuMs();
    for (auto _ : state) {
        int answered = 0;
        QEventLoop loop;
        for (const QString& file : files)
            engine.probe(file, &loop, [&](const MediaEngine::ProbeResult& result) {
                benchmark::DoNotOptimize(result.ok());
                if (++answered == files.size())
                    loop.quit();
            });
        loop.exec();
    }
    state.counters["files"] = double(files.size());
    state.counters["threads"] = engine.maxThreadCount();
    state.counters["process_cpu_ms"] = (processCpuMs() - cpuBefore) / double(state.iterations());
}
BENCHMARK(BM_ProbeEnginePool)->Unit(benchmark::kMillisecond)->UseRealTime();

// Seeking and decoding the frame by hand, scaled to the thumbnail with swscale.
QImage thumbnailByHand(const QString& path, qint64 thumbnailTime)
{
    AVFormatContext* format = nullptr;
    const QByteArray name = QFile::encodeName(path);
    if (avformat_open_input(&format, name.constData(), nullptr, nullptr) < 0)
        return {};
    QImage image;
    avformat_find_stream_info(format, nullptr);
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    AVStream* stream = format->streams[index];
    AVCodecContext* codec = avcodec_alloc_context3(avcodec_find_decoder(stream->codecpar->codec_id));
    avcodec_parameters_to_context(codec, stream->codecpar);
    avcodec_open2(codec, codec->codec, nullptr);
    const int64_t target = av_rescale_q(thumbnailTime, AV_TIME_BASE_Q, stream->time_base)
                           + (stream->start_time == AV_NOPTS_VALUE ? 0 : stream->start_time);
    av_seek_frame(format, index, target, AVSEEK_FLAG_BACKWARD);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    bool found = false;
    while (!found && av_read_frame(format, packet) >= 0) {
        if (packet->stream_index == index && avcodec_send_packet(codec, packet) >= 0)
            while (!found && avcodec_receive_frame(codec, frame) >= 0)
                found = frame->best_effort_timestamp >= target;
        av_packet_unref(packet);
    }
    if (found) {
        image = QImage(thumbnailSize, QImage::Format_ARGB32);
        SwsContext* sws = sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format), image.width(),
                                         image.height(), AV_PIX_FMT_BGRA, SWS_BILINEAR, nullptr, nullptr, nullptr);
        uint8_t* data[4] = {image.bits(), nullptr, nullptr, nullptr};
        const int stride[4] = {int(image.bytesPerLine()), 0, 0, 0};
        sws_scale(sws, frame->data, frame->linesize, 0, frame->height, data, stride);
        sws_freeContext(sws);
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&codec);
    avformat_close_input(&format);
    return image;
}

// The mean difference of the colour channels of two pictures of one size.
double meanDifference(const QImage& a, const QImage& b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x) {
            const QRgb p = a.pixel(x, y);
            const QRgb q = b.pixel(x, y);
            sum += qAbs(qRed(p) - qRed(q)) + qAbs(qGreen(p) - qGreen(q)) + qAbs(qBlue(p) - qBlue(q));
        }
    return sum / (3.0 * a.width() * a.height());
}

MediaEngine::FrameRequest hdRequest(qint64 time)
{
    MediaEngine::FrameRequest request;
    request.path = media().hd;
    request.time = time;
    request.size = thumbnailSize;
    return request;
}

void BM_ThumbnailByHand(benchmark::State& state)
{
    const QString& file = media().hd;
    for (auto _ : state) {
        const QImage image = thumbnailByHand(file, state.range(0) * 1000);
        if (image.size() != thumbnailSize)
            state.SkipWithError("no frame");
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_ThumbnailByHand)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->UseRealTime();

// The engine's decoding step alone, on the calling thread.
void BM_ThumbnailDecodeFrame(benchmark::State& state)
{
    const MediaEngine::FrameRequest request = hdRequest(state.range(0) * 1000);
    for (auto _ : state) {
        const MediaEngine::FrameResult result = MediaEngine::decodeFrame(request);
        if (result.image.size() != thumbnailSize)
            state.SkipWithError("no frame");
    }
}
BENCHMARK(BM_ThumbnailDecodeFrame)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ThumbnailEngine(benchmark::State& state)
{
    MediaEngine::Engine engine;
    engine.cache().setCapacity(0); // every request decodes
    const MediaEngine::FrameRequest request = hdRequest(state.range(0) * 1000);
    for (auto _ : state) {
        QEventLoop loop;
        engine.requestFrame(request, &loop, [&](const MediaEngine::FrameResult& result) {
            if (result.image.size() != thumbnailSize)
                state.SkipWithError("no frame");
            loop.quit();
        });
        loop.exec();
    }
}
BENCHMARK(BM_ThumbnailEngine)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->UseRealTime();

void BM_ThumbnailFfmpegProcess(benchmark::State& state)
{
    const QString& file = media().hd;
    QImage image;
    for (auto _ : state) {
        QProcess process;
        process.start(QStringLiteral("ffmpeg"),
                      {QStringLiteral("-loglevel"), QStringLiteral("error"), QStringLiteral("-ss"),
                       QString::number(state.range(0) / 1000.0), QStringLiteral("-i"), file,
                       QStringLiteral("-frames:v"), QStringLiteral("1"), QStringLiteral("-s"), QStringLiteral("160x90"),
                       QStringLiteral("-f"), QStringLiteral("image2pipe"), QStringLiteral("-c:v"),
                       QStringLiteral("bmp"), QStringLiteral("-")});
        process.waitForFinished(60000);
        image = QImage::fromData(process.readAllStandardOutput(), "BMP");
        if (image.size() != thumbnailSize)
            state.SkipWithError("no frame");
    }
    // Both give the frame of the time: ffmpeg's thumbnail is nearest the engine's frame of
    // the time, not the frame before or after it (the two scale a little differently).
    const qint64 time = state.range(0) * 1000;
    const std::pair<const char*, qint64> frames[] = {
        {"diff_to_engine_previous", time - 40'000}, {"diff_to_engine", time}, {"diff_to_engine_next", time + 40'000}};
    for (const auto& [name, frameTime] : frames) {
        const QImage engine = MediaEngine::decodeFrame(hdRequest(frameTime)).image;
        if (image.size() == thumbnailSize && engine.size() == thumbnailSize)
            state.counters[name] = meanDifference(image, engine);
    }
}
BENCHMARK(BM_ThumbnailFfmpegProcess)->Arg(1000)->Arg(2000)->Unit(benchmark::kMillisecond)->UseRealTime();

// Decoding the first group of pictures of the file once, as a program that wants every frame
// of it would: open, read, decode its 50 frames (no scaling).
double decodeGroupByHandMs(const QString& path, int frames)
{
    const double start = processCpuMs();
    AVFormatContext* format = nullptr;
    const QByteArray name = QFile::encodeName(path);
    if (avformat_open_input(&format, name.constData(), nullptr, nullptr) < 0)
        return -1;
    avformat_find_stream_info(format, nullptr);
    const int index = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    AVStream* stream = format->streams[index];
    AVCodecContext* codec = avcodec_alloc_context3(avcodec_find_decoder(stream->codecpar->codec_id));
    avcodec_parameters_to_context(codec, stream->codecpar);
    codec->thread_count = 1; // as the engine decodes
    avcodec_open2(codec, codec->codec, nullptr);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    int decoded = 0;
    while (decoded < frames && av_read_frame(format, packet) >= 0) {
        if (packet->stream_index == index && avcodec_send_packet(codec, packet) >= 0)
            while (decoded < frames && avcodec_receive_frame(codec, frame) >= 0)
                ++decoded;
        av_packet_unref(packet);
    }
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&codec);
    avformat_close_input(&format);
    return decoded == frames ? processCpuMs() - start : -1;
}

// A strip of 10 thumbnails inside the first group of pictures (frames 2, 7, ... 47; key frames
// every 50), asked of the engine in one turn as a timeline's clip asks for them, against
// decoding that group once by hand; and one thumbnail at the key frame, the floor of any
// thumbnail. CPU time of the process: the pool's threads count too.
void BM_ThumbnailStrip(benchmark::State& state)
{
    constexpr int thumbnails = 10;
    MediaEngine::Engine engine;
    engine.cache().setCapacity(0); // every request decodes
    double group = 0, strip = 0, key = 0;
    for (auto _ : state) {
        const double g = decodeGroupByHandMs(media().hd, 50);
        if (g < 0)
            state.SkipWithError("the group could not be decoded");
        group += g;

        double start = processCpuMs();
        const MediaEngine::FrameResult keyFrame = MediaEngine::decodeFrame(hdRequest(0));
        key += processCpuMs() - start;
        if (keyFrame.image.size() != thumbnailSize)
            state.SkipWithError("no key frame");

        start = processCpuMs();
        QEventLoop loop;
        int answers = 0;
        for (int i = 0; i < thumbnails; ++i)
            engine.requestFrame(hdRequest((5 * i + 2) * 40'000), &loop, [&](const MediaEngine::FrameResult& result) {
                if (result.image.size() != thumbnailSize)
                    state.SkipWithError("no frame");
                if (++answers == thumbnails)
                    loop.quit();
            });
        loop.exec();
        strip += processCpuMs() - start;
    }
    const double n = double(state.iterations());
    state.counters["group_once_ms"] = group / n;
    state.counters["strip_ms"] = strip / n;
    state.counters["strip_vs_group"] = strip / group;
    state.counters["per_thumbnail_ms"] = strip / n / thumbnails;
    state.counters["key_frame_floor_ms"] = key / n;
}
BENCHMARK(BM_ThumbnailStrip)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(5);

void BM_ThumbnailFromCache(benchmark::State& state)
{
    MediaEngine::Engine engine;
    const MediaEngine::FrameRequest request = hdRequest(1'000'000);
    QEventLoop loop;
    engine.requestFrame(request, &loop, [&](const MediaEngine::FrameResult&) { loop.quit(); });
    loop.exec();
    for (auto _ : state) {
        const QImage image = engine.cachedFrame(request);
        if (image.isNull())
            state.SkipWithError("not cached");
        benchmark::DoNotOptimize(image.constBits());
    }
}
BENCHMARK(BM_ThumbnailFromCache)->Unit(benchmark::kMicrosecond);

} // namespace
