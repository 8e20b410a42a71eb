#pragma once

#include <QString>
#include <QStringList>

// The sandbox's sample media, drawn here and written with the media engine: colour bars
// with a running clock and a tone, a moving shape, a tone alone, a still picture and one
// file cut short on purpose (it fails to open, to show the failure path).
namespace SampleMedia {

QString barsFile();   // "bars-clock.mp4": 4 s, 320x180 at 25 fps, 440 Hz tone
QString shapeFile();  // "moving-shape.mkv": 3 s, 320x180 at 25 fps, no sound
QString toneFile();   // "tone.wav": 3 s at 660 Hz
QString stillFile();  // "still.png": 640x360
QString brokenFile(); // "broken.mp4": the first 4 KiB of the bars

// Writes the samples missing from `folder` (made when missing); the paths of all five in the
// order above, or an empty list with the reason in `error`.
QStringList ensure(const QString& folder, QString* error = nullptr);

} // namespace SampleMedia
