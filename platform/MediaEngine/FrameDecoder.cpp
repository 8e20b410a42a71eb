#include <MediaEngine/FrameDecoder.h>

#include <MediaEngine/FFmpegInput.h>
#include <MediaEngine/FrameCache.h>
#include <MediaEngine/TimeArithmetic.h>

extern "C" {
#include <libswscale/swscale.h>
}

#include <QPainter>

#include <glog/logging.h>

#include <algorithm>
#include <cmath>
#include <optional>

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
// Jumps further back after one that landed past the time, before decoding from the start.
constexpr int maxSeekRetries = 3;
// About 3000 years in microseconds.
constexpr qint64 maxRequestTime = 100'000'000'000'000'000LL;

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

// When a frame is shown: the time its packet carried, else FFmpeg's guess (which falls back to
// decoding times when some packets of an MPEG stream carry none, and is then early by the
// reordering delay).
static int64_t shownAt(const AVFrame* frame)
{
    return frame->pts != AV_NOPTS_VALUE ? frame->pts : frame->best_effort_timestamp;
}

// The file and decoder kept open between the requests of one FrameDecoder, and where the
// decoding stands: the last frame shown before the latest time asked for and the first one at
// or after it (frames come out of the decoder in the order they are shown).
struct FrameDecoder::Session
{
    QString path;
    FileIdentity identity;
    int requestedStream = -1;
    FormatPtr format;
    CodecPtr decoder;
    AVStream* stream = nullptr;
    int streamIndex = -1;
    int64_t startTime = 0;
    int64_t oneSecond = 1;
    FramePtr before;
    FramePtr after;
    bool haveBefore = false;
    bool haveAfter = false;
    // False once the decoder was drained or failed: the next request seeks.
    bool continuable = false;
    int64_t lastTarget = AV_NOPTS_VALUE;
    // The demuxer stands past the start (its first packet was read for the start time).
    bool advanced = false;
    // No index: a seek guesses a place from timestamps, and the beginning is byte 0.
    bool indexless = false;
};

FrameDecoder::FrameDecoder(const Limits& limits) : m_limits(limits) {}

FrameDecoder::~FrameDecoder() = default;

void FrameDecoder::close() { m_session.reset(); }

FrameResult FrameDecoder::decode(const FrameRequest& request, const std::atomic_bool* cancelled, bool more)
{
    return decode(request, cancelled, [more] { return more; });
}

