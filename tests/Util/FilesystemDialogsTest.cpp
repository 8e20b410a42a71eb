#include <Util/Dialog/Dialog.h>
#include <Util/Filesystem.h>

#include <EditorSettings/Settings.h>

#include "FileDialogs.h"
#include "ModalDriver.h"
#include "TestFiles.h"
#include "TempSettings.h"

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QMessageBox>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using TestSupport::ModalDriver;

namespace {

QString S(const char* text) { return QString::fromUtf8(text); }

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

    const QStringList files = Filesystem::openFiles(Filesystem::Video | Filesystem::Audio | Filesystem::Image
                                                    | Filesystem::AllFilesFilter);

    ASSERT_EQ(driver.stepsDone(), 2) << files.join(S(",")).toStdString();
    const QStringList& filters = seen.filters;
    EXPECT_EQ(seen.title, S("Open Media Files"));
    EXPECT_EQ(seen.directory, path("in"));
    EXPECT_TRUE(seen.options.testFlag(QFileDialog::HideNameFilterDetails));
    ASSERT_EQ(filters.size(), 5);
    EXPECT_TRUE(filters[0].startsWith(S("Media Files (*.mp4;*.jpeg;*.mp3;...)(*.mp4 "))) << filters[0].toStdString();
    EXPECT_TRUE(filters[0].endsWith(S(" *.dscproj)")));
    EXPECT_TRUE(filters[1].startsWith(S("Video Files (*.mp4")));
    EXPECT_TRUE(filters[2].startsWith(S("Image Files (*.jpg")));
    EXPECT_TRUE(filters[3].startsWith(S("Audio Files (*.mp3")));
    EXPECT_EQ(filters[4], S("All Files (*)"));
    EXPECT_EQ(warningTitle, S("Failed to open files"));
    EXPECT_EQ(warningText, S("Cannot open files: VIDEO_TS.IFO"));
    EXPECT_EQ(files, (QStringList{path("in/a.mp4"), path("in/b.png"), path("in/rec.dscproj/one.drec"),
                                  path("in/rec.dscproj/two.drec")}));
    EXPECT_EQ(Settings::lastAddMediaPath(), path("in"));
}

struct KindCase
{
    int kinds;
    const char* title;
    QString (*standardFolder)();
    QString (*stored)();
};

class OpenFilesByKind : public FilesystemDialogs, public testing::WithParamInterface<KindCase>
{
};

TEST_P(OpenFilesByKind, StartsInTheStandardFolderAndRemembersTheChoice)
{
    const KindCase& c = GetParam();
    touch(path("pick/clip.mp4"));
    QString title, directory;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        title = d->windowTitle();
        directory = QDir::cleanPath(d->directory().absolutePath());
        TestSupport::chooseFiles(d, path("pick"), {S("clip.mp4")});
    });
    EXPECT_EQ(Filesystem::openFiles(c.kinds), QStringList{path("pick/clip.mp4")});
    EXPECT_EQ(title, S(c.title));
    EXPECT_EQ(directory, QDir::cleanPath(c.standardFolder()));
    EXPECT_EQ(c.stored(), path("pick"));
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, OpenFilesByKind,
    testing::Values(KindCase{Filesystem::Video, "Open Video Files", &Filesystem::moviesLocation, &Settings::lastAddVideoPath},
                    KindCase{Filesystem::Audio | Filesystem::AllFilesFilter, "Open Audio Files",
                             &Filesystem::musicLocation, &Settings::lastAddAudioPath},
                    KindCase{Filesystem::Image, "Open Image Files", &Filesystem::picturesLocation,
                             &Settings::lastAddImagePath},
                    KindCase{Filesystem::Video | Filesystem::Audio, "Open Media Files", &Filesystem::moviesLocation,
                             &Settings::lastAddMediaPath}));

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

TEST_F(FilesystemDialogs, AllMediaAndProjectsFilterComesFirstAndAllFilesLast)
{
    QStringList filters;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        filters = d->nameFilters();
        d->reject();
    });
    Filesystem::openFiles(15 | Filesystem::AllFilesFilter);
    ASSERT_EQ(filters.size(), 6);
    EXPECT_TRUE(filters[0].startsWith(S("All Supported Files ( *. dscproj;*.jpeg;*.png;*.mp3;...)(*.mp4 ")))
        << filters[0].toStdString();
    EXPECT_TRUE(filters[0].contains(S(" *.dscproj")));
    EXPECT_TRUE(filters[1].startsWith(S("Media Files (*.mp4;*.jpeg;*.mp3;...)(")));
    EXPECT_EQ(filters[5], S("All Files (*)"));
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

TEST_F(FilesystemDialogs, SavingProjectProposesTheDefaultName)
{
    Settings::setProjectPath(path("projects"));
    QString title, proposed, directory;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        title = d->windowTitle();
        proposed = d->findChild<QLineEdit*>(S("fileNameEdit"))->text();
        directory = QDir::cleanPath(d->directory().absolutePath());
        static_cast<QDialog*>(d)->accept();
    });
    EXPECT_EQ(Filesystem::savingProjectPath(QString()), path("projects/New Project.dscproj"));
    EXPECT_EQ(title, S("Save Project"));
    EXPECT_EQ(proposed, S("New Project.dscproj"));
    EXPECT_EQ(directory, path("projects"));
}

TEST_F(FilesystemDialogs, SavingSnapshotRemembersANewFolder)
{
    Settings::setSnapshotPath(path("shots"));
    QDir().mkpath(path("other"));
    QStringList filters;
    QString proposed;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        filters = d->nameFilters();
        proposed = d->findChild<QLineEdit*>(S("fileNameEdit"))->text();
        TestSupport::chooseFiles(d, path("other"), {S("frame.png")});
    });
    EXPECT_EQ(Filesystem::savingSnapshotPath(), path("other/frame.png"));
    EXPECT_EQ(filters, QStringList{S("Snapshot files (*.png)")});
    EXPECT_EQ(proposed, S("snapshot.png"));
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
}

TEST_F(FilesystemDialogs, FindMissingFileStartsInTheOldFolderWhenItExists)
{
    QDir().mkpath(path("still"));
    QString directory;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        directory = QDir::cleanPath(d->directory().absolutePath());
        d->reject();
    });
    EXPECT_EQ(Filesystem::findMissingFile(path("still/song.mp3")), QString());
    EXPECT_EQ(directory, path("still"));
}

TEST_F(FilesystemDialogs, FindMissingFileDoesNotAskForDvdOrUnknownFiles)
{
    driver.then<QFileDialog>([](QFileDialog* d) { d->reject(); });
    EXPECT_EQ(Filesystem::findMissingFile(path("dvd/VTS_01_0.IFO")), QString());
    EXPECT_EQ(Filesystem::findMissingFile(path("docs/readme.txt")), QString());
    EXPECT_EQ(driver.stepsDone(), 0);
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
