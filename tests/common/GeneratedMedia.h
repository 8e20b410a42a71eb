#pragma once

#include <QString>
#include <QStringList>

// Real media files made once per test program with the ffmpeg command line and QImage, in a
// temporary folder; each is made the first time a test asks for it. Linked from the static
// library EditorUtilGeneratedMedia by every test program that decodes real media.
namespace MediaSamples {

enum class Sample
{
    Mp4VideoAudio, // h264 (mpeg4 without libx264) 320x240 25 fps 2 s + aac 48 kHz stereo
    MkvVideo,      // mpeg4 640x360 30000/1001 fps 1.5 s, no audio
    AviVideoAudio, // mpeg4 176x144 15 fps 2 s + pcm 44.1 kHz mono
    Mp4Colours,    // 320x180 25 fps: red for 1 s, then blue for 1 s; a key frame every 10
    MkvAnamorphic, // white 720x576 with 16:15 pixels (shown 4:3), 1 s
    WavAudio,      // pcm 44.1 kHz stereo 1.5 s
    OggAudio,      // vorbis 48 kHz mono 1 s
    PngImage,      // red 64x48
    JpegImage,     // green 80x60
    BmpImage,      // blue 50x40
    WebpImage,     // yellow 32x24
    PngStrip,      // 3000x20: red, green and blue thirds
    GifAnimation,  // 64x48 10 fps 1 s, an animated picture
    PngNamedMov,   // the red png under a video extension
    TextNamedMkv,  // a text file under a video extension
    TruncatedMp4,  // the first 4 KiB of an mp4 whose index is at its end
    TruncatedMkv,  // the first 200 bytes of a Matroska file
    RandomBytes,   // 64 KiB of noise named .avi
    Empty,         // zero bytes named .mp4
    Folder,        // a folder named folder.mp4
    Missing,       // a path where nothing is
    Pipe,          // a named pipe without a writer, named pipe.mp4
    HugePng,       // a png header announcing 100000x100000 pixels (its decoder refuses it)
    NoDecoder,     // a video in a codec this installation encodes but cannot decode (nut)
    Mp4Reordered,  // near-lossless h264 320x240 25 fps 2 s of counting testsrc frames, 3 b-frames
                   // (referenced ones too), a key frame every 25; needs libx264
    MkvIntra,      // the same frames in lossless ffv1, every frame a key frame
};

// The path of the sample, made on first use; empty (with a test failure) when it could
// not be made.
QString path(Sample sample);
// A copy of the sample under a new name in the samples folder (for tests that need
// several distinct files).
QString copyOf(Sample sample, const QString& name);
// A file of the samples folder made by the ffmpeg command with `arguments` (inputs, codecs,
// format; the output path is appended), once per name; empty (with a test failure) when
// ffmpeg failed.
QString encoded(const QString& name, const QStringList& arguments);
// A path in the samples folder for a file a test writes itself.
QString scratchPath(const QString& name);
// Whether the ffmpeg command line lists the encoder.
bool hasEncoder(const char* name);

} // namespace MediaSamples
