#include <MediaEngine/FFmpegInput.h>

#include <QFileInfo>

extern "C" {
#include <libavutil/error.h>
}

#include <vector>

namespace MediaEngine::Detail {

namespace {

int interruptCallback(void* opaque) { return static_cast<const Deadline*>(opaque)->interrupted() ? 1 : 0; }

struct DictionaryFree
{
    void operator()(AVDictionary** dictionary) const { av_dict_free(dictionary); }
};

} // namespace

Deadline::Deadline(int timeoutMs, const std::atomic_bool* cancelled)
    : m_until(std::chrono::steady_clock::now() + std::chrono::milliseconds(timeoutMs)), m_cancelled(cancelled)
{}

AVIOInterruptCB Deadline::callback() { return AVIOInterruptCB{&interruptCallback, this}; }

QString describeAVError(int averror)
{
    char buffer[AV_ERROR_MAX_STRING_SIZE] = {};
    av_strerror(averror, buffer, sizeof buffer);
    return QString::fromUtf8(buffer);
}

int errorCodeOf(int averror)
{
    if (averror == AVERROR(ENOMEM))
        return ErrorCode::OutOfMemory;
    if (averror == AVERROR_DECODER_NOT_FOUND)
        return ErrorCode::CodecNotAvailable;
    // Interrupted reads (a stalled disk, the deadline), missing, unreadable and invalid
    // data all leave a file the editor cannot read.
    return ErrorCode::FileCorrupted;
}

bool frameTooLarge(int width, int height, const Limits& limits)
{
    return width > limits.maxFrameSide || height > limits.maxFrameSide
           || qint64(width) * qint64(height) > limits.maxFramePixels;
}

bool hasUsableDecoder(AVCodecID codecId)
{
    const AVCodec* decoder = avcodec_find_decoder(codecId);
    // Experimental decoders are not trusted with user files.
    return decoder && !(decoder->capabilities & AV_CODEC_CAP_EXPERIMENTAL);
}

namespace {

bool headerNamesEveryVideo(const AVFormatContext* context)
{
    if (context->ctx_flags & AVFMTCTX_NOHEADER)
        return false; // streams may still appear
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVCodecParameters* parameters = context->streams[i]->codecpar;
        if (parameters->codec_type == AVMEDIA_TYPE_VIDEO
            && (parameters->codec_id == AV_CODEC_ID_NONE || parameters->width <= 0 || parameters->height <= 0))
            return false;
    }
    return context->nb_streams > 0;
}

} // namespace

OpenedInput openInput(const QString& path, const Limits& limits, Deadline& deadline, StreamInfo streamInfo)
{
    OpenedInput result;
    auto fail = [&result](int code, const QString& message) {
        result.format.reset();
        result.errorCode = code;
        result.errorMessage = message;
        return std::move(result);
    };

    const QFileInfo info(path);
    if (path.isEmpty() || !info.exists())
        return fail(ErrorCode::FileCorrupted, QStringLiteral("The file does not exist"));
    if (info.isDir())
        return fail(ErrorCode::FileCorrupted, QStringLiteral("The path is a folder"));
    // A pipe or a device could block the open itself, beyond the reach of any deadline.
    if (!info.isFile())
        return fail(ErrorCode::FileCorrupted, QStringLiteral("The path is not a regular file"));
    if (!info.isReadable())
        return fail(ErrorCode::FileCorrupted, QStringLiteral("The file cannot be read"));
    if (info.size() == 0)
        return fail(ErrorCode::FileCorrupted, QStringLiteral("The file is empty"));

    AVFormatContext* context = avformat_alloc_context();
    if (!context)
        return fail(ErrorCode::OutOfMemory, QStringLiteral("Out of memory"));
    context->interrupt_callback = deadline.callback();
    context->probesize = limits.probeSize;
    context->max_analyze_duration = limits.analyzeDuration;

    AVDictionary* options = nullptr;
    std::unique_ptr<AVDictionary*, DictionaryFree> optionsGuard(&options);
    // Only local files: a playlist must not make the engine fetch from the network.
    av_dict_set(&options, "protocol_whitelist", "file", 0);
    // A still image is the named file, never a numbered sequence around it.
    av_dict_set(&options, "pattern_type", "none", 0);
    av_dict_set_int(&options, "max_streams", 64, 0);

    // The protocol prefix keeps a colon in a file name from choosing a protocol.
    const QByteArray url = QByteArrayLiteral("file:") + QFile::encodeName(info.absoluteFilePath());
    int status = avformat_open_input(&context, url.constData(), nullptr, &options);
    if (status < 0) // FFmpeg freed the context
        return fail(errorCodeOf(status), QStringLiteral("Cannot open the file: ") + describeAVError(status));
    result.format.reset(context);
    // Frames the header announces too large fail here, before analysing the streams: the
    // decoders' own limit would otherwise leave the size unread and the file "corrupted".
    for (unsigned i = 0; i < context->nb_streams; ++i) {
        const AVCodecParameters* parameters = context->streams[i]->codecpar;
        // Cover art of a song is not a picture stream of the file.
        if (parameters->codec_type == AVMEDIA_TYPE_VIDEO
            && !(context->streams[i]->disposition & AV_DISPOSITION_ATTACHED_PIC)
            && frameTooLarge(parameters->width, parameters->height, limits))
            return fail(ErrorCode::OutOfMemory,
                        QStringLiteral("Frames of %1x%2 are too large").arg(parameters->width).arg(parameters->height));
    }
    if (streamInfo == StreamInfo::HeaderIfEnough && headerNamesEveryVideo(context))
        return result;

    // Decoders that look at a first frame while the streams are analysed must not
    // allocate absurd frames either.
    std::vector<AVDictionary*> streamOptions(context->nb_streams, nullptr);
    for (AVDictionary*& streamOption : streamOptions)
        av_dict_set_int(&streamOption, "max_pixels", limits.maxFramePixels, 0);
    status = avformat_find_stream_info(context, streamOptions.empty() ? nullptr : streamOptions.data());
    for (AVDictionary*& streamOption : streamOptions)
        av_dict_free(&streamOption);
    if (status < 0)
        return fail(errorCodeOf(status), QStringLiteral("Cannot read the streams: ") + describeAVError(status));
    if (deadline.expired())
        return fail(ErrorCode::FileCorrupted, QStringLiteral("Reading the file took too long"));
    return result;
}

} // namespace MediaEngine::Detail
