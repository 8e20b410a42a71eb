#include <Util/Import/MimeUtils.h>

#include "TestFiles.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QMimeData>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QString touch(const QTemporaryDir& dir, const QString& name, const QByteArray& content = QByteArray("x"))
{
    const QString path = dir.filePath(name);
    return TestSupport::writeFile(path, content) ? path : QString();
}

class MimeUtilsTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(dir.isValid()); }
    QTemporaryDir dir;
};

} // namespace

TEST_F(MimeUtilsTest, DragOriginRoundTripsAsUtf8)
{
    QMimeData data;
    EXPECT_TRUE(MimeUtils::mimeDragAsrc(&data).isEmpty());

    const QString origin = QStringLiteral("media-library/Clips \u00e9\u00e8 \u65e5\u672c");
    MimeUtils::setMimeDragAsrc(&data, origin);
    EXPECT_EQ(MimeUtils::dragAsrcFormat(), QStringLiteral("application/x-dragAndDropAsrc"));
    EXPECT_EQ(MimeUtils::filesUrlsFormat(), QStringLiteral("application/x-filesUrls"));
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

TEST_F(MimeUtilsTest, FileMatchesOnlyItsLowerCasedLastSuffix)
{
    const struct
    {
        const char* fileName;
        const char* suffix;
        bool matches;
    } cases[] = {{"clip.mp4", "mp4", true},  {"CLIP.MP4", "mp4", true},        {"UPPER.MP4", "MP4", false},
                 {"dot.mp4", ".mp4", false}, {"archive.mp4.gz", "mp4", false}, {"README", "mp4", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.fileName) + " / " + c.suffix);
        const QString path = touch(dir, QString::fromUtf8(c.fileName));
        EXPECT_EQ(MimeUtils::isUrlListContainsSupportedFile({QUrl::fromLocalFile(path)}, {QString::fromUtf8(c.suffix)},
                                                            false),
                  c.matches);
    }
}

TEST_F(MimeUtilsTest, NullDataRemoteUrlsAndUnwantedDirectoriesMatchNothing)
{
    const QSet<QString> set{QStringLiteral("mp4")};
    EXPECT_FALSE(MimeUtils::hasUrls(nullptr));
    EXPECT_TRUE(MimeUtils::mimeDragAsrc(nullptr).isEmpty());
    EXPECT_TRUE(MimeUtils::extractFiles(nullptr, set).isEmpty());
    EXPECT_FALSE(MimeUtils::isMimeDataContainsSupportedFile(nullptr, set, true));

    QMimeData remote;
    remote.setUrls({QUrl(QStringLiteral("https://example.org/clip.mp4"))});
    EXPECT_FALSE(MimeUtils::isMimeDataContainsSupportedFile(&remote, set, true));
    EXPECT_TRUE(MimeUtils::extractFiles(&remote, set).isEmpty());

    QMimeData folder;
    folder.setUrls({QUrl::fromLocalFile(dir.path())});
    EXPECT_FALSE(MimeUtils::isMimeDataContainsSupportedFile(&folder, set, false));
    EXPECT_TRUE(MimeUtils::isMimeDataContainsSupportedFile(&folder, set, true)) << "directories count when accepted";
}

TEST_F(MimeUtilsTest, ExtractFilesKeepsUrlOrderAndAbsolutePaths)
{
    const QString a = touch(dir, QStringLiteral("z.dscproj"));
    const QString b = touch(dir, QStringLiteral("clip.mp4"));
    const QString c = touch(dir, QStringLiteral("A.DSCPROJ"));
    QMimeData data;
    data.setUrls(
        {QUrl::fromLocalFile(a), QUrl::fromLocalFile(b), QUrl::fromLocalFile(dir.path()), QUrl::fromLocalFile(c)});
    EXPECT_EQ(MimeUtils::extractFiles(&data, {QStringLiteral("dscproj")}), (QStringList{a, c}));
    EXPECT_EQ(MimeUtils::extractFiles(&data, {QStringLiteral("mp4"), QStringLiteral("dscproj")}),
              (QStringList{a, b, c}));
}

