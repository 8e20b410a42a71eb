#include <EditorModel/SignatureOpener.h>

#include "MediaSamples.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSize>
#include <QTemporaryDir>
#include <QThread>

#include <gtest/gtest.h>

namespace {

using namespace MediaSamples;

enum class Kind
{
    None,
    Video,
    Audio,
    Image
};

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
    QSize frame = QSize(); // of a still image
    int failureCode = 36;
};

} // namespace

TEST(SignatureOpenerTest, OpensOnlyIntactMediaFiles)
{
    const OpenCase rows[] = {
        {"empty", QByteArray(), false, Kind::None, ""},
        {"text", QByteArray("just some words, not a movie\n"), false, Kind::None, ""},
        {"mp4", mp4(), true, Kind::Video, "mp4"},
        {"mp4_truncated", mp4().left(mp4().size() - 10), false, Kind::None, ""},
        {"mp4_header_only", mp4().left(12), false, Kind::None, ""},
        {"matroska", QByteArray("\x1A\x45\xDF\xA3\x9F\x42\x86\x81\x01", 9) + QByteArray(40, '\0'), true, Kind::Video,
         "matroska"},
        {"wave", wave(), true, Kind::Audio, "wave"},
        {"wave_truncated", wave(4000), false, Kind::None, ""},
        {"mp3_id3", QByteArray("ID3\x03\x00\x00\x00\x00\x00\x0a", 10) + QByteArray(64, '\0'), true, Kind::Audio, "mp3"},
        {"mp3_frame", QByteArray("\xFF\xFB\x90\x64", 4) + QByteArray(400, '\0'), true, Kind::Audio, "mp3"},
        {"ogg", QByteArray("OggS\x00\x02", 6) + QByteArray(58, '\0'), true, Kind::Audio, "ogg"},
        {"flac", QByteArray("fLaC\x00\x00\x00\x22", 8) + QByteArray(34, '\0'), true, Kind::Audio, "flac"},
        {"png", png(33, 17), true, Kind::Image, "png", QSize(33, 17)},
        {"png_truncated", png(64, 64).left(40), false, Kind::None, ""},
        // Judged by the header, never decoded: a few bytes can announce gigabytes of pixels.
        {"png_announcing_8192_square", pngAnnouncing(8192, 8192), true, Kind::Image, "png", QSize(8192, 8192)},
        {"png_announcing_20000_square", pngAnnouncing(20000, 20000), false, Kind::None, "", QSize(), 34},
        {"png_announcing_a_long_strip", pngAnnouncing(20000, 2), false, Kind::None, "", QSize(), 34},
        {"png_announcing_100000_square", pngAnnouncing(100000, 100000), false, Kind::None, "", QSize(), 34}};
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    for (const OpenCase& c : rows) {
        SCOPED_TRACE(c.name);
        const QString path = dir.filePath(QString::fromUtf8(c.name) + QStringLiteral(".bin"));
        ASSERT_TRUE(writeFile(path, c.content));

        const Media::OpenResult result = Media::SignatureOpener::probe(path);
        EXPECT_EQ(result.ok, c.opened);
        if (c.opened) {
            EXPECT_TRUE(result.errors.empty());
            EXPECT_EQ(kindOf(result), c.kind);
            EXPECT_EQ(codecOf(result), c.format);
            if (c.kind == Kind::Image) {
                EXPECT_EQ(QSize(result.metadata.videos.front().width, result.metadata.videos.front().height), c.frame);
            }
        } else {
            EXPECT_EQ(codesOf(result), std::vector<int>{c.failureCode});
            EXPECT_EQ(kindOf(result), Kind::None);
        }
    }
}

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

TEST(SignatureOpenerTest, AnswersComeOnTheGuiThreadFromTheEventLoop)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString good = dir.filePath(QStringLiteral("good.mp4"));
    ASSERT_TRUE(writeFile(good, mp4()));

    Media::SignatureOpener opener;
    std::vector<std::pair<bool, QThread*>> answers;
    bool insideOpen = true;
    bool answeredInsideOpen = false;
    for (const QString& path : {good, dir.filePath(QStringLiteral("missing.mp4"))}) {
        opener.open(Types::String(path), [&](const Media::OpenResult& result) {
            answeredInsideOpen = answeredInsideOpen || insideOpen;
            answers.emplace_back(result.ok, QThread::currentThread());
        });
    }
    insideOpen = false;
    QElapsedTimer timer;
    timer.start();
    while (answers.size() < 2 && timer.elapsed() < 10000)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);

    ASSERT_EQ(answers.size(), 2u);
    EXPECT_FALSE(answeredInsideOpen);
    int openedCount = 0;
    for (const auto& answer : answers) {
        EXPECT_EQ(answer.second, QCoreApplication::instance()->thread());
        openedCount += answer.first ? 1 : 0;
    }
    EXPECT_EQ(openedCount, 1);
}

TEST(SignatureOpenerTest, DestroyedOpenerDropsAnswersStillDue)
{
    QTemporaryDir dir;
    ASSERT_TRUE(dir.isValid());
    const QString good = dir.filePath(QStringLiteral("good.png"));
    ASSERT_TRUE(writeFile(good, png(8, 8)));
    int answers = 0;
    {
        Media::SignatureOpener opener;
        for (int i = 0; i < 20; ++i)
            opener.open(Types::String(good), [&answers](const Media::OpenResult&) { ++answers; });
    }
    for (int i = 0; i < 20; ++i)
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    EXPECT_EQ(answers, 0);
}
