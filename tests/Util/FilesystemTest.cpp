#include <Util/Filesystem.h>

#include <Core/ProgressController.h>
#include <EditorSettings/Settings.h>

#include "TempSettings.h"
#include "TestFiles.h"
#include "TestSupport.h"

#include <QBuffer>
#include <QDataStream>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>
#include <QtEndian>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

using TestSupport::S;

void writeFile(const QString& path, const QByteArray& content = "x")
{
    ASSERT_TRUE(TestSupport::writeFile(path, content)) << path.toStdString();
}

using TestSupport::readFile;

// Sets or clears the immutable attribute (chattr +i), the one thing that stops root from
// deleting a file. False when the file system does not support it.
bool setImmutable(const QString& path, bool on)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK);
    if (fd < 0)
        return false;
    int flags = 0;
    bool ok = ::ioctl(fd, FS_IOC_GETFLAGS, &flags) == 0;
    if (ok) {
        flags = on ? (flags | FS_IMMUTABLE_FL) : (flags & ~FS_IMMUTABLE_FL);
        ok = ::ioctl(fd, FS_IOC_SETFLAGS, &flags) == 0;
    }
    ::close(fd);
    return ok;
}

} // namespace

// Paths.

TEST(Filesystem, CleanPathNormalisesOnceAndPathsAcceptOnlyADriveDesignatorAtTheFront)
{
    const char* const cleaning[][2] = {{" /a//b/./c/../d ", "/a/b/d"},
                                       {"/a/b/", "/a/b"},
                                       {"", ""},
                                       {"   ", ""},
                                       {"a/../../b", "../b"},
                                       {"/", "/"},
                                       {"a /", "a"},
                                       {"/x/a \t/", "/x/a"},
                                       {"a/../ ./b", "b"},
                                       {"q/.. /../ /", "q"}};
    for (const auto& row : cleaning) {
        SCOPED_TRACE(row[0]);
        const QString cleaned = Filesystem::cleanPath(S(row[0]));
        EXPECT_EQ(cleaned, S(row[1]));
        EXPECT_EQ(Filesystem::cleanPath(cleaned), cleaned);
    }
    EXPECT_EQ(Filesystem::cleanPath(QStringList{S("/x/./y"), S(" /z// ")}), (QStringList{S("/x/y"), S("/z")}));

    const struct
    {
        const char* path;
        bool valid;
    } validity[] = {{"C:/video/a.mp4", true},
                    {"C:/vi:deo/a.mp4", false},
                    {"C:/C:/a.mp4", false},
                    {"/home/u/clip.mp4", true},
                    {"/home/u/what?.mp4", false},
                    {"/home/*/a.mp4", false},
                    {"/a\"b/c", false},
                    {"/a/<b>", false},
                    {"/a|b", false},
                    {"/home/u/a:b.mp4", false},
                    {" /home/u/../my clip.final.mp4 ", true}};
    for (const auto& row : validity) {
        SCOPED_TRACE(row.path);
        QString error = S("untouched");
        EXPECT_EQ(Filesystem::isPathValid(S(row.path), &error), row.valid);
        EXPECT_EQ(error, row.valid ? S("untouched") : S("Unsupported symbols"));
        EXPECT_EQ(Filesystem::isPathValid(S(row.path)), row.valid);
    }
}

TEST(Filesystem, SupportedExtensionsJoinTheGroupsAndBecomeFilters)
{
    EXPECT_EQ(Filesystem::extensionsToFileFilters({S("mp4"), S("avi")}), (QStringList{S("*.mp4"), S("*.avi")}));
    EXPECT_TRUE(Filesystem::extensionsToFileFilters({}).isEmpty());
    const QStringList all = Filesystem::supportedClipFileExtensions();
    for (const char* e : {"mp4", "mov", "mp3", "wav", "jpg", "png"})
        EXPECT_TRUE(all.contains(S(e))) << e;
    EXPECT_FALSE(all.contains(S("ifo")));
    EXPECT_EQ(all.size(), Filesystem::videoExtensions().size() + Filesystem::musicExtensions().size()
                              + Filesystem::pictureExtensions().size());
    // The file dialogs list each group from these, so the familiar extension leads.
    EXPECT_EQ((QStringList{Filesystem::videoExtensions().first(), Filesystem::pictureExtensions().first(),
                           Filesystem::musicExtensions().first()}),
              (QStringList{S("mp4"), S("jpg"), S("mp3")}));
}

