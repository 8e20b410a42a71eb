#pragma once

#include <MediaEngine/MediaTypes.h>

#include <atomic>

namespace MediaEngine {

// Decodes the frame of a video stream nearest to the requested time and fits it into the
// requested size. Safe on any thread; blocks while decoding (bounded by the limits), so
// the GUI thread goes through Engine::requestFrame. A set `cancelled` flag makes it return
// early with a failure.
MEDIAENGINE_EXPORT FrameResult decodeFrame(const FrameRequest& request, const Limits& limits = Limits(),
                                           const std::atomic_bool* cancelled = nullptr);

} // namespace MediaEngine
