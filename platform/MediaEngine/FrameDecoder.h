#pragma once

#include <MediaEngine/MediaTypes.h>

#include <atomic>
#include <functional>
#include <memory>

namespace MediaEngine {

// Decodes the frame of a video stream nearest to the requested time and fits it into the
// requested size. Safe on any thread; blocks while decoding (bounded by the limits), so
// the GUI thread goes through Engine::requestFrame. A set `cancelled` flag makes it return
// early with a failure.
MEDIAENGINE_EXPORT FrameResult decodeFrame(const FrameRequest& request, const Limits& limits = Limits(),
                                           const std::atomic_bool* cancelled = nullptr);

// decodeFrame for several frames of one file in a row: with `more` set, the file and its
// decoder stay open after the frame, so that a following request for a later time of the
// same group of pictures goes on from the frames already decoded instead of seeking back to
// the key frame and decoding them again (a strip of thumbnails costs about one decode of the
// group). A request for another file, another stream, an earlier time, a time past the next
// key frame, or a file changed on disk meanwhile starts afresh. Without `more` the file is
// closed after the frame. One object per thread.
class MEDIAENGINE_EXPORT FrameDecoder
{
public:
    explicit FrameDecoder(const Limits& limits = Limits());
    ~FrameDecoder();
    FrameDecoder(const FrameDecoder&) = delete;
    FrameDecoder& operator=(const FrameDecoder&) = delete;

    FrameResult decode(const FrameRequest& request, const std::atomic_bool* cancelled = nullptr, bool more = false);
    // The same, asking `more` (on the decoding thread) whether another request follows, at the
    // moment it matters: when the frame could be drained out and when the frame is done.
    FrameResult decode(const FrameRequest& request, const std::atomic_bool* cancelled,
                       const std::function<bool()>& more);
    // Closes the file kept open.
    void close();

private:
    struct Session;

    Limits m_limits;
    std::unique_ptr<Session> m_session;
};

} // namespace MediaEngine
