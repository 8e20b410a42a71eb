#include <EditorSettings/Settings.h>

#include "TempSettings.h"

#include <QCoreApplication>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>

#include <gtest/gtest.h>

class SettingsTest : public testing::Test
{
protected:
    TestSupport::TempSettings store;
};

TEST_F(SettingsTest, ValuesPersistInTheRedirectedFile)
{
    Settings::setLastAddVideoPath(QStringLiteral("/media/video"));
    Settings::setSnapshotPath(QStringLiteral("/shots"));
    Settings::setRecentProjects("DPROP 1\nA 6:recent 0\n");
    Settings::setRememberLastFolders(false);
    Settings::sync();

    QSettings file(store.storeFile(), QSettings::IniFormat);
    EXPECT_EQ(file.value(QStringLiteral("Paths/lastAddVideo")).toString(), QStringLiteral("/media/video"));
    EXPECT_EQ(file.value(QStringLiteral("recent")).toString(), QStringLiteral("DPROP 1\nA 6:recent 0\n"));

    // Reading back through a fresh store sees the same values.
    Settings::useStoreFile(store.storeFile());
    EXPECT_EQ(Settings::lastAddVideoPath(), QStringLiteral("/media/video"));
    EXPECT_EQ(Settings::snapshotPath(), QStringLiteral("/shots"));
    EXPECT_EQ(Settings::recentProjects(), "DPROP 1\nA 6:recent 0\n");
    EXPECT_FALSE(Settings::rememberLastFolders());
    EXPECT_EQ(Settings::lastAddAudioPath(), QString());
}

TEST_F(SettingsTest, DefaultsAreUsableBeforeAnythingIsStored)
{
    EXPECT_TRUE(Settings::rememberLastFolders());
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    EXPECT_TRUE(Settings::projectPath().startsWith(QDir::cleanPath(documents)))
        << Settings::projectPath().toStdString();
    EXPECT_TRUE(Settings::projectPath().endsWith(QStringLiteral("/Projects")));
    EXPECT_TRUE(Settings::snapshotPath().endsWith(QStringLiteral("/Snapshots")));
    EXPECT_EQ(Settings::projectFileExtension(), QStringLiteral("dscproj"));
    EXPECT_EQ(Settings::projectFileOpenFilter(), QStringLiteral("*.dscproj"));
    EXPECT_EQ(Settings::supportedProjectFileExtensions(), QStringList{QStringLiteral("dscproj")});
    EXPECT_FALSE(Settings::packageExtenstion().isEmpty());
    EXPECT_NE(Settings::packageExtenstion(), Settings::projectFileExtension());
    EXPECT_TRUE(Settings::recentProjects().empty());
}

TEST_F(SettingsTest, PreviewPicturesFollowTheConfiguredFolder)
{
    Settings::setPreviewImageFolder(QStringLiteral("/opt/stock"));
    EXPECT_EQ(Settings::effectPreviewImagePath(), QStringLiteral("/opt/stock/effect.png"));
    EXPECT_EQ(Settings::transitionPreviewImageAPath(), QStringLiteral("/opt/stock/transitionA.png"));
    EXPECT_EQ(Settings::transitionPreviewImageBPath(), QStringLiteral("/opt/stock/transitionB.png"));
    EXPECT_EQ(Settings::titlePreviewImagePath(), QStringLiteral("/opt/stock/title.png"));
    EXPECT_EQ(Settings::calloutPreviewImagePath(), QStringLiteral("/opt/stock/callout.png"));
    EXPECT_EQ(Settings::quizPreviewImagePath(), QStringLiteral("/opt/stock/quiz.png"));
    EXPECT_EQ(Settings::panZoomPreviewImagePath(), QStringLiteral("/opt/stock/panzoom.png"));
    EXPECT_EQ(Settings::animationBackgroundPreviewImagePath(), QStringLiteral("/opt/stock/animationBackground.png"));
    EXPECT_EQ(Settings::animationIconPreviewImagePath(), QStringLiteral("/opt/stock/animationIcon.png"));

    Settings::setPreviewImageFolder(QString());
    qputenv("EDITORUTIL_PREVIEW_DIR", "/srv/preview/");
    EXPECT_EQ(Settings::quizPreviewImagePath(), QStringLiteral("/srv/preview/quiz.png"));
    qunsetenv("EDITORUTIL_PREVIEW_DIR");
    EXPECT_EQ(Settings::previewImageFolder(),
              QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share/EditorUtil/preview")));
}
