#include <EditorModel/FileOpener.h>

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

struct OpenCase
{
    const char* name;
    QByteArray content;
    bool opened;
    Media::OpenOutcome::Kind kind;
    const char* format;
};

void PrintTo(const OpenCase& c, std::ostream* os)
{
    *os << c.name;
}

class FileOpenerTableTest : public ::testing::TestWithParam<OpenCase>
{
};

} // namespace

TEST_P(FileOpenerTableTest, OpensOnlyIntactMediaFiles)
{
    const OpenCase c = GetParam();
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QString::fromUtf8(c.name) + QStringLiteral(".bin"));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(c.content);
    file.close();

    const Media::OpenOutcome outcome = Media::SignatureFileOpener().open(path);
    EXPECT_EQ(outcome.opened, c.opened);
    if (c.opened) {
        EXPECT_TRUE(outcome.errorCodes.empty());
        EXPECT_EQ(outcome.kind, c.kind);
        EXPECT_EQ(outcome.format, QString::fromUtf8(c.format));
    } else {
        EXPECT_EQ(outcome.errorCodes, std::vector<int>{36});
    }
}

using Kind = Media::OpenOutcome::Kind;

INSTANTIATE_TEST_SUITE_P(
    Contents, FileOpenerTableTest,
    ::testing::Values(
        OpenCase{"empty", QByteArray(), false, Kind::Unknown, ""},
        OpenCase{"text", QByteArray("just some words, not a movie\n"), false, Kind::Unknown, ""},
        OpenCase{"mp4", mp4(), true, Kind::Video, "mp4"},
        OpenCase{"mp4_truncated", mp4().left(mp4().size() - 10), false, Kind::Unknown, ""},
        OpenCase{"mp4_header_only", mp4().left(12), false, Kind::Unknown, ""},
        OpenCase{"matroska", QByteArray("\x1A\x45\xDF\xA3\x9F\x42\x86\x81\x01", 9) + QByteArray(40, '\0'), true,
                 Kind::Video, "matroska"},
        OpenCase{"wave", wave(0), true, Kind::Audio, "wave"},
        OpenCase{"wave_truncated", wave(4000), false, Kind::Unknown, ""},
        OpenCase{"mp3_id3", QByteArray("ID3\x03\x00\x00\x00\x00\x00\x0a", 10) + QByteArray(64, '\0'), true,
                 Kind::Audio, "mp3"},
        OpenCase{"mp3_frame", QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(400, '\0'), true, Kind::Audio, "mp3"},
        OpenCase{"ogg", QByteArray("OggS\x00\x02", 6) + QByteArray(58, '\0'), true, Kind::Audio, "ogg"},
        OpenCase{"flac", QByteArray("fLaC\x00\x00\x00\x22", 8) + QByteArray(34, '\0'), true, Kind::Audio, "flac"},
        OpenCase{"png", png(33, 17), true, Kind::Image, "png"},
        OpenCase{"png_truncated", png(64, 64).left(40), false, Kind::Unknown, ""}),
    [](const ::testing::TestParamInfo<OpenCase>& info) { return std::string(info.param.name); });

TEST(FileOpenerTest, MissingPathsAndDirectoriesFailWithCode36)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const Media::SignatureFileOpener opener;
    for (const QString& path : {QString(), dir.filePath(QStringLiteral("nowhere.mp4")), dir.path()}) {
        const Media::OpenOutcome outcome = opener.open(path);
        EXPECT_FALSE(outcome.opened) << path.toStdString();
        EXPECT_EQ(outcome.errorCodes, std::vector<int>{36}) << path.toStdString();
    }
}

TEST(FileOpenerTest, ImageReportsItsFrameSize)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString path = dir.filePath(QStringLiteral("still.jpg"));
    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::red);
    ASSERT_TRUE(image.save(path, "JPG"));
    const Media::OpenOutcome outcome = Media::SignatureFileOpener().open(path);
    ASSERT_TRUE(outcome.opened);
    EXPECT_EQ(outcome.frameSize, QSize(40, 30));
}
