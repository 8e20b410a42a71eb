#include <DQtUtil/Desktop.h>

#include <QDir>

#include <gtest/gtest.h>

TEST(Desktop, StandardPathsAreCleanAndNeverEmpty)
{
    const QString movies = Dravik::Util::GetStandardPath(QStandardPaths::MoviesLocation);
    EXPECT_FALSE(movies.isEmpty());
    EXPECT_EQ(movies, QDir::cleanPath(movies));
    EXPECT_EQ(movies, QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::MoviesLocation)));
}

// Opening a file's folder: the library's file-system tests (showFile).
