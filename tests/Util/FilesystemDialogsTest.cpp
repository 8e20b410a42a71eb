#include <Util/Dialog/Dialog.h>
#include <Util/Filesystem.h>

#include <EditorSettings/Settings.h>

#include "FileDialogs.h"
#include "ModalDriver.h"
#include "TempSettings.h"
#include "TestFiles.h"
#include "TestSupport.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using TestSupport::ModalDriver;

namespace {

using TestSupport::S;

void touch(const QString& path) { ASSERT_TRUE(TestSupport::writeFile(path)) << path.toStdString(); }

} // namespace

// The file dialogs of Filesystem, answered on the offscreen platform.
class FilesystemDialogs : public testing::Test
{
protected:
    void SetUp() override { Dialog::initialize(true); }
    void TearDown() override { Dialog::initialize(false); }

    QString path(const char* relative) const { return QDir::cleanPath(tmp.path() + QLatin1Char('/') + S(relative)); }

    TestSupport::TempSettings settings;
    QTemporaryDir tmp;
    ModalDriver driver;
};

TEST_F(FilesystemDialogs, OpenMediaFilesUnpacksProjectPackagesAndRefusesDvdFiles)
{
    touch(path("in/a.mp4"));
    touch(path("in/VIDEO_TS.IFO"));
    touch(path("in/rec.dscproj/one.drec"));
    touch(path("in/rec.dscproj/two.drec"));
    touch(path("in/rec.dscproj/project.xml"));
    touch(path("in/b.png"));
    Settings::setLastAddMediaPath(path("in"));

    TestSupport::FileDialogSeen seen;
    QString warningTitle, warningText;
    driver
        .then<QFileDialog>([&](QFileDialog* d) {
            seen = TestSupport::lookAt(d);
            TestSupport::chooseEntries(d, path("in"), {S("rec.dscproj"), S("a.mp4"), S("VIDEO_TS.IFO"), S("b.png")});
        })
        .then<QMessageBox>([&](QMessageBox* box) {
            warningTitle = box->windowTitle();
            warningText = box->text();
            box->button(QMessageBox::Ok)->click();
        });

    const QStringList files =
        Filesystem::openFiles(Filesystem::Video | Filesystem::Audio | Filesystem::Image | Filesystem::AllFilesFilter);

    ASSERT_EQ(driver.stepsDone(), 2) << files.join(S(",")).toStdString();
    EXPECT_EQ(seen.title, S("Open Media Files"));
    EXPECT_EQ(seen.directory, path("in"));
    EXPECT_TRUE(seen.options.testFlag(QFileDialog::HideNameFilterDetails));
    EXPECT_EQ(warningTitle, S("Failed to open files"));
    EXPECT_EQ(warningText, S("Cannot open files: VIDEO_TS.IFO"));
    EXPECT_EQ(files, (QStringList{path("in/a.mp4"), path("in/b.png"), path("in/rec.dscproj/one.drec"),
                                  path("in/rec.dscproj/two.drec")}));
    EXPECT_EQ(Settings::lastAddMediaPath(), path("in"));
}

TEST_F(FilesystemDialogs, OpenFilesByKindStartsInTheStandardFolderAndRemembersTheChoice)
{
    const struct
    {
        int kinds;
        const char* title;
        QString (*standardFolder)();
        QString (*stored)();
    } rows[] = {
        {Filesystem::Video, "Open Video Files", &Filesystem::moviesLocation, &Settings::lastAddVideoPath},
        {Filesystem::Audio | Filesystem::AllFilesFilter, "Open Audio Files", &Filesystem::musicLocation,
         &Settings::lastAddAudioPath},
        {Filesystem::Image, "Open Image Files", &Filesystem::picturesLocation, &Settings::lastAddImagePath},
        {Filesystem::Video | Filesystem::Audio, "Open Media Files", &Filesystem::moviesLocation,
         &Settings::lastAddMediaPath},
    };
    touch(path("pick/clip.mp4"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.title);
        QString title, directory;
        driver.then<QFileDialog>([&](QFileDialog* d) {
            title = d->windowTitle();
            directory = QDir::cleanPath(d->directory().absolutePath());
            TestSupport::chooseFiles(d, path("pick"), {S("clip.mp4")});
        });
        EXPECT_EQ(Filesystem::openFiles(row.kinds), QStringList{path("pick/clip.mp4")});
        EXPECT_EQ(title, S(row.title));
        EXPECT_EQ(directory, QDir::cleanPath(row.standardFolder()));
        EXPECT_EQ(row.stored(), path("pick"));
    }
}

