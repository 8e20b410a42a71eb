#pragma once

#include <MediaEngine/MediaTypes.h>

#include <QImage>
#include <QSize>
#include <QString>

#include <functional>

namespace MediaEngine {

// What a written clip holds: `frameCount` pictures of `size` at `frameRate` frames per
// second, each painted by `paintFrame` (given a cleared picture and the frame's number), and,
// when `toneHz` is above 0, a sine tone of that pitch for the whole length.
struct MEDIAENGINE_EXPORT ClipRecipe
{
    QSize size{320, 180};
    int frameRate = 25;
    int frameCount = 50;
    std::function<void(QImage& picture, int frame)> paintFrame;
    double toneHz = 0.0;
};

// Writes small media files with the encoders every FFmpeg build carries: MPEG-4 part 2 video
// (with AAC sound) in the container the path's extension names (".mp4", ".mkv", ".avi"), or
// 16-bit PCM sound in a ".wav". The file is written beside its target under a temporary name
// and renamed at the end, so a failure leaves nothing behind. False, with a developer's
// description in `error`, when a step fails.
MEDIAENGINE_EXPORT bool writeClip(const QString& path, const ClipRecipe& recipe, QString* error = nullptr);
MEDIAENGINE_EXPORT bool writeTone(const QString& path, double seconds, double toneHz, int sampleRate = 44100,
                                  QString* error = nullptr);

} // namespace MediaEngine
