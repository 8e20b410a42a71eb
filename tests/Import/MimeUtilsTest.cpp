#include <Util/Import/MimeUtils.h>

#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString touch(const QTemporaryDir& dir, const QString& name, const QByteArray& content = QByteArray("x"))
{
    const QString path = dir.filePath(name);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return {};
    file.write(content);
    return path;
}

class MimeUtilsTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
    QTemporaryDir dir;
};

} // namespace

TEST_F(MimeUtilsTest, FormatsHaveTheirFixedNames)
{
    EXPECT_EQ(MimeUtils::dragAsrcFormat(), QStringLiteral("application/x-dragAndDropAsrc"));
    EXPECT_EQ(MimeUtils::filesUrlsFormat(), QStringLiteral("application/x-filesUrls"));
    EXPECT_EQ(MimeUtils::overlaySuffixes(), QSet<QString>{QStringLiteral("svg")});
}

TEST_F(MimeUtilsTest, DragOriginRoundTripsAsUtf8)
{
    QMimeData data;
    EXPECT_TRUE(MimeUtils::mimeDragAsrc(&data).isEmpty());

    const QString origin = QStringLiteral("media-library/Clips \u00e9\u00e8 \u65e5\u672c");
    MimeUtils::setMimeDragAsrc(&data, origin);
    EXPECT_EQ(data.data(QStringLiteral("application/x-dragAndDropAsrc")), origin.toUtf8());
    EXPECT_EQ(MimeUtils::mimeDragAsrc(&data), origin);
    EXPECT_FALSE(MimeUtils::hasUrls(&data));
}

TEST_F(MimeUtilsTest, PackFilesStoresLocalUrlsInOrder)
{
    QMimeData data;
    const QStringList paths{dir.filePath(QStringLiteral("b.mp4")), dir.filePath(QStringLiteral("a b.mov"))};
    MimeUtils::packFiles(&data, paths);
    ASSERT_TRUE(MimeUtils::hasUrls(&data));
    const QList<QUrl> urls = data.urls();
    ASSERT_EQ(urls.size(), 2);
    EXPECT_EQ(urls[0].toLocalFile(), paths[0]);
    EXPECT_EQ(urls[1].toLocalFile(), paths[1]);
    EXPECT_EQ(MimeUtils::urls(paths), urls);
}

TEST_F(MimeUtilsTest, NullDataIsRefusedWithoutCrash)
{
    EXPECT_FALSE(MimeUtils::hasUrls(nullptr));
    EXPECT_TRUE(MimeUtils::mimeDragAsrc(nullptr).isEmpty());
    EXPECT_TRUE(MimeUtils::extractFiles(nullptr, {QStringLiteral("mp4")}).isEmpty());
    EXPECT_FALSE(MimeUtils::isMimeDataContainsSupportedFile(nullptr, {QStringLiteral("mp4")}, true));
}

struct SuffixCase
{
    const char* name;
    const char* fileName;
    const char* suffix;
    bool expected;
};

class SuffixMatchTest : public ::testing::TestWithParam<SuffixCase>
{
};

TEST_P(SuffixMatchTest, MatchesLowerCasedSuffixExactly)
{
    const SuffixCase c = GetParam();
    QTemporaryDir dir;
    const QString path = touch(dir, QString::fromUtf8(c.fileName));
    const QSet<QString> set{QString::fromUtf8(c.suffix)};
    EXPECT_EQ(MimeUtils::isUrlListContainsSupportedFile({QUrl::fromLocalFile(path)}, set, false), c.expected);
}

INSTANTIATE_TEST_SUITE_P(
    Suffixes, SuffixMatchTest,
    ::testing::Values(SuffixCase{"lower_file_lower_set", "clip.mp4", "mp4", true},
                      SuffixCase{"upper_file_lower_set", "CLIP.MP4", "mp4", true},
                      SuffixCase{"upper_file_upper_set", "CLIP.MP4", "MP4", false},
                      SuffixCase{"set_with_dot", "clip.mp4", ".mp4", false},
                      SuffixCase{"last_dot_only", "archive.mp4.gz", "mp4", false},
                      SuffixCase{"no_suffix", "README", "mp4", false}),
    [](const ::testing::TestParamInfo<SuffixCase>& info) { return std::string(info.param.name); });

TEST_F(MimeUtilsTest, DirectoriesCountOnlyWhenAccepted)
{
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(dir.path())});
    const QSet<QString> set{QStringLiteral("mp4")};
    EXPECT_FALSE(MimeUtils::isMimeDataContainsSupportedFile(&data, set, false));
    EXPECT_TRUE(MimeUtils::isMimeDataContainsSupportedFile(&data, set, true));
}

TEST_F(MimeUtilsTest, NonLocalUrlsMatchNothing)
{
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("https://example.org/clip.mp4"))});
    EXPECT_FALSE(MimeUtils::isMimeDataContainsSupportedFile(&data, {QStringLiteral("mp4")}, true));
    EXPECT_TRUE(MimeUtils::extractFiles(&data, {QStringLiteral("mp4")}).isEmpty());
}

TEST_F(MimeUtilsTest, ExtractFilesKeepsUrlOrderAndAbsolutePaths)
{
    const QString a = touch(dir, QStringLiteral("z.dscproj"));
    const QString b = touch(dir, QStringLiteral("clip.mp4"));
    const QString c = touch(dir, QStringLiteral("A.DSCPROJ"));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(a), QUrl::fromLocalFile(b), QUrl::fromLocalFile(dir.path()),
                  QUrl::fromLocalFile(c)});
    EXPECT_EQ(MimeUtils::extractFiles(&data, {QStringLiteral("dscproj")}), (QStringList{a, c}));
    EXPECT_EQ(MimeUtils::extractFiles(&data, {QStringLiteral("mp4"), QStringLiteral("dscproj")}),
              (QStringList{a, b, c}));
}

TEST_F(MimeUtilsTest, ProjectAndPackageDropsAreRecognisedBySettingsSuffixes)
{
    const QString project = touch(dir, QStringLiteral("Holiday.DSCPROJ"));
    const QString package = touch(dir, QStringLiteral("holiday.dscpack"));
    const QString video = touch(dir, QStringLiteral("clip.mp4"));

    QMimeData projectDrop;
    projectDrop.setUrls({QUrl::fromLocalFile(video), QUrl::fromLocalFile(project)});
    EXPECT_TRUE(MimeUtils::isMimeDataContainsProjectFiles(&projectDrop));
    EXPECT_FALSE(MimeUtils::isMimeDataContainsPackageFiles(&projectDrop));
    EXPECT_EQ(MimeUtils::extractProjectFiles(&projectDrop), QStringList{project});

    QMimeData packageDrop;
    packageDrop.setUrls({QUrl::fromLocalFile(package)});
    EXPECT_TRUE(MimeUtils::isMimeDataContainsPackageFiles(&packageDrop));
    EXPECT_FALSE(MimeUtils::isMimeDataContainsProjectFiles(&packageDrop));
    EXPECT_TRUE(MimeUtils::extractProjectFiles(&packageDrop).isEmpty());

    QMimeData folderDrop;
    folderDrop.setUrls({QUrl::fromLocalFile(dir.path())});
    EXPECT_FALSE(MimeUtils::isMimeDataContainsProjectFiles(&folderDrop)) << "directories are not projects";
    EXPECT_FALSE(MimeUtils::isMimeDataContainsPackageFiles(&folderDrop));
}
