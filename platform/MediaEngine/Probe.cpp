#include <MediaEngine/Probe.h>

#include <MediaEngine/FFmpegInput.h>

extern "C" {
#include <libavutil/channel_layout.h>
}

#include <QSet>

namespace MediaEngine {

using namespace Detail;

namespace {

qint64 toMicroseconds(int64_t value, AVRational timeBase) { return av_rescale_q(value, timeBase, AV_TIME_BASE_Q); }

bool isImageDemuxer(const AVInputFormat* format)
{
    const QLatin1String name(format->name);
    return name == QLatin1String("image2") || name.endsWith(QLatin1String("_pipe"));
}

qint64 streamDuration(const AVFormatContext* context, const AVStream* stream)
{
    if (stream->duration != AV_NOPTS_VALUE && stream->duration > 0)
        return toMicroseconds(stream->duration, stream->time_base);
    if (context->duration != AV_NOPTS_VALUE && context->duration > 0)
        return context->duration;
    return 0;
}

// Files that do not say which speaker a channel feeds (wav, avi) get the usual layout
// for their channel count.
QString layoutName(const AVChannelLayout& layout)
{
    AVChannelLayout named{};
    if (layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&named, layout.nb_channels);
    else if (av_channel_layout_copy(&named, &layout) < 0)
        return {};
    char name[128] = {};
    const int written = av_channel_layout_describe(&named, name, sizeof name);
    av_channel_layout_uninit(&named);
    return written > 0 ? QString::fromLatin1(name) : QString();
}

QString codecName(AVCodecID id) { return QString::fromLatin1(avcodec_get_name(id)); }

} // namespace

ProbeResult probeFile(const QString& path, const Limits& limits, const std::atomic_bool* cancelled)
{
    ProbeResult result;
    result.path = path;
    auto fail = [&result](int code, const QString& message) {
        result.video.clear();
        result.audio.clear();
        result.errorCode = code;
        result.errorMessage = message;
        return std::move(result);
    };

    Deadline deadline(limits.probeTimeoutMs, cancelled);
    OpenedInput input = openInput(path, limits, deadline);
    if (!input.format)
        return fail(input.errorCode, input.errorMessage);
    const AVFormatContext* context = input.format.get();
    result.containerName = QString::fromLatin1(context->iformat->name);
    const bool still = isImageDemuxer(context->iformat);

    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVStream* stream = context->streams[i];
        const AVCodecParameters* parameters = stream->codecpar;
        const int index = int(i);
        if (parameters->codec_type == AVMEDIA_TYPE_VIDEO) {
            if (stream->disposition & AV_DISPOSITION_ATTACHED_PIC)
                continue; // cover art of a song, not a picture stream
            if (!hasUsableDecoder(parameters->codec_id))
                return fail(ErrorCode::CodecNotAvailable, QStringLiteral("No decoder for the %1 video of stream %2")
                                                              .arg(codecName(parameters->codec_id))
                                                              .arg(index));
            if (parameters->width <= 0 || parameters->height <= 0)
                return fail(ErrorCode::FileCorrupted,
                            QStringLiteral("The frame size of stream %1 cannot be read").arg(index));
            if (frameTooLarge(parameters->width, parameters->height, limits))
                return fail(
                    ErrorCode::OutOfMemory,
                    QStringLiteral("Frames of %1x%2 are too large").arg(parameters->width).arg(parameters->height));
            VideoStream video;
            video.index = index;
            video.frameSize = QSize(parameters->width, parameters->height);
            const AVRational aspect = av_guess_sample_aspect_ratio(const_cast<AVFormatContext*>(context),
                                                                   const_cast<AVStream*>(stream), nullptr);
            if (aspect.num > 0 && aspect.den > 0)
                video.pixelAspect = boost::rational<long long>(aspect.num, aspect.den);
            video.codecName = codecName(parameters->codec_id);
            video.stillImage = still;
            if (still) {
                video.frameCount = 1;
            } else {
                AVRational rate = stream->avg_frame_rate;
                if (rate.num <= 0 || rate.den <= 0)
                    rate = stream->r_frame_rate;
                if (rate.num > 0 && rate.den > 0)
                    video.frameRate = boost::rational<long long>(rate.num, rate.den);
                video.duration = streamDuration(context, stream);
                video.frameCount = stream->nb_frames > 0
                                       ? stream->nb_frames
                                       : av_rescale_q(video.duration, AV_TIME_BASE_Q,
                                                      av_inv_q(rate.num > 0 ? rate : AVRational{1, 1}));
            }
            result.video.push_back(video);
        } else if (parameters->codec_type == AVMEDIA_TYPE_AUDIO) {
            if (!hasUsableDecoder(parameters->codec_id))
                return fail(ErrorCode::CodecNotAvailable, QStringLiteral("No decoder for the %1 audio of stream %2")
                                                              .arg(codecName(parameters->codec_id))
                                                              .arg(index));
            if (parameters->sample_rate <= 0 || parameters->ch_layout.nb_channels <= 0)
                return fail(ErrorCode::FileCorrupted,
                            QStringLiteral("The sample format of stream %1 cannot be read").arg(index));
            AudioStream audio;
            audio.index = index;
            audio.sampleRate = parameters->sample_rate;
            audio.channelCount = parameters->ch_layout.nb_channels;
            audio.channelLayout = layoutName(parameters->ch_layout);
            audio.duration = streamDuration(context, stream);
            audio.codecName = codecName(parameters->codec_id);
            result.audio.push_back(audio);
        }
    }

