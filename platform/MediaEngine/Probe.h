#pragma once

#include <MediaEngine/MediaTypes.h>

#include <QStringList>

#include <atomic>

namespace MediaEngine {

// Reads the streams of a media file or still image. Safe on any thread; blocks for as long
// as reading takes (bounded by the limits), so the GUI thread goes through Engine::probe.
// A set `cancelled` flag makes it return early with a failure.
MEDIAENGINE_EXPORT ProbeResult probeFile(const QString& path, const Limits& limits = Limits(),
                                         const std::atomic_bool* cancelled = nullptr);

enum class ExtensionGroup
{
    Video,
    Audio,
    Image
};

// Lower-case extensions without the dot, sorted, of the files this installation opens:
// the common extensions of each group that one of its demuxers claims.
MEDIAENGINE_EXPORT QStringList supportedExtensions(ExtensionGroup group);
// All three groups together, sorted, without repeats.
MEDIAENGINE_EXPORT QStringList supportedExtensions();

} // namespace MediaEngine