TEST_F(FilesystemDialogs, OpenFilesIgnoresRememberedFoldersWhenTheApplicationSaysSo)
{
    Settings::setLastAddAudioPath(path("old"));
    Settings::setRememberLastFolders(false);
    QString directory;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        directory = QDir::cleanPath(d->directory().absolutePath());
        d->reject();
    });
    EXPECT_TRUE(Filesystem::openFiles(Filesystem::Audio).isEmpty());
    EXPECT_EQ(directory, QDir::cleanPath(Filesystem::musicLocation()));
    EXPECT_EQ(Settings::lastAddAudioPath(), path("old")); // cancelling stores nothing
}

TEST_F(FilesystemDialogs, ARememberedFolderThatWasDeletedIsNotMadeAgain)
{
    QDir().mkpath(path("shoot"));
    Settings::setLastAddVideoPath(path("shoot/deleted/day1"));
    Settings::setLastAddDirectoryPath(path("shoot/gone"));
    QStringList directories;
    for (int i = 0; i < 2; ++i)
        driver.then<QFileDialog>([&](QFileDialog* d) {
            directories << QDir::cleanPath(d->directory().absolutePath());
            d->reject();
        });
    EXPECT_TRUE(Filesystem::openFiles(Filesystem::Video).isEmpty());
    EXPECT_TRUE(Filesystem::openDirectory().isEmpty());
    // Both open where the remembered folder used to be, and the user's deletion stands.
    EXPECT_EQ(directories, (QStringList{path("shoot"), path("shoot")}));
    EXPECT_FALSE(QFileInfo::exists(path("shoot/deleted")));
    EXPECT_FALSE(QFileInfo::exists(path("shoot/gone")));
}

// The filter lines of the media dialog by kind: the visible example, then the patterns of the
// kind's groups (video, images, audio), then one line per group.
TEST_F(FilesystemDialogs, OpenFilesFiltersShowTheExampleAndThePatternsOfTheKind)
{
    const struct
    {
        int kinds;
        const char* firstLines; // before the patterns; "|" separates dialog lines
        const char* groups;     // V, I, A: the groups whose patterns follow, in order
        const char* after;      // what follows the patterns on the "Media Files" line
    } rows[] = {
        {1, "Media Files(", "V", ")"},
        {2, "Media Files(", "A", ")"},
        {4, "Media Files(", "I", ")"},
        {3, "Media Files (*.mp4;*.avi;*.mp3;...)(", "VA", ")"},
        {5, "Media Files (*.mp4;*.avi;*.jpeg;...)(", "VI", ")"},
        {6, "Media Files (*.jpeg;*.png;*.mp3;...)(", "IA", ")"},
        {7, "Media Files (*.mp4;*.jpeg;*.mp3;...)(", "VIA", " *.dscproj)"},
        // The project patterns are kept apart by a space, so that project files match the first line.
        {15,
         "All Supported Files ( *. dscproj;*.jpeg;*.png;*.mp3;...)(<patterns> *.dscproj *.dscproj)|Media Files "
         "(*.mp4;*.jpeg;*.mp3;...)(",
         "VIA", ")"},
    };
    auto patternsOf = [](QChar group) {
        const QStringList extensions = group == QLatin1Char('V')   ? Filesystem::videoExtensions()
                                       : group == QLatin1Char('I') ? Filesystem::pictureExtensions()
                                                                   : Filesystem::musicExtensions();
        return Filesystem::extensionsToFileFilters(extensions).join(QLatin1Char(' '));
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.kinds);
        QStringList patterns;
        QStringList groupLines;
        for (QChar g : S(row.groups)) {
            patterns << patternsOf(g);
            groupLines << (g == QLatin1Char('V')   ? S("Video Files (")
                           : g == QLatin1Char('I') ? S("Image Files (")
                                                   : S("Audio Files ("))
                              + patternsOf(g) + S(")");
        }
        const QString joined = patterns.join(QLatin1Char(' '));
        QStringList expected;
        for (const QString& line : S(row.firstLines).split(QLatin1Char('|')))
            expected << QString(line).replace(S("<patterns>"), joined);
        expected.last() += joined + S(row.after);
        expected += groupLines;
        expected << S("All Files (*)");

        QStringList filters;
        driver.then<QFileDialog>([&](QFileDialog* d) {
            filters = d->nameFilters();
            d->reject();
        });
        Filesystem::openFiles(row.kinds | Filesystem::AllFilesFilter);
        EXPECT_EQ(filters, expected) << filters.join(S("\n")).toStdString();
    }
}

