#include "GeneratedMedia.h"
#include "MediaSamples.h"

#include <QColor>
#include <QDir>
#include <QFile>
#include <QHash>
#include <QImage>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

extern "C" {
#include <libavutil/log.h>
}

#include <memory>

#include <sys/stat.h>

namespace MediaSamples {

namespace {

class SamplesEnvironment : public testing::Environment
{
public:
    void SetUp() override
    {
        // Broken samples make FFmpeg complain; the tests assert the engine's own answers.
        av_log_set_level(AV_LOG_QUIET);
        folder = std::make_unique<QTemporaryDir>();
        ASSERT_TRUE(folder->isValid());
    }
    void TearDown() override
    {
        made.clear();
        folder.reset();
    }

    std::unique_ptr<QTemporaryDir> folder;
    QHash<int, QString> made;
};

SamplesEnvironment* environment =
    static_cast<SamplesEnvironment*>(testing::AddGlobalTestEnvironment(new SamplesEnvironment));

QString inFolder(const QString& name) { return environment->folder->filePath(name); }

bool runFfmpeg(QStringList arguments, const QString& output)
{
    arguments.prepend(QStringLiteral("error"));
    arguments.prepend(QStringLiteral("-loglevel"));
    arguments.prepend(QStringLiteral("-y"));
    arguments.append(output);
    QProcess process;
    process.start(QStringLiteral("ffmpeg"), arguments);
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0) {
        ADD_FAILURE() << "ffmpeg failed for " << output.toStdString() << ": "
                      << process.readAllStandardError().toStdString();
        return false;
    }
    return QFileInfo(output).size() > 0;
}

// An ffmpeg argument line split at spaces; "H264" stands for h264 where libx264 is there and
// mpeg4 where it is not.
QStringList ffmpegArguments(const char* line)
{
    QStringList arguments;
    for (const QString& word : QString::fromLatin1(line).split(QLatin1Char(' '))) {
        if (word != QLatin1String("H264"))
            arguments << word;
        else if (hasEncoder("libx264"))
            arguments << QStringLiteral("-c:v") << QStringLiteral("libx264") << QStringLiteral("-preset")
                      << QStringLiteral("ultrafast") << QStringLiteral("-pix_fmt") << QStringLiteral("yuv420p");
        else
            arguments << QStringLiteral("-c:v") << QStringLiteral("mpeg4");
    }
    return arguments;
}

// The samples the ffmpeg command line makes: the file's name and the arguments before it.
struct Recipe
{
    Sample sample;
    const char* file;
    const char* arguments;
};

const Recipe recipes[] = {
    {Sample::Mp4VideoAudio, "video-audio.mp4",
     "-f lavfi -i testsrc=size=320x240:rate=25:duration=2 -f lavfi -i sine=frequency=440:sample_rate=48000:duration=2 "
     "H264 -c:a aac -ac 2"},
    {Sample::MkvVideo, "video.mkv", "-f lavfi -i testsrc=size=640x360:rate=30000/1001:duration=1.5 -c:v mpeg4"},
    {Sample::AviVideoAudio, "video-audio.avi",
     "-f lavfi -i testsrc=size=176x144:rate=15:duration=2 -f lavfi -i sine=frequency=220:sample_rate=44100:duration=2 "
     "-c:v mpeg4 -c:a pcm_s16le -ac 1"},
    {Sample::Mp4Colours, "colours.mp4",
     "-f lavfi -i color=c=red:size=320x180:rate=25:duration=1 -f lavfi -i color=c=blue:size=320x180:rate=25:duration=1 "
     "-filter_complex [0][1]concat=n=2:v=1:a=0 H264 -g 10"},
    {Sample::Mp4Reordered, "reordered.mp4",
     "-f lavfi -i testsrc=size=320x240:rate=25:duration=2 -c:v libx264 -qp 1 -pix_fmt yuv420p -bf 3 "
     "-x264-params b-pyramid=normal:b-adapt=0 -g 25"},
    {Sample::MkvIntra, "intra.mkv", "-f lavfi -i testsrc=size=320x240:rate=25:duration=2 -c:v ffv1 -pix_fmt yuv420p"},
    {Sample::MkvAnamorphic, "anamorphic.mkv",
     "-f lavfi -i color=c=white:size=720x576:rate=25:duration=1,setsar=16/15 -c:v mpeg4"},
    {Sample::WavAudio, "audio.wav",
     "-f lavfi -i sine=frequency=440:sample_rate=44100:duration=1.5 -ac 2 -c:a pcm_s16le"},
    {Sample::OggAudio, "audio.ogg", "-f lavfi -i sine=frequency=440:sample_rate=48000:duration=1 -ac 1 -c:a libvorbis"},
    {Sample::GifAnimation, "animation.gif", "-f lavfi -i testsrc=size=64x48:rate=10:duration=1"},
    {Sample::WebpImage, "image.webp", "-f lavfi -i color=c=yellow:size=32x24 -frames:v 1"},
    {Sample::NoDecoder, "commodore.nut", "-f lavfi -i testsrc=size=320x200:rate=25:duration=1 -c:v a64multi -f nut"},
};

bool writeBytes(const QString& file, const QByteArray& bytes)
{
    QFile out(file);
    return out.open(QIODevice::WriteOnly) && out.write(bytes) == bytes.size();
}

QString truncatedCopy(Sample source, const QString& name, int bytes)
{
    QFile in(path(source));
    if (!in.open(QIODevice::ReadOnly))
        return {};
    const QString file = inFolder(name);
    return writeBytes(file, in.read(bytes)) ? file : QString();
}

QString make(Sample sample)
{
    for (const Recipe& recipe : recipes) {
        if (recipe.sample == sample) {
            const QString file = inFolder(QLatin1String(recipe.file));
            return runFfmpeg(ffmpegArguments(recipe.arguments), file) ? file : QString();
        }
    }
    switch (sample) {
    case Sample::PngImage:
    case Sample::JpegImage:
    case Sample::BmpImage: {
        struct Still
        {
            const char* name;
            QSize size;
            Qt::GlobalColor colour;
            const char* format;
        };
        const Still still = sample == Sample::PngImage    ? Still{"image.png", QSize(64, 48), Qt::red, "PNG"}
                            : sample == Sample::JpegImage ? Still{"image.jpg", QSize(80, 60), Qt::green, "JPEG"}
                                                          : Still{"image.bmp", QSize(50, 40), Qt::blue, "BMP"};
        QImage image(still.size, QImage::Format_RGB32);
        image.fill(still.colour);
        const QString file = inFolder(QLatin1String(still.name));
        return image.save(file, still.format, 95) ? file : QString();
    }
    case Sample::PngStrip: {
        QImage strip(3000, 20, QImage::Format_RGB32);
        const QColor thirds[] = {Qt::red, Qt::green, Qt::blue};
        for (int x = 0; x < strip.width(); ++x)
            for (int y = 0; y < strip.height(); ++y)
                strip.setPixelColor(x, y, thirds[x / 1000]);
        const QString file = inFolder(QStringLiteral("strip.png"));
        return strip.save(file, "PNG") ? file : QString();
    }
    case Sample::PngNamedMov:
        return copyOf(Sample::PngImage, QStringLiteral("picture.mov"));
    case Sample::TextNamedMkv: {
        const QString file = inFolder(QStringLiteral("notes.mkv"));
        return writeBytes(file, QByteArray("These are meeting notes, not a video.\n").repeated(200)) ? file : QString();
    }
    case Sample::TruncatedMp4: {
        // Made without moving the index to the front, so the cut leaves no index.
        const QString full = inFolder(QStringLiteral("index-at-end.mp4"));
        if (!runFfmpeg(ffmpegArguments("-f lavfi -i testsrc=size=320x240:rate=25:duration=2 H264"), full))
            return {};
        QFile in(full);
        const QString file = inFolder(QStringLiteral("truncated.mp4"));
        return in.open(QIODevice::ReadOnly) && writeBytes(file, in.read(4096)) ? file : QString();
    }
    case Sample::TruncatedMkv:
        return truncatedCopy(Sample::MkvVideo, QStringLiteral("truncated.mkv"), 200);
    case Sample::RandomBytes: {
        QRandomGenerator generator(20261121);
        QByteArray noise(64 * 1024, Qt::Uninitialized);
        generator.fillRange(reinterpret_cast<quint32*>(noise.data()), noise.size() / 4);
        const QString file = inFolder(QStringLiteral("noise.avi"));
        return writeBytes(file, noise) ? file : QString();
    }
    case Sample::Empty: {
        const QString file = inFolder(QStringLiteral("empty.mp4"));
        return writeBytes(file, QByteArray()) ? file : QString();
    }
    case Sample::Folder: {
        const QString file = inFolder(QStringLiteral("folder.mp4"));
        return QDir().mkpath(file) ? file : QString();
    }
    case Sample::Missing:
        return inFolder(QStringLiteral("gone.mp4"));
    case Sample::Pipe: {
        const QString file = inFolder(QStringLiteral("pipe.mp4"));
        return mkfifo(QFile::encodeName(file).constData(), 0600) == 0 ? file : QString();
    }
    case Sample::HugePng: {
        const QString file = inFolder(QStringLiteral("huge.png"));
        return writeBytes(file, pngAnnouncing(100000, 100000)) ? file : QString();
    }
    default: // made from a recipe above
        return {};
    }
}

} // namespace