FrameResult FrameDecoder::decode(const FrameRequest& request, const std::atomic_bool* cancelled,
                                 const std::function<bool()>& more)
{
    const Limits& limits = m_limits;
    FrameResult result;
    result.request = request;
    auto fail = [this, &result](int code, const QString& message) {
        m_session.reset();
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
    const FileIdentity identity = FileIdentity::of(request.path);
    if (m_session
        && (m_session->path != request.path || !(m_session->identity == identity)
            || m_session->requestedStream != request.streamIndex))
        m_session.reset();
    const bool reused = m_session != nullptr;
    if (!m_session) {
        auto session = std::make_unique<Session>();
        session->path = request.path;
        session->identity = identity;
        session->requestedStream = request.streamIndex;
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
            return fail(ErrorCode::CodecNotAvailable, QStringLiteral("No decoder for the %1 video")
                                                          .arg(QLatin1String(avcodec_get_name(parameters->codec_id))));
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
        const int status = avcodec_open2(decoder.get(), decoder->codec, nullptr);
        if (status < 0)
            return fail(errorCodeOf(status), QStringLiteral("Cannot open the decoder: ") + describeAVError(status));
        session->format = std::move(input.format);
        session->decoder = std::move(decoder);
        session->stream = stream;
        session->streamIndex = streamIndex;
        session->startTime = stream->start_time != AV_NOPTS_VALUE ? stream->start_time : 0;

        session->oneSecond = std::max<int64_t>(1, av_rescale_q(AV_TIME_BASE, AV_TIME_BASE_Q, stream->time_base));
        const QLatin1String demuxer(context->iformat->name);
        session->indexless = demuxer == QLatin1String("mpegts") || demuxer == QLatin1String("mpeg")
                             || demuxer == QLatin1String("mpegvideo");
        if (stream->start_time == AV_NOPTS_VALUE && demuxer.startsWith(QLatin1String("matroska"))) {
            // Matroska headers tell no start time (a file whose times start late): the first
            // packet of the stream does.
            PacketPtr first(av_packet_alloc());
            for (int read = 0; first && read < 1000 && av_read_frame(context, first.get()) >= 0; ++read) {
                const bool ours = first->stream_index == streamIndex;
                const int64_t time = first->pts != AV_NOPTS_VALUE ? first->pts : first->dts;
                av_packet_unref(first.get());
                if (ours) {
                    if (time != AV_NOPTS_VALUE)
                        session->startTime = time;
                    break;
                }
            }
            session->advanced = true;
        }
        session->before.reset(av_frame_alloc());
        session->after.reset(av_frame_alloc());
        if (!session->before || !session->after)
            return fail(ErrorCode::OutOfMemory, QStringLiteral("Out of memory"));
        m_session = std::move(session);
    }
    Session& s = *m_session;
    AVFormatContext* context = s.format.get();
    AVCodecContext* decoder = s.decoder.get();
    const int streamIndex = s.streamIndex;
    const int64_t startTime = s.startTime;
    const int64_t oneSecond = s.oneSecond;

    // Past a few centuries a time means "the end" as much as any other.
    const qint64 requested = std::clamp<qint64>(request.time, 0, maxRequestTime);
    const int64_t target = saturatingAdd(startTime, av_rescale_q(requested, AV_TIME_BASE_Q, s.stream->time_base));

    // A later time of the same group of pictures goes on from the frames decoded for the
    // earlier one: no key frame lies between where the decoding stands and the time.
    bool goOn = reused && s.continuable && s.lastTarget != AV_NOPTS_VALUE && target >= s.lastTarget;
    if (goOn) {
        const int64_t reachedPts = s.haveAfter    ? shownAt(s.after.get())
                                   : s.haveBefore ? shownAt(s.before.get())
                                                  : s.lastTarget;
        const int key = av_index_search_timestamp(s.stream, target, AVSEEK_FLAG_BACKWARD);
        const AVIndexEntry* entry = key >= 0 ? avformat_index_get_entry(s.stream, key) : nullptr;
        goOn = reachedPts != AV_NOPTS_VALUE
               && (entry ? entry->timestamp <= reachedPts : saturatingSubtract(target, reachedPts) <= oneSecond);
    }

    FramePtr frame(av_frame_alloc());
    PacketPtr packet(av_packet_alloc());
    if (!frame || !packet)
        return fail(ErrorCode::OutOfMemory, QStringLiteral("Out of memory"));
    bool done = false;
    // After a seek nothing is decoded before a key frame; a key frame (or a first frame) past
    // the target means the seek landed too late.
    bool seeked = false;
    bool keySeen = false;
    bool overshot = false;
    // The earliest time at or after the target among the packets sent so far.
    int64_t firstSentAtOrAfter = INT64_MAX;
    int consecutiveErrors = 0;

    // Files frames as before or at/after the target; done once one at or past it came.
    auto offer = [&](AVFrame* decoded) {
        const int64_t pts = shownAt(decoded);
        if (seeked && !s.haveBefore && !s.haveAfter && pts != AV_NOPTS_VALUE && pts > target) {
            overshot = true;
            av_frame_unref(decoded);
            return;
        }
        // A frame without a time counts as reached.
        if (pts == AV_NOPTS_VALUE || pts >= target) {
            av_frame_unref(s.after.get());
            av_frame_move_ref(s.after.get(), decoded);
            s.haveAfter = true;
            done = true;
        } else {
            av_frame_unref(s.before.get());
            av_frame_move_ref(s.before.get(), decoded);
            s.haveBefore = true;
        }
    };
    auto receiveFrames = [&]() -> int {
        while (!done && !overshot) {
            const int received = avcodec_receive_frame(decoder, frame.get());
            if (received < 0)
                return received == AVERROR(EAGAIN) || received == AVERROR_EOF ? 0 : received;
            if (frameTooLarge(frame->width, frame->height, limits) || frame->width <= 0 || frame->height <= 0)
                return AVERROR_INVALIDDATA;
            offer(frame.get());
        }
        return 0;
    };

    // One pass: from where the demuxer stands to the frame, or to the end of the stream.
    auto decodePass = [&]() -> std::optional<FrameResult> {
        while (!done && !overshot) {
            if (deadline.interrupted())
                return fail(ErrorCode::FileCorrupted, deadline.cancelled() ? QStringLiteral("Cancelled")
                                                                           : QStringLiteral("Decoding took too long"));
            int status = av_read_frame(context, packet.get());
            if (status >= 0 && packet->stream_index == streamIndex && seeked && !keySeen) {
                if (!(packet->flags & AV_PKT_FLAG_KEY)) {
                    av_packet_unref(packet.get()); // cannot be decoded without what came before
                    continue;
                }
                keySeen = true;
                const int64_t keyTime = packet->pts != AV_NOPTS_VALUE ? packet->pts : packet->dts;
                if (keyTime != AV_NOPTS_VALUE && keyTime > target) {
                    av_packet_unref(packet.get());
                    overshot = true;
                    break;
                }
            }
            if (status >= 0 && packet->stream_index == streamIndex && firstSentAtOrAfter != INT64_MAX
                && (firstSentAtOrAfter == target
                    || (packet->dts != AV_NOPTS_VALUE && packet->dts >= firstSentAtOrAfter))
                && !(more && more())) {
                // Every frame the nearest one needs is in the decoder: a frame at the very
                // time was sent, or the rest of the stream shows no earlier time than one
                // already sent. Draining hands it out without decoding the frames after it
                // (unless another request follows, which may need them).
                av_packet_unref(packet.get());
                status = AVERROR_EOF;
            }
            if (status < 0) {
                // End of the stream (or unreadable rest): drain what the decoder holds.
                s.continuable = false;
                avcodec_send_packet(decoder, nullptr);
                const int drained = receiveFrames();
                if (drained < 0 && !s.haveBefore && !s.haveAfter && !seeked)
                    return fail(ErrorCode::FileCorrupted,
                                QStringLiteral("Cannot decode a frame: ") + describeAVError(drained));
                // A seek that found no key frame, or no frame, before the end landed too late.
                if (seeked && !s.haveBefore && !s.haveAfter)
                    overshot = true;
                break;
            }
            if (packet->stream_index != streamIndex) {
                av_packet_unref(packet.get());
                continue;
            }
            // Frames well before the target that no other frame refers to need not be decoded.
            const int64_t margin = 2 * std::clamp<int64_t>(packet->duration, 1, oneSecond);
            decoder->skip_frame = packet->pts != AV_NOPTS_VALUE && packet->pts < saturatingSubtract(target, margin)
                                      ? AVDISCARD_NONREF
                                      : AVDISCARD_DEFAULT;
            if (packet->pts != AV_NOPTS_VALUE && packet->pts >= target)
                firstSentAtOrAfter = std::min(firstSentAtOrAfter, packet->pts);
            status = avcodec_send_packet(decoder, packet.get());
            av_packet_unref(packet.get());
            if (status >= 0)
                status = receiveFrames();
            if (status == AVERROR(ENOMEM))
                return fail(ErrorCode::OutOfMemory, QStringLiteral("Out of memory while decoding"));
            consecutiveErrors = status < 0 ? consecutiveErrors + 1 : 0;
            if (consecutiveErrors > maxConsecutiveErrors)
                return fail(ErrorCode::FileCorrupted,
                            QStringLiteral("Cannot decode a frame: ") + describeAVError(status));
        }
        return std::nullopt;
    };

    if (goOn) {
        // The frame held at or after the earlier time may be before this one.
        if (s.haveAfter && shownAt(s.after.get()) != AV_NOPTS_VALUE && shownAt(s.after.get()) < target) {
            av_frame_unref(s.before.get());
            av_frame_move_ref(s.before.get(), s.after.get());
            s.haveBefore = true;
            s.haveAfter = false;
        }
        done = s.haveAfter;
        if (!done && s.continuable) {
            const int status = receiveFrames();
            if (status < 0)
                return fail(ErrorCode::FileCorrupted,
                            QStringLiteral("Cannot decode a frame: ") + describeAVError(status));
        }
        if (std::optional<FrameResult> failed = decodePass())
            return std::move(*failed);
    } else {
        // Jump to the key frame at or before the time, then decode forward to it. Containers
        // without an index (MPEG transport and program streams) seek by guessing a place from
        // the timestamps around it and may land past the key frame the time needs, or past the
        // time itself: then the jump is repeated further back (1 s, 4 s, 16 s), and finally
        // decoding starts at the beginning.
        int64_t seekTo = target;
        int64_t stepBack = oneSecond;
        for (int attempt = 0;; ++attempt) {
            const bool fromStart = seekTo <= startTime || attempt > maxSeekRetries
                                   || (s.indexless && saturatingSubtract(seekTo, startTime) <= oneSecond);
            if (requested > 0 || attempt > 0 || reused || s.advanced) {
                s.advanced = false;
                const int status =
                    fromStart
                        ? (s.indexless ? avformat_seek_file(context, -1, INT64_MIN, 0, 0, AVSEEK_FLAG_BYTE)
                                       : avformat_seek_file(context, streamIndex, INT64_MIN, startTime, startTime, 0))
                        : av_seek_frame(context, streamIndex, seekTo, AVSEEK_FLAG_BACKWARD);
                if (status < 0 && (attempt > 0 || reused || fromStart)
                    && avformat_seek_file(context, -1, INT64_MIN, 0, 0, AVSEEK_FLAG_BYTE) < 0)
                    return fail(ErrorCode::FileCorrupted, QStringLiteral("Cannot go back in the file"));
                avcodec_flush_buffers(decoder);
                // From the start every frame counts, key or not; a failed first jump leaves
                // the demuxer at the start too.
                seeked = status >= 0 && !fromStart;
            }
            av_frame_unref(s.before.get());
            av_frame_unref(s.after.get());
            s.haveBefore = s.haveAfter = false;
            s.continuable = true;
            done = keySeen = overshot = false;
            firstSentAtOrAfter = INT64_MAX;
            consecutiveErrors = 0;
            if (std::optional<FrameResult> failed = decodePass())
                return std::move(*failed);
            if (!overshot || fromStart)
                break;
            seekTo = saturatingSubtract(target, stepBack);
            stepBack = stepBack > INT64_MAX / 4 ? INT64_MAX : stepBack * 4;
        }
    }
    s.lastTarget = target;
    if (!s.haveBefore && !s.haveAfter)
        return fail(ErrorCode::FileCorrupted, QStringLiteral("The stream holds no frame"));

    // The nearer of the frames around the time; a frame without a time is farther than any.
    const bool takeAfter =
        s.haveAfter
        && (!s.haveBefore
            || timeDistance(shownAt(s.after.get()), target) < timeDistance(target, shownAt(s.before.get())));
    AVFrame* chosen = takeAfter ? s.after.get() : s.before.get();
    // Scaling crops the frame it is given: it gets a reference of its own.
    FramePtr best(av_frame_clone(chosen));
    if (!best)
        return fail(ErrorCode::OutOfMemory, QStringLiteral("Out of memory"));
    const AVRational aspect = av_guess_sample_aspect_ratio(context, s.stream, best.get());
    const double pixelAspect = aspect.num > 0 && aspect.den > 0 ? av_q2d(aspect) : 1.0;
    result.image = scaleFrame(best.get(), pixelAspect, request);
    if (result.image.isNull())
        return fail(ErrorCode::FileCorrupted, QStringLiteral("Cannot convert the frame"));
    if (shownAt(best.get()) != AV_NOPTS_VALUE)
        result.frameTime =
            av_rescale_q(saturatingSubtract(shownAt(best.get()), startTime), s.stream->time_base, AV_TIME_BASE_Q);
    if (!(more && more()))
        m_session.reset(); // nothing follows: the file is closed at once
    return result;
}

FrameResult decodeFrame(const FrameRequest& request, const Limits& limits, const std::atomic_bool* cancelled)
{
    return FrameDecoder(limits).decode(request, cancelled);
}

} // namespace MediaEngine
