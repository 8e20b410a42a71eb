#include <EditorModel/SignatureOpener.h>

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QtEndian>

#include <gtest/gtest.h>

namespace {

QByteArray be32(quint32 v)
{
    QByteArray b(4, '\0');
    qToBigEndian(v, reinterpret_cast<uchar*>(b.data()));
    return b;
}

QByteArray le32(quint32 v)
{
    QByteArray b(4, '\0');
    qToLittleEndian(v, reinterpret_cast<uchar*>(b.data()));
    return b;
}

QByteArray box(const char* type, const QByteArray& payload)
{
    return be32(quint32(8 + payload.size())) + QByteArray(type, 4) + payload;
}

QByteArray mp4()
{
    return box("ftyp", QByteArray("isom", 4) + be32(0) + QByteArray("isomavc1", 8)) + box("moov", QByteArray(32, 'm'))
        + box("mdat", QByteArray(64, 'd'));
}

QByteArray png(int w, int h)
{
    QImage image(w, h, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

QByteArray wave(int declaredExtra)
{
    const QByteArray body = QByteArray("WAVE", 4) + QByteArray("fmt ", 4) + le32(16) + QByteArray(16, '\1')
        + QByteArray("data", 4) + le32(8) + QByteArray(8, '\0');
    return QByteArray("RIFF", 4) + le32(quint32(body.size() + declaredExtra)) + body;
}

enum class Kind { None, Video, Audio, Image };

Kind kindOf(const Media::OpenResult& result)
{
    if (!result.metadata.audios.empty())
        return Kind::Audio;
    if (result.metadata.videos.empty())
        return Kind::None;
    return result.metadata.videos.front().stillImage ? Kind::Image : Kind::Video;
}

std::string codecOf(const Media::OpenResult& result)
{
    if (!result.metadata.audios.empty())
        return result.metadata.audios.front().codec.str();
    return result.metadata.videos.empty() ? std::string() : result.metadata.videos.front().codec.str();
}

std::vector<int> codesOf(const Media::OpenResult& result)
{
    std::vector<int> codes;
    for (const Media::OpenError& error : result.errors)
        codes.push_back(error.code);
    return codes;
}

struct OpenCase
{
    const char* name;
    QByteArray content;
    bool opened;
    Kind kind;
    const char* format;
};

void PrintTo(const OpenCase& c, std::ostream* os)
{
    *os << c.name;
}

class SignatureOpenerTableTest : public ::testing::TestWithParam<OpenCase>
{
};

} // namespace

TEST_P(SignatureOpenerTableTest, OpensOnlyIntactMediaFiles)
{
    const OpenCase c = GetParam();
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QString::fromUtf8(c.name) + QStringLiteral(".bin"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(c.content);
    file.close();

    const Media::OpenResult result = Media::SignatureOpener::probe(path);
    EXPECT_EQ(result.ok, c.opened);
    if (c.opened) {
        EXPECT_TRUE(result.errors.empty());
        EXPECT_EQ(kindOf(result), c.kind);
        EXPECT_EQ(codecOf(result), c.format);
    } else {
        EXPECT_EQ(codesOf(result), std::vector<int>{36});
        EXPECT_EQ(kindOf(result), Kind::None);
    }
}


INSTANTIATE_TEST_SUITE_P(
    Contents, SignatureOpenerTableTest,
    ::testing::Values(
        OpenCase{"empty", QByteArray(), false, Kind::None, ""},
        OpenCase{"text", QByteArray("just some words, not a movie\n"), false, Kind::None, ""},
        OpenCase{"mp4", mp4(), true, Kind::Video, "mp4"},
        OpenCase{"mp4_truncated", mp4().left(mp4().size() - 10), false, Kind::None, ""},
        OpenCase{"mp4_header_only", mp4().left(12), false, Kind::None, ""},
        OpenCase{"matroska", QByteArray("\x1A\x45\xDF\xA3\x9F\x42\x86\x81\x01", 9) + QByteArray(40, '\0'), true,
                 Kind::Video, "matroska"},
        OpenCase{"wave", wave(0), true, Kind::Audio, "wave"},
        OpenCase{"wave_truncated", wave(4000), false, Kind::None, ""},
        OpenCase{"mp3_id3", QByteArray("ID3\x03\x00\x00\x00\x00\x00\x0a", 10) + QByteArray(64, '\0'), true,
                 Kind::Audio, "mp3"},
        OpenCase{"mp3_frame", QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(400, '\0'), true, Kind::Audio, "mp3"},
        OpenCase{"ogg", QByteArray("OggS\x00\x02", 6) + QByteArray(58, '\0'), true, Kind::Audio, "ogg"},
        OpenCase{"flac", QByteArray("fLaC\x00\x00\x00\x22", 8) + QByteArray(34, '\0'), true, Kind::Audio, "flac"},
        OpenCase{"png", png(33, 17), true, Kind::Image, "png"},
        OpenCase{"png_truncated", png(64, 64).left(40), false, Kind::None, ""}),
    [](const ::testing::TestParamInfo<OpenCase>& info) { return std::string(info.param.name); });

TEST(SignatureOpenerTest, MissingPathsAndDirectoriesFailWithCode36)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    for (const QString& path : {QString(), dir.filePath(QStringLiteral("nowhere.mp4")), dir.path()}) {
        const Media::OpenResult result = Media::SignatureOpener::probe(path);
        EXPECT_FALSE(result.ok) << path.toStdString();
        EXPECT_EQ(codesOf(result), std::vector<int>{36}) << path.toStdString();
    }
}

TEST(SignatureOpenerTest, ImageReportsItsFrameSize)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("still.jpg"));
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(path, "JPG"));
    const Media::OpenResult result = Media::SignatureOpener::probe(path);
    ASSERT_TRUE(result.ok);
    ASSERT_EQ(result.metadata.videos.size(), 1u);
    EXPECT_EQ(result.metadata.videos.front().width, 40);
    EXPECT_EQ(result.metadata.videos.front().height, 30);
    EXPECT_TRUE(result.metadata.videos.front().stillImage);
}