TEST_F(MimeUtilsTest, UrlsWhosePathHoldsANulAreRefused)
{
    TestSupport::LogCapture log;
    const QString clip = touch(dir, QStringLiteral("clip.mp4"));
    const QUrl cut(QStringLiteral("file://") + clip + QStringLiteral("%00.mp4"));
    const QSet<QString> set{QStringLiteral("mp4")};
    QMimeData data;
    data.setUrls({QUrl(QStringLiteral("file:///tmp/a%00b.mp4")), QUrl::fromLocalFile(clip), cut});
    EXPECT_EQ(MimeUtils::extractFiles(&data, set), QStringList{clip});

    QMimeData only;
    only.setUrls({cut});
    EXPECT_FALSE(MimeUtils::isMimeDataContainsSupportedFile(&only, set, true));
    EXPECT_TRUE(log.containsError("holds a NUL"));
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

TEST_F(MimeUtilsTest, DroppedSvgBecomesOneTaggedPresetHoldingTheFile)
{
    const QByteArray svg("<svg xmlns=\"http://www.w3.org/2000/svg\"><circle r=\"4\"/></svg>\n");
    const QString star = touch(dir, QStringLiteral("Star.SVG"), svg);
    const QString photo = touch(dir, QStringLiteral("photo.png"));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(photo), QUrl::fromLocalFile(star)});
    EXPECT_FALSE(MimeUtils::isOverlayPresetCompatible(&data));

    const auto presets = MimeUtils::makeOverlayPresetList(&data);
    ASSERT_EQ(presets.size(), 1u);
    EXPECT_EQ(presets[0]->tag(), "DroppedSVG");
    ASSERT_EQ(presets[0]->items().size(), 1u);
    EXPECT_EQ(presets[0]->items()[0].text(), svg.toStdString());
}

TEST_F(MimeUtilsTest, UnreadableOrHugeSvgIsSkippedWithALogLine)
{
    const QString huge = dir.filePath(QStringLiteral("huge.svg"));
    {
        QFile file(huge);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_TRUE(file.resize(MimeUtils::maxDroppedSvgBytes + 1)); // sparse: nothing is written
    }
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("folder.svg")));
    const QString fine = touch(dir, QStringLiteral("fine.svg"), QByteArray("<svg/>"));

    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(huge), QUrl::fromLocalFile(dir.filePath(QStringLiteral("folder.svg"))),
                  QUrl::fromLocalFile(dir.filePath(QStringLiteral("gone.svg"))), QUrl::fromLocalFile(fine)});
    TestSupport::LogCapture log;
    const auto presets = MimeUtils::makeOverlayPresetList(&data);
    ASSERT_EQ(presets.size(), 1u);
    EXPECT_EQ(presets[0]->items()[0].text(), "<svg/>");
    EXPECT_EQ(log.errors().size(), 3u);
    EXPECT_TRUE(log.containsError("more than the"));
    EXPECT_TRUE(log.containsError("cannot read dropped file"));
}

TEST_F(MimeUtilsTest, SerializedPresetsRoundTripAndComeBeforeFiles)
{
    Overlay::Preset title;
    title.name = "Lower third";
    title.setTag("Titles");
    title.appendItem(Overlay::Item().setText("Name"));
    title.appendItem(Overlay::Item().setText("Role"));
    Overlay::Preset callout;
    callout.setTag("Callouts");

    QMimeData data;
    MimeUtils::packOverlayPresets(&data, {&title, &callout});
    data.setUrls({QUrl::fromLocalFile(touch(dir, QStringLiteral("ignored.svg")))});
    ASSERT_TRUE(MimeUtils::isOverlayPresetCompatible(&data));

    const auto presets = MimeUtils::makeOverlayPresetList(&data);
    ASSERT_EQ(presets.size(), 2u);
    EXPECT_EQ(presets[0]->name, title.name);
    EXPECT_EQ(presets[0]->tag(), "Titles");
    ASSERT_EQ(presets[0]->items().size(), 2u);
    EXPECT_EQ(presets[0]->items()[1].text(), "Role");
    EXPECT_EQ(presets[1]->tag(), "Callouts");
    EXPECT_TRUE(presets[1]->items().empty());
}

TEST_F(MimeUtilsTest, MalformedSerializedPresetsGiveNothing)
{
    QMimeData data;
    data.setData(Overlay::Preset::mimeType->toQString(), QByteArray("{\"format\":\"overlay-presets\",\"version\":1,"));
    data.setUrls({QUrl::fromLocalFile(touch(dir, QStringLiteral("fallback.svg")))});
    TestSupport::LogCapture log;
    EXPECT_TRUE(MimeUtils::makeOverlayPresetList(&data).empty()) << "malformed data is not replaced by the files";
    EXPECT_TRUE(log.containsError("readOverlayPresets"));
}
