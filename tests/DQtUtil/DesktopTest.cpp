#include <DQtUtil/Desktop.h>

#include "TestSupport.h"

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include <gtest/gtest.h>

TEST(Desktop, StandardPathsAreCleanAndNeverEmpty)
{
    const QString movies = Dravik::Util::GetStandardPath(QStandardPaths::MoviesLocation);
    EXPECT_FALSE(movies.isEmpty());
    EXPECT_EQ(movies, QDir::cleanPath(movies));
    EXPECT_EQ(movies, QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)));
}

TEST(Desktop, ExploreSingleFileOpensTheFolderOfTheFile)
{
    QTemporaryDir dir;
    QFile file(dir.filePath(QStringLiteral("clip.mp4")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();

    TestSupport::UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("file"), &catcher, "open");
    EXPECT_TRUE(Dravik::Util::ExploreSingleFile(file.fileName()));
    ASSERT_EQ(catcher.urls.size(), 1);
    EXPECT_EQ(QDir::cleanPath(catcher.urls.first().toLocalFile()), QDir::cleanPath(dir.path()));

    TestSupport::LogCapture log;
    EXPECT_FALSE(Dravik::Util::ExploreSingleFile(dir.filePath(QStringLiteral("gone.mp4"))));
    EXPECT_FALSE(Dravik::Util::ExploreSingleFile(QString()));
    EXPECT_EQ(catcher.urls.size(), 1);
    EXPECT_TRUE(log.containsError("no such file"));
    QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}
