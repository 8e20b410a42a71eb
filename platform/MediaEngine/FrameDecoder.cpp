#include <MediaEngine/FrameDecoder.h>

#include <MediaEngine/FFmpegInput.h>

extern "C" {
#include <libswscale/swscale.h>
}

#include <QPainter>

#include <glog/logging.h>

#include <algorithm>
#include <cmath>

namespace MediaEngine {

using namespace Detail;

namespace {

struct SwsFree
{
    void operator()(SwsContext* context) const { sws_freeContext(context); }
};
using SwsPtr = std::unique_ptr<SwsContext, SwsFree>;

// Decoding errors tolerated in a row before the stream counts as corrupt.
constexpr int maxConsecutiveErrors = 32;

struct Geometry
{
    QSize scaled;  // the frame scaled to this size...
    QPoint offset; // ...is drawn at this place of the result
};

// Where the frame goes when it is stretched or fitted whole.
Geometry geometryFor(const QSize& source, double pixelAspect, const QSize& size, ResizeMode mode)
{
    if (mode != ResizeMode::KeepAspectRatio)
        return {size, QPoint()};
    const double displayWidth = source.width() * pixelAspect;
    const double scale = std::min(size.width() / displayWidth, size.height() / double(source.height()));
    const QSize scaled = QSize(std::max(1, int(std::lround(displayWidth * scale))),
                               std::max(1, int(std::lround(source.height() * scale))))
                             .boundedTo(size);
    return {scaled, QPoint((size.width() - scaled.width()) / 2, (size.height() - scaled.height()) / 2)};
}

// Keeps the middle of the frame that has the shape of `size`, so that stretching it fills
// the size without distortion. Cutting before scaling keeps a very wide or tall frame from
// being scaled up whole.
void cropToShapeOf(AVFrame* frame, double pixelAspect, const QSize& size)
{
    const double displayWidth = frame->width * pixelAspect;
    const double scale = std::max(size.width() / displayWidth, size.height() / double(frame->height));
    const int keptWidth = std::clamp(int(std::lround(size.width() / scale / pixelAspect)), 1, frame->width);
    const int keptHeight = std::clamp(int(std::lround(size.height() / scale)), 1, frame->height);
    frame->crop_left = size_t(frame->width - keptWidth) / 2;
    frame->crop_right = size_t(frame->width - keptWidth) - frame->crop_left;
    frame->crop_top = size_t(frame->height - keptHeight) / 2;
    frame->crop_bottom = size_t(frame->height - keptHeight) - frame->crop_top;
    if (av_frame_apply_cropping(frame, AV_FRAME_CROP_UNALIGNED) < 0)
        frame->crop_left = frame->crop_right = frame->crop_top = frame->crop_bottom = 0; // stretched whole instead
}

// Places the scaled picture into a result of exactly `size`, padded when it is smaller.
QImage compose(QImage scaled, const Geometry& geometry, const QSize& size, const QColor& paddingColor)
{
    if (scaled.size() == size)
        return scaled.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    QImage result(size, QImage::Format_ARGB32_Premultiplied);
    result.fill(paddingColor.isValid() ? paddingColor : QColor(Qt::transparent));
    QPainter painter(&result);
    painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter.drawImage(geometry.offset, scaled);
    return result;
}

QImage scaleFrame(AVFrame* frame, double pixelAspect, const FrameRequest& request)
{
    if (request.resizeMode == ResizeMode::KeepAspectRatioByExpanding)
        cropToShapeOf(frame, pixelAspect, request.size);
    const Geometry geometry =
        geometryFor(QSize(frame->width, frame->height), pixelAspect, request.size, request.resizeMode);
    QImage scaled(geometry.scaled, QImage::Format_ARGB32);
    if (scaled.isNull())
        return {};
    // BGRA in memory is QImage's ARGB32 on a little-endian machine.
    SwsPtr sws(sws_getContext(frame->width, frame->height, AVPixelFormat(frame->format), scaled.width(),
                              scaled.height(), Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? AV_PIX_FMT_BGRA : AV_PIX_FMT_ARGB,
                              SWS_BILINEAR, nullptr, nullptr, nullptr));
    if (!sws)
        return {};
    uint8_t* destination[4] = {scaled.bits(), nullptr, nullptr, nullptr};
    const int destinationStride[4] = {int(scaled.bytesPerLine()), 0, 0, 0};
    if (sws_scale(sws.get(), frame->data, frame->linesize, 0, frame->height, destination, destinationStride) <= 0)
        return {};
    return compose(std::move(scaled), geometry, request.size, request.paddingColor);
}

} // namespace

FrameResult decodeFrame(const FrameRequest& request, const Limits& limits, const std::atomic_bool* cancelled)
{
    FrameResult result;
    result.request = request;
    auto fail = [&result](int code, const QString& message) {
        result.image = QImage();
        result.errorCode = code;
        result.errorMessage = message;
        return std::move(result);
    };

    if (request.size.width() < 1 || request.size.height() < 1 || request.size.width() > limits.maxThumbnailSide
        || request.size.height() > limits.maxThumbnailSide) {
        LOG(ERROR) << "MediaEngine::decodeFrame: invalid frame size " << request.size.width() << "x"
                   << request.size.height() << " requested of " << request.path.toStdString();
        return fail(ErrorCode::Unknown, QStringLiteral("Invalid frame size requested"));
    }

    Deadline deadline(limits.decodeTimeoutMs, cancelled);
    // A decoder finds the rest of what it needs in the stream itself.
    OpenedInput input = openInput(request.path, limits, deadline, StreamInfo::HeaderIfEnough);
    if (!input.format)
        return fail(input.errorCode, input.errorMessage);
    AVFormatContext* context = input.format.get();

    int streamIndex = request.streamIndex;
    if (streamIndex < 0) {
        streamIndex = av_find_best_stream(context, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        if (streamIndex < 0)
            return fail(ErrorCode::Unknown, QStringLiteral("The file has no video stream"));
    } else if (streamIndex >= int(context->nb_streams)
               || context->streams[streamIndex]->codecpar->codec_type != AVMEDIA_TYPE_VIDEO) {
        LOG(ERROR) << "MediaEngine::decodeFrame: stream " << streamIndex << " of " << request.path.toStdString()
                   << " is not a video stream";
        return fail(ErrorCode::Unknown, QStringLiteral("Stream %1 is not a video stream").arg(streamIndex));
    }
    AVStream* stream = context->streams[streamIndex];
    const AVCodecParameters* parameters = stream->codecpar;
    for (unsigned i = 0; i < context->nb_streams; ++i)
        context->streams[i]->discard = int(i) == streamIndex ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
    if (!hasUsableDecoder(parameters->codec_id))
        return fail(
            ErrorCode::CodecNotAvailable,
            QStringLiteral("No decoder for the %1 video").arg(QLatin1String(avcodec_get_name(parameters->codec_id))));
    if (frameTooLarge(parameters->width, parameters->height, limits))
        return fail(ErrorCode::OutOfMemory,
                    QStringLiteral("Frames of %1x%2 are too large").arg(parameters->width).arg(parameters->height));

    CodecPtr decoder(avcodec_alloc_context3(avcodec_find_decoder(parameters->codec_id)));
    if (!decoder || avcodec_parameters_to_context(decoder.get(), parameters) < 0)
        return fail(ErrorCode::OutOfMemory, QStringLiteral("Cannot set up the decoder"));
    decoder->pkt_timebase = stream->time_base;
    decoder->max_pixels = limits.maxFramePixels;
    // One thread per decode: the engine's pool already keeps every core busy with other
    // requests. Frame threads would hold frames back until each thread has one and decode
    // frames past the one asked for; slice threads cost more to start and stop than an
    // unsliced frame gains.
    decoder->thread_count = 1;
    int status = avcodec_open2(decoder.get(), decoder->codec, nullptr);
    if (status < 0)
        return fail(errorCodeOf(status), QStringLiteral("Cannot open the decoder: ") + describeAVError(status));

    const int64_t startTime = stream->start_time != AV_NOPTS_VALUE ? stream->start_time : 0;
    const int64_t target =
        startTime + av_rescale_q(std::max<qint64>(request.time, 0), AV_TIME_BASE_Q, stream->time_base);
    // Jump to the key frame at or before the time, then decode forward to it.
    if (request.time > 0 && av_seek_frame(context, streamIndex, target, AVSEEK_FLAG_BACKWARD) >= 0)
        avcodec_flush_buffers(decoder.get());

    FramePtr best(av_frame_alloc());
    FramePtr frame(av_frame_alloc());
    PacketPtr packet(av_packet_alloc());
    if (!best || !frame || !packet)
        return fail(ErrorCode::OutOfMemory, QStringLiteral("Out of memory"));
    bool haveBest = false;
    bool done = false;
    // The earliest time at or after the target among the packets sent so far.
    int64_t firstSentAtOrAfter = INT64_MAX;
    int consecutiveErrors = 0;

    // Keeps the decoded frame nearest to the target; done once a frame at or past it came.
    auto receiveFrames = [&]() -> int {
        for (;;) {
            const int received = avcodec_receive_frame(decoder.get(), frame.get());
            if (received < 0)
                return received == AVERROR(EAGAIN) || received == AVERROR_EOF ? 0 : received;
            if (frameTooLarge(frame->width, frame->height, limits) || frame->width <= 0 || frame->height <= 0)
                return AVERROR_INVALIDDATA;
            const int64_t pts = frame->best_effort_timestamp;
            const int64_t bestPts = best->best_effort_timestamp;
            const bool reached = pts == AV_NOPTS_VALUE || pts >= target;
            if (!haveBest || !reached || (pts - target) < (target - bestPts)) {
                av_frame_unref(best.get());
                av_frame_move_ref(best.get(), frame.get());
                haveBest = true;
            } else {
                av_frame_unref(frame.get());
            }
            if (reached) {
                done = true;
                return 0;
            }
        }
    };

    while (!done) {
        if (deadline.interrupted())
            return fail(ErrorCode::FileCorrupted,
                        deadline.cancelled() ? QStringLiteral("Cancelled") : QStringLiteral("Decoding took too long"));
        status = av_read_frame(context, packet.get());
        if (status >= 0 && packet->stream_index == streamIndex && firstSentAtOrAfter != INT64_MAX
            && (firstSentAtOrAfter == target || (packet->dts != AV_NOPTS_VALUE && packet->dts >= firstSentAtOrAfter))) {
            // Every frame the nearest one needs is in the decoder: a frame at the very
            // time was sent, or the rest of the stream shows no earlier time than one
            // already sent. Draining hands it out without decoding the frames after it.
            av_packet_unref(packet.get());
            status = AVERROR_EOF;
        }
        if (status < 0) {
            // End of the stream (or unreadable rest): drain what the decoder holds.
            avcodec_send_packet(decoder.get(), nullptr);
            const int drained = receiveFrames();
            if (drained < 0 && !haveBest)
                return fail(ErrorCode::FileCorrupted,
                            QStringLiteral("Cannot decode a frame: ") + describeAVError(drained));
            break;
        }
        if (packet->stream_index != streamIndex) {
            av_packet_unref(packet.get());
            continue;
        }
        // Frames well before the target that no other frame refers to need not be decoded.
        const int64_t margin = 2 * std::max<int64_t>(packet->duration, 1);
        decoder->skip_frame =
            packet->pts != AV_NOPTS_VALUE && packet->pts < target - margin ? AVDISCARD_NONREF : AVDISCARD_DEFAULT;
        if (packet->pts != AV_NOPTS_VALUE && packet->pts >= target)
            firstSentAtOrAfter = std::min(firstSentAtOrAfter, packet->pts);
        status = avcodec_send_packet(decoder.get(), packet.get());
        av_packet_unref(packet.get());
        if (status >= 0)
            status = receiveFrames();
        if (status == AVERROR(ENOMEM))
            return fail(ErrorCode::OutOfMemory, QStringLiteral("Out of memory while decoding"));
        consecutiveErrors = status < 0 ? consecutiveErrors + 1 : 0;
        if (consecutiveErrors > maxConsecutiveErrors)
            return fail(ErrorCode::FileCorrupted, QStringLiteral("Cannot decode a frame: ") + describeAVError(status));
    }
    if (!haveBest)
        return fail(ErrorCode::FileCorrupted, QStringLiteral("The stream holds no frame"));

    const AVRational aspect = av_guess_sample_aspect_ratio(context, stream, best.get());
    const double pixelAspect = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1.0;
    result.image = scaleFrame(best.get(), pixelAspect, request);
    if (result.image.isNull())
        return fail(ErrorCode::FileCorrupted, QStringLiteral("Cannot convert the frame"));
    if (best->best_effort_timestamp != AV_NOPTS_VALUE)
        result.frameTime = av_rescale_q(best->best_effort_timestamp - startTime, stream->time_base, AV_TIME_BASE_Q);
    return result;
}

} // namespace MediaEngine
