#include <MediaEngine/SampleWriter.h>

#include <QFile>
#include <QFileInfo>

#include <glog/logging.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
#include <libavutil/error.h>
#include <libswscale/swscale.h>
}

#include <cmath>
#include <memory>

namespace MediaEngine {

namespace {

constexpr double twoPi = 6.283185307179586;

QString averrorText(int averror)
{
    char buffer[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(averror, buffer, sizeof buffer);
    return QString::fromUtf8(buffer);
}

struct CodecFree
{
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFree
{
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct ScaleFree
{
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};
using CodecPtr = std::unique_ptr<AVCodecContext, CodecFree>;
using FramePtr = std::unique_ptr<AVFrame, FrameFree>;

// One output file under a temporary name: streams, encoders, and the rename when it is done.
class Output
{
public:
    Output(const QString& path) : m_path(path), m_partPath(path + QStringLiteral(".part")) {}
    ~Output()
    {
        if (m_format) {
            if (m_format->pb)
                avio_closep(&m_format->pb);
            avformat_free_context(m_format);
        }
        if (!m_finished)
            QFile::remove(m_partPath);
    }

    bool open()
    {
        const QByteArray name = QFile::encodeName(m_path);
        const AVOutputFormat* format = av_guess_format(nullptr, name.constData(), nullptr);
        if (!format)
            return fail(QStringLiteral("no container for %1").arg(QFileInfo(m_path).suffix()));
        const int result = avformat_alloc_output_context2(&m_format, format, nullptr, nullptr);
        return result >= 0 ? true : fail(averrorText(result));
    }

    // Adds a stream encoded by `codecId`; `setUp` fills the encoder's settings.
    AVCodecContext* addStream(AVCodecID codecId, const std::function<void(AVCodecContext*, const AVCodec*)>& setUp,
                              AVStream** stream)
    {
        const AVCodec* codec = avcodec_find_encoder(codecId);
        if (!codec) {
            fail(QStringLiteral("no encoder for %1").arg(QString::fromUtf8(avcodec_get_name(codecId))));
            return nullptr;
        }
        CodecPtr context(avcodec_alloc_context3(codec));
        *stream = avformat_new_stream(m_format, nullptr);
        if (!context || !*stream) {
            fail(QStringLiteral("out of memory"));
            return nullptr;
        }
        setUp(context.get(), codec);
        if (m_format->oformat->flags & AVFMT_GLOBALHEADER)
            context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        int result = avcodec_open2(context.get(), codec, nullptr);
        if (result >= 0)
            result = avcodec_parameters_from_context((*stream)->codecpar, context.get());
        if (result < 0) {
            fail(averrorText(result));
            return nullptr;
        }
        (*stream)->time_base = context->time_base;
        (*stream)->avg_frame_rate = context->framerate;
        m_codecs.push_back(std::move(context));
        return m_codecs.back().get();
    }

    bool begin()
    {
        int result = avio_open(&m_format->pb, QFile::encodeName(m_partPath).constData(), AVIO_FLAG_WRITE);
        if (result >= 0)
            result = avformat_write_header(m_format, nullptr);
        return result >= 0 ? true : fail(averrorText(result));
    }

    // Encodes one frame (null: drains the encoder) and writes what comes out.
    bool encode(AVCodecContext* codec, AVStream* stream, const AVFrame* frame)
    {
        int result = avcodec_send_frame(codec, frame);
        if (result < 0)
            return fail(averrorText(result));
        std::unique_ptr<AVPacket, void (*)(AVPacket*)> packet(av_packet_alloc(),
                                                              [](AVPacket* p) { av_packet_free(&p); });
        while ((result = avcodec_receive_packet(codec, packet.get())) >= 0) {
            // A picture lasts one frame, the last one too, so the file is as long as asked.
            if (codec->codec_type == AVMEDIA_TYPE_VIDEO && packet->duration <= 0)
                packet->duration = 1;
            av_packet_rescale_ts(packet.get(), codec->time_base, stream->time_base);
            packet->stream_index = stream->index;
            result = av_interleaved_write_frame(m_format, packet.get());
            if (result < 0)
                return fail(averrorText(result));
        }
        return result == AVERROR(EAGAIN) || result == AVERROR_EOF ? true : fail(averrorText(result));
    }

    bool finish()
    {
        int result = av_write_trailer(m_format);
        if (result < 0)
            return fail(averrorText(result));
        avio_closep(&m_format->pb);
        QFile::remove(m_path);
        if (!QFile::rename(m_partPath, m_path))
            return fail(QStringLiteral("cannot rename %1").arg(m_partPath));
        m_finished = true;
        return true;
    }

    bool fail(const QString& text)
    {
        if (m_error.isEmpty())
            m_error = text;
        return false;
    }
    const QString& error() const { return m_error; }

private:
    QString m_path;
    QString m_partPath;
    AVFormatContext* m_format = nullptr;
    std::vector<CodecPtr> m_codecs;
    QString m_error;
    bool m_finished = false;
};

// A tone written frame by frame in the encoder's own sample format.
class ToneSource
{
public:
    ToneSource(AVCodecContext* codec, double hz) : m_codec(codec), m_hz(hz) {}

    qint64 written() const { return m_written; }

    FramePtr next(int samples)
    {
        FramePtr frame(av_frame_alloc());
        frame->format = m_codec->sample_fmt;
        av_channel_layout_copy(&frame->ch_layout, &m_codec->ch_layout);
        frame->sample_rate = m_codec->sample_rate;
        frame->nb_samples = samples;
        if (av_frame_get_buffer(frame.get(), 0) < 0)
            return nullptr;
        for (int i = 0; i < samples; ++i) {
            const double value = 0.3 * std::sin(twoPi * m_hz * double(m_written + i) / m_codec->sample_rate);
            if (m_codec->sample_fmt == AV_SAMPLE_FMT_FLTP)
                reinterpret_cast<float*>(frame->data[0])[i] = float(value);
            else
                reinterpret_cast<int16_t*>(frame->data[0])[i] = int16_t(value * 32767);
        }
        frame->pts = m_written;
        m_written += samples;
        return frame;
    }

private:
    AVCodecContext* m_codec;
    double m_hz;
    qint64 m_written = 0;
};

AVCodecContext* addAudio(Output& output, AVCodecID codecId, int sampleRate, AVStream** stream)
{
    return output.addStream(
        codecId,
        [&](AVCodecContext* c, const AVCodec* codec) {
            c->sample_fmt = codec->sample_fmts ? codec->sample_fmts[0] : AV_SAMPLE_FMT_S16;
            c->sample_rate = sampleRate;
            av_channel_layout_default(&c->ch_layout, 1);
            c->bit_rate = 96000;
            c->time_base = AVRational{1, sampleRate};
        },
        stream);
}

bool report(const Output& output, QString* error)
{
    if (error)
        *error = output.error();
    return output.error().isEmpty();
}

bool isPcmContainer(const QString& path)
{
    const QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == QLatin1String("wav") || suffix == QLatin1String("avi");
}

} // namespace

bool writeClip(const QString& path, const ClipRecipe& recipe, QString* error)
{
    Output output(path);
    if (recipe.size.width() < 16 || recipe.size.height() < 16 || recipe.size.width() % 2 || recipe.size.height() % 2
        || recipe.frameRate <= 0 || recipe.frameCount <= 0 || !recipe.paintFrame) {
        LOG(ERROR) << "MediaEngine::writeClip: even frame sides of at least 16, a frame rate, frames and a painter "
                      "are needed";
        output.fail(QStringLiteral("invalid recipe"));
        return report(output, error);
    }
    if (!output.open())
        return report(output, error);

    AVStream* videoStream = nullptr;
    AVCodecContext* video = output.addStream(
        AV_CODEC_ID_MPEG4,
        [&](AVCodecContext* c, const AVCodec*) {
            c->width = recipe.size.width();
            c->height = recipe.size.height();
            c->time_base = AVRational{1, recipe.frameRate};
            c->framerate = AVRational{recipe.frameRate, 1};
            c->gop_size = recipe.frameRate;
            c->pix_fmt = AV_PIX_FMT_YUV420P;
            c->bit_rate = 800000;
        },
        &videoStream);
    AVStream* audioStream = nullptr;
    AVCodecContext* audio = nullptr;
    if (video && recipe.toneHz > 0)
        audio = addAudio(output, isPcmContainer(path) ? AV_CODEC_ID_PCM_S16LE : AV_CODEC_ID_AAC, 48000, &audioStream);
    if (!video || (recipe.toneHz > 0 && !audio) || !output.begin())
        return report(output, error);

    std::unique_ptr<SwsContext, ScaleFree> scale(sws_getContext(video->width, video->height, AV_PIX_FMT_RGB32,
                                                                video->width, video->height, video->pix_fmt,
                                                                SWS_BILINEAR, nullptr, nullptr, nullptr));
    FramePtr picture(av_frame_alloc());
    picture->format = video->pix_fmt;
    picture->width = video->width;
    picture->height = video->height;
    if (!scale || av_frame_get_buffer(picture.get(), 0) < 0) {
        output.fail(QStringLiteral("out of memory"));
        return report(output, error);
    }
    std::unique_ptr<ToneSource> tone(audio ? new ToneSource(audio, recipe.toneHz) : nullptr);
    const int audioFrame = audio && audio->frame_size > 0 ? audio->frame_size : 1024;

    QImage canvas(recipe.size, QImage::Format_RGB32);
    for (int frame = 0; frame < recipe.frameCount; ++frame) {
        canvas.fill(Qt::black);
        recipe.paintFrame(canvas, frame);
        if (canvas.format() != QImage::Format_RGB32 || canvas.size() != recipe.size)
            canvas = canvas.convertToFormat(QImage::Format_RGB32).scaled(recipe.size);
        if (av_frame_make_writable(picture.get()) < 0)
            return report(output, error);
        const uint8_t* source[1] = {canvas.constBits()};
        const int stride[1] = {int(canvas.bytesPerLine())};
        sws_scale(scale.get(), source, stride, 0, video->height, picture->data, picture->linesize);
        picture->pts = frame;
        if (!output.encode(video, videoStream, picture.get()))
            return report(output, error);
        // The sound keeps pace with the pictures written so far.
        const qint64 soundUntil = tone ? qint64(frame + 1) * audio->sample_rate / recipe.frameRate : 0;
        while (tone && tone->written() < soundUntil) {
            FramePtr samples = tone->next(audioFrame);
            if (!samples || !output.encode(audio, audioStream, samples.get()))
                return report(output, error);
        }
    }
    if (!output.encode(video, videoStream, nullptr) || (audio && !output.encode(audio, audioStream, nullptr)))
        return report(output, error);
    output.finish();
    return report(output, error);
}

bool writeTone(const QString& path, double seconds, double toneHz, int sampleRate, QString* error)
{
    Output output(path);
    if (seconds <= 0 || toneHz <= 0 || sampleRate < 8000) {
        LOG(ERROR) << "MediaEngine::writeTone: a length, a pitch and a sample rate of at least 8000 are needed";
        output.fail(QStringLiteral("invalid tone"));
        return report(output, error);
    }
    AVStream* stream = nullptr;
    AVCodecContext* audio = nullptr;
    if (output.open())
        audio = addAudio(output, isPcmContainer(path) ? AV_CODEC_ID_PCM_S16LE : AV_CODEC_ID_AAC, sampleRate, &stream);
    if (!audio || !output.begin())
        return report(output, error);
    ToneSource tone(audio, toneHz);
    const qint64 total = qint64(seconds * sampleRate);
    const int frameSize = audio->frame_size > 0 ? audio->frame_size : 1024;
    while (tone.written() < total) {
        const int samples =
            audio->frame_size > 0 ? frameSize : int(std::min<qint64>(frameSize, total - tone.written()));
        FramePtr frame = tone.next(samples);
        if (!frame || !output.encode(audio, stream, frame.get()))
            return report(output, error);
    }
    if (output.encode(audio, stream, nullptr))
        output.finish();
    return report(output, error);
}

} // namespace MediaEngine
