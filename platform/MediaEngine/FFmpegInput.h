#pragma once

// Internal to the media engine: opening a file with FFmpeg under the engine's limits.

#include <MediaEngine/MediaTypes.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <atomic>
#include <chrono>
#include <memory>

namespace MediaEngine::Detail {

struct FormatCloser
{
    void operator()(AVFormatContext* context) const { avformat_close_input(&context); }
};
struct CodecCloser
{
    void operator()(AVCodecContext* context) const { avcodec_free_context(&context); }
};
struct FrameFree
{
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
struct PacketFree
{
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};
using FormatPtr = std::unique_ptr<AVFormatContext, FormatCloser>;
using CodecPtr = std::unique_ptr<AVCodecContext, CodecCloser>;
using FramePtr = std::unique_ptr<AVFrame, FrameFree>;
using PacketPtr = std::unique_ptr<AVPacket, PacketFree>;

// Read by FFmpeg's interrupt callback: blocking reads give up once the deadline passed or
// the job was cancelled.
class Deadline
{
public:
    Deadline(int timeoutMs, const std::atomic_bool* cancelled);
    bool cancelled() const { return m_cancelled && m_cancelled->load(std::memory_order_relaxed); }
    bool expired() const { return std::chrono::steady_clock::now() > m_until; }
    bool interrupted() const { return cancelled() || expired(); }
    AVIOInterruptCB callback();

private:
    std::chrono::steady_clock::time_point m_until;
    const std::atomic_bool* m_cancelled;
};

struct OpenedInput
{
    FormatPtr format;
    int errorCode = ErrorCode::None;
    QString errorMessage;
};

enum class StreamInfo
{
    Analyse,       // read and decode the start of the file until every stream is known
    HeaderIfEnough // trust the header when it names the codec and frame size of every video
};

// Opens the file (local files only) and reads its stream parameters.
OpenedInput openInput(const QString& path, const Limits& limits, Deadline& deadline,
                      StreamInfo streamInfo = StreamInfo::Analyse);

// The processing-error code of an FFmpeg failure while reading a file.
int errorCodeOf(int averror);
QString describeAVError(int averror);

bool frameTooLarge(int width, int height, const Limits& limits);
bool hasUsableDecoder(AVCodecID codecId);

} // namespace MediaEngine::Detail