TEST_F(FilesystemDialogs, OpenProjectCreatesTheProjectFolder)
{
    Settings::setProjectPath(path("projects/new"));
    touch(path("elsewhere/film.dscproj"));
    TestSupport::FileDialogSeen seen;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        TestSupport::chooseFiles(d, path("elsewhere"), {S("film.dscproj")});
    });
    EXPECT_EQ(Filesystem::openProject(QString()), path("elsewhere/film.dscproj"));
    EXPECT_TRUE(QFileInfo(path("projects/new")).isDir());
    EXPECT_EQ(seen.title, S("Open Project"));
    EXPECT_EQ(seen.directory, path("projects/new"));
    EXPECT_EQ(seen.filters, QStringList{S("Project files (*.dscproj)")});
}

TEST_F(FilesystemDialogs, OpenDirectoryRemembersTheFolderAboveTheChoice)
{
    touch(path("shoot/day1/a.mp4"));
    touch(path("shoot/day1/raw/b.wav"));
    touch(path("shoot/day1/readme.txt"));
    QString title;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        title = d->windowTitle();
        EXPECT_TRUE(d->testOption(QFileDialog::ShowDirsOnly));
        TestSupport::chooseFolder(d, path("shoot/day1"));
    });
    QStringList files = Filesystem::openDirectory();
    files.sort();
    EXPECT_EQ(title, S("Open Folder"));
    EXPECT_EQ(files, (QStringList{path("shoot/day1/a.mp4"), path("shoot/day1/raw/b.wav")}));
    EXPECT_EQ(Settings::lastAddDirectoryPath(), path("shoot"));
}

TEST_F(FilesystemDialogs, OpenDirectoryAllImagesReturnsThePicturesOfTheFolder)
{
    touch(path("album/a.jpg"));
    touch(path("album/b.PNG"));
    touch(path("album/clip.mp4"));
    touch(path("album/old/c.png"));
    TestSupport::FileDialogSeen seen;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        TestSupport::chooseFolder(d, path("album"));
    });
    QStringList files = Filesystem::openDirectoryAllImages();
    files.sort();
    EXPECT_EQ(files, (QStringList{path("album/a.jpg"), path("album/b.PNG")}));
    EXPECT_EQ(seen.title, S("Open Folder"));
    EXPECT_EQ(seen.directory, QDir::cleanPath(Filesystem::picturesLocation()));
    EXPECT_TRUE(seen.options.testFlag(QFileDialog::ShowDirsOnly));
}

TEST_F(FilesystemDialogs, OpenStockedAudioFilesOffersAudioAndAllFiles)
{
    touch(path("stock/rain.wav"));
    touch(path("stock/wind.mp3"));
    TestSupport::FileDialogSeen seen;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        TestSupport::chooseFiles(d, path("stock"), {S("rain.wav"), S("wind.mp3")});
    });
    QStringList files = Filesystem::openStockedAudioFiles(path("stock"));
    files.sort();
    EXPECT_EQ(files, (QStringList{path("stock/rain.wav"), path("stock/wind.mp3")}));
    EXPECT_EQ(seen.title, S("Open Audio Files"));
    EXPECT_EQ(seen.directory, path("stock"));
    ASSERT_EQ(seen.filters.size(), 2);
    EXPECT_EQ(seen.filters[0],
              S("Audio Files (")
                  + Filesystem::extensionsToFileFilters(Filesystem::musicExtensions()).join(QLatin1Char(' ')) + S(")"));
    EXPECT_EQ(seen.filters[1], S("All Files (*)"));
}

TEST_F(FilesystemDialogs, BrowseDirectoryReturnsTheChosenFolderOrNothing)
{
    QDir().mkpath(path("start"));
    QDir().mkpath(path("target/inner"));
    TestSupport::FileDialogSeen seen;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        TestSupport::chooseFolder(d, path("target/inner"));
    });
    EXPECT_EQ(Filesystem::browseDirectory(path("start")), path("target/inner"));
    EXPECT_EQ(seen.title, S("Select Folder"));
    EXPECT_EQ(seen.directory, path("start"));
    EXPECT_TRUE(seen.options.testFlag(QFileDialog::ShowDirsOnly));

    driver.then<QFileDialog>([](QFileDialog* d) { d->reject(); });
    EXPECT_EQ(Filesystem::browseDirectory(path("start")), QString());
    EXPECT_EQ(driver.stepsDone(), 2);
}

TEST_F(FilesystemDialogs, SavingProjectProposesTheDefaultNameOrTheSuggestedPath)
{
    Settings::setProjectPath(path("projects"));
    TestSupport::FileDialogSeen seen;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        static_cast<QDialog*>(d)->accept();
    });
    EXPECT_EQ(Filesystem::savingProjectPath(QString()), path("projects/New Project.dscproj"));
    EXPECT_EQ(seen.title, S("Save Project"));
    EXPECT_EQ(seen.typed, S("New Project.dscproj"));
    EXPECT_EQ(seen.directory, path("projects"));

    QDir(path("projects")).removeRecursively();
    QDir().mkpath(path("work"));
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        d->reject();
    });
    EXPECT_EQ(Filesystem::savingProjectPath(path("work") + S("/./trip.dscproj ")), QString());
    EXPECT_EQ(seen.filters, QStringList{S("Project files (*.dscproj)")});
    EXPECT_EQ(seen.directory, path("work"));
    EXPECT_EQ(seen.typed, S("trip.dscproj"));
    EXPECT_TRUE(seen.options.testFlag(QFileDialog::HideNameFilterDetails));
    EXPECT_TRUE(QFileInfo(path("projects")).isDir()); // the project folder is made all the same
}

