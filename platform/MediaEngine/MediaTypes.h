#pragma once

#include <QColor>
#include <QImage>
#include <QSize>
#include <QString>
#include <QtGlobal>

#include <boost/rational.hpp>

#include <vector>

// Symbols of the media engine stay visible from the shared library whatever the
// visibility preset of the code around it.
#define MEDIAENGINE_EXPORT __attribute__((visibility("default")))

namespace MediaEngine {

// Processing-error codes a failed file or frame carries; the application turns them into
// user texts (code 36 reads "The input file is corrupted or missing...").
namespace ErrorCode {
constexpr int None = 0;
// No video or audio stream the engine could use, or a failure with no better code.
constexpr int Unknown = 8;
// A stream's codec has no decoder in this installation.
constexpr int CodecNotAvailable = 20;
// Frames a container announces larger than the engine's limits, whether probing, opening for
// the model or decoding. (A picture that only its decoder finds too large stays unread:
// code 36.)
constexpr int OutOfMemory = 34;
// Missing, vanished, unreadable, truncated or corrupt file.
constexpr int FileCorrupted = 36;
} // namespace ErrorCode

// How a frame is fitted into the requested size. The numbering is that of the
// thumbnail requester's mode, whose default (2) fills the whole size.
enum class ResizeMode
{
    IgnoreAspectRatio = 0,          // stretched to the size
    KeepAspectRatio = 1,            // fitted inside, the rest filled with the padding colour
    KeepAspectRatioByExpanding = 2, // covers the size, the overflow cut evenly on both sides
};

// Times and durations are microseconds from the start of the file.
struct MEDIAENGINE_EXPORT VideoStream
{
    int index = -1; // stream index in the file
    QSize frameSize;
    boost::rational<long long> pixelAspect{1, 1};
    boost::rational<long long> frameRate{0, 1}; // 0 for a still image
    qint64 duration = 0;                        // 0 for a still image
    qint64 frameCount = 0;                      // 1 for a still image
    bool stillImage = false;
    QString codecName;
};

struct MEDIAENGINE_EXPORT AudioStream
{
    int index = -1;
    int sampleRate = 0;
    int channelCount = 0;
    QString channelLayout; // "mono", "stereo", "5.1(side)"...
    qint64 duration = 0;
    QString codecName;
};

struct MEDIAENGINE_EXPORT ProbeResult
{
    QString path;
    QString containerName; // the demuxer that read the file ("mov,mp4,m4a,3gp,3g2,mj2", "png_pipe")
    qint64 duration = 0;
    std::vector<VideoStream> video;
    std::vector<AudioStream> audio;
    int errorCode = ErrorCode::None;
    QString errorMessage; // a developer's description, not a user text

    bool ok() const { return errorCode == ErrorCode::None; }
};

struct MEDIAENGINE_EXPORT FrameRequest
{
    QString path;
    int streamIndex = -1; // -1: the file's main video stream
    qint64 time = 0;
    QSize size;
    ResizeMode resizeMode = ResizeMode::KeepAspectRatioByExpanding;
    QColor paddingColor; // invalid: transparent
};

struct MEDIAENGINE_EXPORT FrameResult
{
    FrameRequest request;
    QImage image;         // exactly request.size, ARGB32 premultiplied; null on failure
    qint64 frameTime = 0; // time of the decoded frame, nearest to the requested one
    bool fromCache = false;
    int errorCode = ErrorCode::None;
    QString errorMessage;

    bool ok() const { return errorCode == ErrorCode::None; }
};

// Guards against slow and hostile files.
struct MEDIAENGINE_EXPORT Limits
{
    qint64 probeSize = 5'000'000;          // bytes read to find the streams
    qint64 analyzeDuration = 5'000'000;    // microseconds of media read to find the streams
    int probeTimeoutMs = 10'000;           // a probe taking longer fails (code 36)
    int decodeTimeoutMs = 10'000;          // a frame taking longer fails (code 36)
    int maxFrameSide = 16384;              // larger frames fail (code 34)
    qint64 maxFramePixels = 8192LL * 8192; // idem
    int maxThumbnailSide = 4096;           // larger requested sizes are refused
};

} // namespace MediaEngine