TEST(Filesystem, ExtractsProjectPackageAndOtherFilesInOrder)
{
    const QStringList dropped{S("/a/one.DSCPROJ"), S("/a/clip.mp4"), S("/b/two.dscproj"), S("/c/p.dscpack"), S(""),
                              S("/d/noext")};
    EXPECT_EQ(Filesystem::extractProjectFiles(dropped), (QStringList{S("/a/one.DSCPROJ"), S("/b/two.dscproj")}));
    EXPECT_EQ(Filesystem::extractPackageFiles(dropped), QStringList{S("/c/p.dscpack")});
    EXPECT_EQ(Filesystem::extractFiles(dropped, {S("MP4"), S("dscpack")}),
              (QStringList{S("/a/clip.mp4"), S("/c/p.dscpack")}));
}

// Folders on disk.

class FilesystemDisk : public testing::Test
{
protected:
    QString path(const char* relative) const { return QDir::cleanPath(tmp.path() + QLatin1Char('/') + S(relative)); }

    QTemporaryDir tmp;
    TestSupport::LogCapture log;
};

TEST_F(FilesystemDisk, ClosestPathClimbsToAnExistingFolder)
{
    QDir().mkpath(path("a/b"));
    EXPECT_EQ(Filesystem::closestPath(path("a/b")), path("a/b"));
    EXPECT_EQ(Filesystem::closestPath(path("a/b/c/d.mp4")), path("a/b"));
    EXPECT_EQ(Filesystem::closestPath(path("a/./x/../b/")), path("a/b"));
    EXPECT_TRUE(log.errors().empty());
    EXPECT_EQ(Filesystem::closestPath(S("relative/folder")), QString());
    EXPECT_EQ(Filesystem::closestPath(QString()), QString());
    EXPECT_TRUE(log.containsError("not an absolute path"));
}