    if (result.video.empty() && result.audio.empty())
        return fail(ErrorCode::Unknown, QStringLiteral("The file has no video or audio stream"));
    if (context->duration != AV_NOPTS_VALUE && context->duration > 0 && !still)
        result.duration = context->duration;
    else
        for (const AudioStream& audio : result.audio)
            result.duration = qMax(result.duration, audio.duration);
    for (const VideoStream& video : result.video)
        result.duration = qMax(result.duration, video.duration);
    if (deadline.cancelled())
        return fail(ErrorCode::Unknown, QStringLiteral("Cancelled"));
    return result;
}

namespace {

// The extensions users know for each kind of file; a build keeps those its demuxers claim.
const char* const videoCandidates[] = {"3g2",  "3gp", "asf", "avi", "dv",  "f4v",  "flv",  "m2t",
                                       "m2ts", "m4v", "mkv", "mod", "mov", "mp4",  "mpeg", "mpg",
                                       "mts",  "mxf", "ogv", "ts",  "vob", "webm", "wmv"};
const char* const audioCandidates[] = {"aac", "ac3", "aif", "aiff", "amr",  "ape", "flac", "m4a", "mka",
                                       "mp2", "mp3", "oga", "ogg",  "opus", "wav", "wma",  "wv"};
const char* const imageCandidates[] = {"bmp", "gif", "jpeg", "jpg", "png", "tga", "tif", "tiff", "webp"};

// Demuxers that recognise their files by content and claim no extension themselves.
struct ContentDemuxer
{
    const char* name;
    const char* extensions;
};
const ContentDemuxer contentDemuxers[] = {{"mpegts", "m2t,m2ts,mts,ts"},
                                          {"mpeg", "mod,mpeg,mpg,vob"},
                                          {"ogg", "oga,ogv,opus"},
                                          {"wav", "wav"},
                                          {"asf", "asf,wma,wmv"},
                                          {"aiff", "aif,aiff"},
                                          {"amr", "amr"},
                                          {"mxf", "mxf"},
                                          {"wv", "wv"},
                                          {"gif", "gif"}};
// Still images read by the image demuxers when this build decodes them.
struct ImageCodec
{
    AVCodecID codec;
    const char* extensions;
};
const ImageCodec imageCodecs[] = {{AV_CODEC_ID_BMP, "bmp"},       {AV_CODEC_ID_MJPEG, "jpeg,jpg"},
                                  {AV_CODEC_ID_PNG, "png"},       {AV_CODEC_ID_TARGA, "tga"},
                                  {AV_CODEC_ID_TIFF, "tif,tiff"}, {AV_CODEC_ID_WEBP, "webp"}};

void insertAll(QSet<QString>& set, const char* commaSeparated)
{
    const QStringList extensions = QString::fromLatin1(commaSeparated).split(QLatin1Char(','));
    for (const QString& extension : extensions)
        set.insert(extension.trimmed().toLower());
}

QSet<QString> claimedExtensions()
{
    QSet<QString> claimed;
    void* iterator = nullptr;
    while (const AVInputFormat* format = av_demuxer_iterate(&iterator))
        if (format->extensions)
            insertAll(claimed, format->extensions);
    for (const ContentDemuxer& demuxer : contentDemuxers)
        if (av_find_input_format(demuxer.name))
            insertAll(claimed, demuxer.extensions);
    if (av_find_input_format("image2"))
        for (const ImageCodec& image : imageCodecs)
            if (hasUsableDecoder(image.codec))
                insertAll(claimed, image.extensions);
    return claimed;
}

template <size_t N>
QStringList keepClaimed(const char* const (&candidates)[N])
{
    static const QSet<QString> claimed = claimedExtensions();
    QStringList result;
    for (const char* candidate : candidates)
        if (claimed.contains(QLatin1String(candidate)))
            result.append(QString::fromLatin1(candidate));
    result.sort();
    return result;
}

} // namespace

QStringList supportedExtensions(ExtensionGroup group)
{
    switch (group) {
    case ExtensionGroup::Video:
        return keepClaimed(videoCandidates);
    case ExtensionGroup::Audio:
        return keepClaimed(audioCandidates);
    case ExtensionGroup::Image:
        return keepClaimed(imageCandidates);
    }
    return {};
}

QStringList supportedExtensions()
{
    QStringList all = supportedExtensions(ExtensionGroup::Video) + supportedExtensions(ExtensionGroup::Audio)
                      + supportedExtensions(ExtensionGroup::Image);
    all.sort();
    all.removeDuplicates();
    return all;
}

} // namespace MediaEngine