QString path(Sample sample)
{
    const int key = int(sample);
    auto found = environment->made.constFind(key);
    if (found != environment->made.constEnd())
        return *found;
    const QString file = make(sample);
    if (file.isEmpty())
        ADD_FAILURE() << "sample " << key << " could not be made";
    environment->made.insert(key, file);
    return file;
}

QString copyOf(Sample sample, const QString& name)
{
    const QString file = inFolder(name);
    QFile::remove(file);
    return QFile::copy(path(sample), file) ? file : QString();
}

QString encoded(const QString& name, const QStringList& arguments)
{
    const QString file = inFolder(name);
    if (QFileInfo(file).size() > 0 || runFfmpeg(arguments, file))
        return file;
    return {};
}

QString scratchPath(const QString& name) { return inFolder(name); }

bool hasEncoder(const char* name)
{
    static QHash<QString, bool> known;
    const QString key = QLatin1String(name);
    if (!known.contains(key)) {
        QProcess process;
        process.start(QStringLiteral("ffmpeg"), {QStringLiteral("-hide_banner"), QStringLiteral("-encoders")});
        process.waitForFinished(30000);
        const QString listing = QString::fromUtf8(process.readAllStandardOutput());
        known.insert(key, listing.contains(QLatin1Char(' ') + key + QLatin1Char(' ')));
    }
    return known.value(key);
}

} // namespace MediaSamples