TEST_F(FilesystemDisk, RemoveDirectoryRemovesTheWholeTreeAndNothingBeside)
{
    writeFile(path("victim/sub/deep/file.mp4"));
    writeFile(path("victim/top.txt"));
    writeFile(path("neighbour/keep.txt"));
    EXPECT_TRUE(Filesystem::removeDirectory(path("victim")));
    EXPECT_FALSE(QFileInfo::exists(path("victim")));
    EXPECT_EQ(QDir(tmp.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{S("neighbour")});
    EXPECT_TRUE(log.errors().empty());
}

TEST_F(FilesystemDisk, RemoveDirectoryNeverFollowsLinks)
{
    writeFile(path("library/shared.mp4"), "kept");
    ASSERT_TRUE(QFile::link(path("library"), path("link")));
    EXPECT_TRUE(Filesystem::removeDirectory(path("link")));
    EXPECT_FALSE(QFileInfo(path("link")).exists());
    EXPECT_EQ(readFile(path("library/shared.mp4")), QByteArray("kept"));
    writeFile(path("project/own.mp4"));
    ASSERT_TRUE(QFile::link(path("library"), path("project/media")));
    ASSERT_TRUE(QFile::link(path("library/shared.mp4"), path("project/clip.mp4")));
    EXPECT_TRUE(Filesystem::removeDirectory(path("project")));
    EXPECT_FALSE(QFileInfo::exists(path("project")));
    EXPECT_EQ(readFile(path("library/shared.mp4")), QByteArray("kept"));
}

TEST_F(FilesystemDisk, RemoveDirectoryRefusesPathsThatCouldHitTheWrongFolder)
{
    EXPECT_TRUE(Filesystem::removeDirectory(path("never-was")));
    EXPECT_TRUE(log.containsError("Specified directory doesn't exist"));
    const QString current = QDir::currentPath();
    EXPECT_FALSE(Filesystem::removeDirectory(QString()));
    EXPECT_FALSE(Filesystem::removeDirectory(S("relative")));
    EXPECT_FALSE(Filesystem::removeDirectory(S("/")));
    EXPECT_TRUE(QFileInfo(current).isDir());
    EXPECT_TRUE(log.containsError("refused to remove"));
}

TEST_F(FilesystemDisk, FailedRemovalLeavesTheTreeUnderItsOldName)
{
    writeFile(path("project/media/locked.mp4"), "precious");
    writeFile(path("project/media/other.mp4"), "other");
    const QString locked = path("project/media/locked.mp4");
    bool immutable = false;
    if (::geteuid() == 0) {
        // Root ignores permissions; the immutable attribute still stops the deletion.
        immutable = setImmutable(locked, true);
        if (!immutable)
            GTEST_SKIP() << "running as root on a file system without the immutable attribute";
    } else {
        QFile::setPermissions(path("project/media"), QFile::ReadOwner | QFile::ExeOwner);
    }

    EXPECT_FALSE(Filesystem::removeDirectory(path("project")));

    if (immutable)
        setImmutable(locked, false);
    else
        QFile::setPermissions(path("project/media"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_TRUE(QFileInfo(path("project")).isDir());
    EXPECT_EQ(readFile(locked), QByteArray("precious"));
    EXPECT_EQ(QDir(tmp.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList{S("project")});
    EXPECT_TRUE(log.containsError("cannot remove"));
}

TEST_F(FilesystemDisk, ReadableAndWritable)
{
    writeFile(path("a.mp4"));
    EXPECT_TRUE(Filesystem::isPathReadable(path("a.mp4")));
    EXPECT_TRUE(Filesystem::isPathWritable(path("a.mp4")));
    EXPECT_TRUE(Filesystem::isPathWritable(tmp.path()));
    EXPECT_FALSE(Filesystem::isPathReadable(path("missing.mp4")));
    EXPECT_FALSE(Filesystem::isPathWritable(path("missing/")));
    if (::geteuid() == 0)
        GTEST_SKIP() << "root reads and writes files whatever their permissions";
    QFile::setPermissions(path("a.mp4"), QFileDevice::Permissions());
    EXPECT_FALSE(Filesystem::isPathReadable(path("a.mp4")));
    EXPECT_FALSE(Filesystem::isPathWritable(path("a.mp4")));
}

TEST_F(FilesystemDisk, ShowFileOpensItsFolder)
{
    writeFile(path("shown/clip.mp4"));
    TestSupport::UrlCatcher catcher;
    QDesktopServices::setUrlHandler(S("file"), &catcher, "open");
    Filesystem::showFile(S(" ") + path("shown/./clip.mp4"));
    Filesystem::showFile(path("shown/gone.mp4"));
    QDesktopServices::unsetUrlHandler(S("file"));
    ASSERT_EQ(catcher.urls.size(), 1);
    EXPECT_EQ(QDir::cleanPath(catcher.urls.first().toLocalFile()), path("shown"));
}

// Copies.

TEST_F(FilesystemDisk, CopyFilesReportsBytesAndCreatesTargetFolders)
{
    writeFile(path("src/a.mp4"), QByteArray(3000, 'a'));
    writeFile(path("src/b.wav"), QByteArray(500, 'b'));
    std::vector<std::int64_t> steps;
    boost::intrusive_ptr<Dravik::Core::ProgressController> progress(
        new Dravik::Core::ProgressController([&](std::int64_t done, std::int64_t) { steps.push_back(done); }));

    const QMap<QString, QString> plan{{path("src/a.mp4"), path("out/x/a.mp4")}, {path("src/b.wav"), path("out/b.wav")}};
    EXPECT_TRUE(Filesystem::copyFiles(plan, progress));
    EXPECT_EQ(readFile(path("out/x/a.mp4")), QByteArray(3000, 'a'));
    EXPECT_EQ(readFile(path("out/b.wav")), QByteArray(500, 'b'));
    EXPECT_EQ(progress->GetRange(), 3500);
    ASSERT_FALSE(steps.empty());
    EXPECT_EQ(steps.front(), 0);
    EXPECT_EQ(steps.back(), 3500);
    EXPECT_TRUE(std::is_sorted(steps.begin(), steps.end()));
    EXPECT_TRUE(log.errors().empty());
    EXPECT_TRUE(Filesystem::copyFiles({}, nullptr));
}

TEST_F(FilesystemDisk, CopyFilesStopsAtAnUnreadableSourceAndKeepsEverySource)
{
    writeFile(path("src/1.mp4"), "one");
    QDir().mkpath(path("src/2.mp4")); // a folder: reading it fails, for root as well
    writeFile(path("src/3.mp4"), "three");
    const QMap<QString, QString> plan{{path("src/1.mp4"), path("out/1.mp4")},
                                      {path("src/2.mp4"), path("out/2.mp4")},
                                      {path("src/3.mp4"), path("out/3.mp4")}};
    EXPECT_FALSE(Filesystem::copyFiles(plan, nullptr));
    EXPECT_EQ(readFile(path("out/1.mp4")), QByteArray("one"));
    EXPECT_FALSE(QFileInfo::exists(path("out/2.mp4")));
    EXPECT_FALSE(QFileInfo::exists(path("out/3.mp4")));
    EXPECT_EQ(readFile(path("src/1.mp4")), QByteArray("one"));
    EXPECT_EQ(readFile(path("src/3.mp4")), QByteArray("three"));
    EXPECT_TRUE(
        log.containsError(("The file " + path("src/2.mp4") + " was not copied to " + path("out/2.mp4")).toStdString()));
}

TEST_F(FilesystemDisk, CopyFilesNeverOverwritesAnExistingTargetNorAFileInThePath)
{
    writeFile(path("src/a.mp4"), "new");
    writeFile(path("out/a.mp4"), "old");
    EXPECT_FALSE(Filesystem::copyFiles({{path("src/a.mp4"), path("out/a.mp4")}}, nullptr));
    EXPECT_EQ(readFile(path("out/a.mp4")), QByteArray("old"));
    EXPECT_TRUE(log.containsError("the target exists"));
    EXPECT_FALSE(Filesystem::copyFiles({{path("src/a.mp4"), path("out/a.mp4/sub/a.mp4")}}, nullptr));
    EXPECT_EQ(readFile(path("out/a.mp4")), QByteArray("old"));
    EXPECT_TRUE(log.containsError("cannot create the target folder"));
}

TEST_F(FilesystemDisk, CancelledCopyLeavesNoHalfWrittenTarget)
{
    const QByteArray big(3 * 1024 * 1024 + 17, 'z');
    writeFile(path("src/big.mp4"), big);
    boost::intrusive_ptr<Dravik::Core::ProgressController> progress;
    progress.reset(new Dravik::Core::ProgressController([&](std::int64_t done, std::int64_t) {
        if (done > 0)
            progress->Cancel();
    }));
    EXPECT_FALSE(Filesystem::copyFiles({{path("src/big.mp4"), path("out/big.mp4")}}, progress));
    EXPECT_GT(progress->GetProgress(), 0);
    EXPECT_LT(progress->GetProgress(), big.size());
    EXPECT_FALSE(QFileInfo::exists(path("out/big.mp4")));
    EXPECT_EQ(QDir(path("out")).entryList(QDir::Files | QDir::Hidden), QStringList());
    EXPECT_EQ(readFile(path("src/big.mp4")).size(), big.size());
    progress.reset(); // the observer holds no count: break nothing on the way out
}

TEST_F(FilesystemDisk, CopyRecursivelySkipsExcludedNamesAndOverwritesOnlyWhenAsked)
{
    writeFile(path("from/a.mp4"), "a");
    writeFile(path("from/sub/b.wav"), "b");
    writeFile(path("from/sub/cache.tmp"), "t");
    writeFile(path("from/.thumbs/t.png"), "p");
    EXPECT_TRUE(Filesystem::copyRecursively(path("from"), path("to"), {S("*.tmp"), S(".thumbs")}, false));
    EXPECT_EQ(readFile(path("to/a.mp4")), QByteArray("a"));
    EXPECT_EQ(readFile(path("to/sub/b.wav")), QByteArray("b"));
    EXPECT_FALSE(QFileInfo::exists(path("to/sub/cache.tmp")));
    EXPECT_FALSE(QFileInfo::exists(path("to/.thumbs")));

    // A file already at the target is overwritten only when asked.
    writeFile(path("from/a.mp4"), "new");
    EXPECT_FALSE(Filesystem::copyRecursively(path("from"), path("to"), {}, false));
    EXPECT_EQ(readFile(path("to/a.mp4")), QByteArray("a"));
    EXPECT_TRUE(Filesystem::copyRecursively(path("from"), path("to"), {}, true));
    EXPECT_EQ(readFile(path("to/a.mp4")), QByteArray("new"));
}

TEST_F(FilesystemDisk, CopyRecursivelyKeepsLinksToFoldersAsLinks)
{
    writeFile(path("library/shared.mp4"), "shared");
    writeFile(path("from/own.mp4"), "own");
    ASSERT_TRUE(QFile::link(path("library"), path("from/media")));
    EXPECT_TRUE(Filesystem::copyRecursively(path("from"), path("to"), {}, false));
    EXPECT_EQ(readFile(path("to/own.mp4")), QByteArray("own"));
    EXPECT_EQ(QFileInfo(path("to/media")).symLinkTarget(), path("library"));
    EXPECT_EQ(readFile(path("to/media/shared.mp4")), QByteArray("shared"));
    EXPECT_TRUE(log.errors().empty());

    // Copying again replaces the link only when asked to, and never what it points to.
    EXPECT_FALSE(Filesystem::copyRecursively(path("from"), path("to"), {}, false));
    EXPECT_TRUE(Filesystem::copyRecursively(path("from"), path("to"), {}, true));
    EXPECT_EQ(QFileInfo(path("to/media")).symLinkTarget(), path("library"));
    EXPECT_EQ(readFile(path("library/shared.mp4")), QByteArray("shared"));
}

TEST_F(FilesystemDisk, CopyRecursivelyRefusesMissingSourcesAndCopiesIntoItself)
{
    writeFile(path("from/a.mp4"));
    EXPECT_FALSE(Filesystem::copyRecursively(path("from"), path("from/inner"), {}, false));
    EXPECT_FALSE(QFileInfo::exists(path("from/inner")));
    EXPECT_FALSE(Filesystem::copyRecursively(path("nothing"), path("to"), {}, false));
    EXPECT_FALSE(QFileInfo::exists(path("to")));
    EXPECT_TRUE(log.containsError("into itself"));
    EXPECT_TRUE(log.containsError("no folder to copy"));
}

// Walking folders.

TEST_F(FilesystemDisk, ParseDirectoryFindsMediaFilesOnly)
{
    writeFile(path("m/a.mp4"));
    writeFile(path("m/B.JPG"));
    writeFile(path("m/notes.txt"));
    writeFile(path("m/sub/c.wav"));
    writeFile(path("m/sub/deeper/d.mkv"));
    writeFile(path("m/sub/menu.ifo"));

    QStringList all = Filesystem::parseDirectory(path("m"), true);
    all.sort();
    EXPECT_EQ(all, (QStringList{path("m/B.JPG"), path("m/a.mp4"), path("m/sub/c.wav"), path("m/sub/deeper/d.mkv")}));
    QStringList top = Filesystem::parseDirectory(path("m"), false);
    top.sort();
    EXPECT_EQ(top, (QStringList{path("m/B.JPG"), path("m/a.mp4")}));
    EXPECT_TRUE(log.errors().empty());
}

TEST_F(FilesystemDisk, ParseDirectoryWithNameFilters)
{
    writeFile(path("m/clip_1.txt"));
    writeFile(path("m/clip_22.txt"));
    writeFile(path("m/sub/A.MP4"));
    writeFile(path("m/sub/a.mp3"));
    QStringList found = Filesystem::parseDirectory(path("m"), {S("*.mp4"), S("clip_?.txt")}, true);
    found.sort();
    EXPECT_EQ(found, (QStringList{path("m/clip_1.txt"), path("m/sub/A.MP4")}));
    EXPECT_EQ(Filesystem::parseDirectory(path("m"), {S("*")}, true).size(), 4);
    EXPECT_TRUE(Filesystem::parseDirectory(path("gone"), true).isEmpty());
    EXPECT_TRUE(Filesystem::parseDirectory(QString(), {S("*")}, true).isEmpty());
    EXPECT_TRUE(log.containsError("Specified directory doesn't exist"));
}

// Recent lists.

class RecentLists : public testing::Test
{
protected:
    TestSupport::TempSettings settings;
    TestSupport::LogCapture log;
};

TEST_F(RecentLists, ProjectsAreStoredCleanedInOrder)
{
    Filesystem::saveRecentProjects({S(" /p/b.dscproj "), S("/p//a.dscproj"), S("/p/./c.dscproj")});
    EXPECT_EQ(Filesystem::recentProjects(), (QStringList{S("/p/b.dscproj"), S("/p/a.dscproj"), S("/p/c.dscproj")}));
    EXPECT_EQ(Settings::recentProjects(),
              "DPROP 1\nA 6:recent 3\nS 0: 12:/p/b.dscproj\nS 0: 12:/p/a.dscproj\nS 0: 12:/p/c.dscproj\n");
    Filesystem::saveRecentProjects({});
    EXPECT_TRUE(Filesystem::recentProjects().isEmpty());
}

TEST_F(RecentLists, OutputFoldersAreCleanedOnTheWayInAndOut)
{
    Filesystem::saveLastUsedOutputDirectories({S("/out//one/"), S("/out/two")});
    EXPECT_EQ(Filesystem::lastUsedOutputDirectories(), (QStringList{S("/out/one"), S("/out/two")}));
    // A list written by someone else, with untidy paths, still reads cleaned.
    Settings::setTargetHistory("DPROP 1\nA 7:targets 1\nS 0: 12:/x/../y/./z/\n");
    EXPECT_EQ(Filesystem::lastUsedOutputDirectories(), QStringList{S("/y/z")});
    EXPECT_TRUE(log.errors().empty());
}

TEST_F(RecentLists, ACorruptedStoreReadsAsAnEmptyList)
{
    Settings::setRecentProjects("recent=/a;/b");
    EXPECT_TRUE(Filesystem::recentProjects().isEmpty());
    EXPECT_TRUE(log.containsError("corrupted property data"));
    Settings::setTargetHistory("DPROP 1\nA 7:targets 2\nS 0: 2:/a\n");
    EXPECT_TRUE(Filesystem::lastUsedOutputDirectories().isEmpty());
}

TEST_F(RecentLists, PreviewsRoundTripAndSurviveGarbage)
{
    QPixmap red(16, 9);
    red.fill(Qt::red);
    Filesystem::saveRecentProjectPreviews({{S("/p//a.dscproj"), red}});
    const QMap<QString, QPixmap> back = Filesystem::recentProjectPreviews();
    ASSERT_EQ(back.keys(), QStringList{S("/p/a.dscproj")});
    EXPECT_EQ(back.first().size(), QSize(16, 9));
    EXPECT_EQ(back.first().toImage().pixelColor(3, 3), QColor(Qt::red));

    Settings::setRecentProjectPreviews(QByteArray("not previews"));
    EXPECT_TRUE(Filesystem::recentProjectPreviews().isEmpty());
    EXPECT_TRUE(log.containsError("unreadable"));
}

namespace {

QByteArray png(const QImage& image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return bytes;
}

// A small PNG whose header announces `width` x `height` (the header's checksum redone).
QByteArray pngAnnouncing(quint32 width, quint32 height)
{
    QByteArray bytes = png(QImage(1, 1, QImage::Format_RGB32));
    qToBigEndian(width, bytes.data() + 16);
    qToBigEndian(height, bytes.data() + 20);
    quint32 crc = 0xffffffffu;
    for (int i = 12; i < 29; ++i) {
        crc ^= quint8(bytes[i]);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? (crc >> 1) ^ 0xedb88320u : crc >> 1;
    }
    qToBigEndian(~crc, bytes.data() + 29);
    return bytes;
}

// Previews as the store keeps them, the pictures given as PNG bytes (empty for no picture).
QByteArray storedPreviews(const QList<QPair<QString, QByteArray>>& entries)
{
    QByteArray data;
    QDataStream out(&data, QIODevice::WriteOnly);
    out << quint32(0x45555250) << quint32(1) << quint32(entries.size());
    for (const auto& entry : entries) {
        out << entry.first << qint32(entry.second.isEmpty() ? 0 : 1);
        out.writeRawData(entry.second.constData(), entry.second.size());
    }
    return data;
}

} // namespace

TEST_F(RecentLists, PreviewsAreReadNoLargerThanAPreview)
{
    QImage wide(1000, 600, QImage::Format_RGB32);
    wide.fill(Qt::blue);
    Settings::setRecentProjectPreviews(storedPreviews({{S("/p/huge"), pngAnnouncing(100000, 100000)},
                                                       {S("/p/tall"), pngAnnouncing(1, 20000)},
                                                       {S("/p/wide"), png(wide)},
                                                       {S("/p/none"), QByteArray()}}));
    const QMap<QString, QPixmap> back = Filesystem::recentProjectPreviews();
    ASSERT_EQ(back.keys(), (QStringList{S("/p/none"), S("/p/wide")}));
    EXPECT_TRUE(back[S("/p/none")].isNull());
    EXPECT_EQ(back[S("/p/wide")].size(), QSize(512, 307));
    EXPECT_EQ(back[S("/p/wide")].toImage().pixelColor(100, 100), QColor(Qt::blue));
    EXPECT_EQ(log.errors().size(), 2u);
    EXPECT_TRUE(log.containsError("the preview of /p/huge is not a PNG of at most 4096 pixels a side"));

    // A picture cut short leaves the rest unreadable.
    QByteArray cut = png(wide);
    cut.chop(20);
    Settings::setRecentProjectPreviews(storedPreviews({{S("/p/cut"), cut}}));
    EXPECT_TRUE(Filesystem::recentProjectPreviews().isEmpty());
    EXPECT_TRUE(log.containsError("unreadable"));
}