TEST_F(FilesystemDialogs, SavingSnapshotRemembersANewFolder)
{
    Settings::setSnapshotPath(path("shots"));
    QDir().mkpath(path("other"));
    TestSupport::FileDialogSeen seen;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        TestSupport::chooseFiles(d, path("other"), {S("frame.png")});
    });
    EXPECT_EQ(Filesystem::savingSnapshotPath(), path("other/frame.png"));
    EXPECT_EQ(seen.title, S("Save Snapshot"));
    EXPECT_EQ(seen.directory, path("shots"));
    EXPECT_EQ(seen.filters, QStringList{S("Snapshot files (*.png)")});
    EXPECT_EQ(seen.typed, S("snapshot.png"));
    EXPECT_TRUE(QFileInfo(path("shots")).isDir());
    EXPECT_EQ(Settings::snapshotPath(), path("other"));
}

TEST_F(FilesystemDialogs, PortablePackageOnAnUnusablePathIsRefused)
{
    Settings::setProjectPath(path("projects"));
    QString warning;
    driver
        .then<QFileDialog>([&](QFileDialog* d) {
            d->findChild<QLineEdit*>(S("fileNameEdit"))->setText(S("bad|name"));
            static_cast<QDialog*>(d)->done(QDialog::Accepted);
        })
        .then<QMessageBox>([&](QMessageBox* box) {
            warning = box->windowTitle() + S(": ") + box->text();
            box->button(QMessageBox::Ok)->click();
        });
    EXPECT_EQ(Filesystem::savingProjectPortablePath(), QString());
    EXPECT_EQ(warning, S("Save Project: Can not save project file"));

    driver.then<QFileDialog>([&](QFileDialog* d) { TestSupport::chooseFiles(d, path("projects"), {S("trip")}); });
    EXPECT_EQ(Filesystem::savingProjectPortablePath(), path("projects/trip.dscpack"));
}

TEST_F(FilesystemDialogs, FindMissingFileAsksWithTheFileNameAndMediaFilters)
{
    touch(path("found/holiday.mp4"));
    TestSupport::FileDialogSeen seen;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        TestSupport::chooseFiles(d, path("found"), {S("holiday.mp4")});
    });
    EXPECT_EQ(Filesystem::findMissingFile(path("vanished/folder/holiday.mp4")), path("found/holiday.mp4"));
    EXPECT_EQ(seen.title, S("Find missing file: holiday.mp4"));
    EXPECT_EQ(seen.directory, QDir::cleanPath(Filesystem::moviesLocation()));
    ASSERT_EQ(seen.filters.size(), 2);
    EXPECT_TRUE(seen.filters[0].startsWith(S("Video Files")));
    EXPECT_EQ(seen.filters[1], S("All Files (*)"));

    // An old folder that still exists is where the search starts; DVD and unknown files are not asked for.
    QDir().mkpath(path("still"));
    driver.then<QFileDialog>([&](QFileDialog* d) {
        seen = TestSupport::lookAt(d);
        d->reject();
    });
    EXPECT_EQ(Filesystem::findMissingFile(path("still/song.mp3")), QString());
    EXPECT_EQ(seen.directory, path("still"));
    driver.then<QFileDialog>([](QFileDialog* d) { d->reject(); });
    EXPECT_EQ(Filesystem::findMissingFile(path("dvd/VTS_01_0.IFO")), QString());
    EXPECT_EQ(Filesystem::findMissingFile(path("docs/readme.txt")), QString());
    EXPECT_EQ(driver.stepsDone(), 2);
}

TEST_F(FilesystemDialogs, FindMissingFilesWithoutAnInterfaceKeepsEveryPath)
{
    Dialog::initialize(false);
    QMap<QString, QString> found{{S("/stale"), S("/other")}};
    EXPECT_TRUE(Filesystem::findMissingFiles({S("/a/b.mp4"), S("/c.wav")}, found));
    EXPECT_EQ(found.value(S("/a/b.mp4")), S("/a/b.mp4"));
    EXPECT_EQ(found.value(S("/c.wav")), S("/c.wav"));
    EXPECT_EQ(found.value(S("/stale")), S("/other"));
}
