#include <Util/Dialog/Dialog.h>
#include <Util/Dialog/MissingFilesDialog/MissingFilesDialog.h>
#include <Util/Filesystem.h>

#include "FileDialogs.h"
#include "ModalDriver.h"
#include "TestFiles.h"
#include "TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFrame>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTreeWidget>

#include <gtest/gtest.h>

using State = MissingFilesDialog::State;
using TestSupport::ModalDriver;

namespace {

using TestSupport::S;

void touch(const QString& path) { ASSERT_TRUE(TestSupport::writeFile(path)) << path.toStdString(); }

QStringList rowsOf(const QTreeWidget* view)
{
    QStringList rows;
    for (int i = 0; i < view->topLevelItemCount(); ++i)
        rows << view->topLevelItem(i)->text(0) + S(" | ") + view->topLevelItem(i)->text(1);
    return rows;
}

} // namespace

// Lost files of a project whose media folder was moved to another disk.
class MissingFiles : public testing::Test
{
protected:
    void SetUp() override
    {
        // The new location: the same names in several places, one of them in folders that
        // match the old path best.
        touch(path("new/holiday/day1/beach.mp4"));
        touch(path("new/backup/beach.mp4"));
        touch(path("new/holiday/music/song.mp3"));
        touch(path("new/holiday/day2/sunset.png"));
        touch(path("new/unrelated.mp4"));
        lost = QStringList{S("/old/disk/holiday/day1/beach.mp4"), S("/old/disk/holiday/music/song.mp3"),
                           S("/old/disk/holiday/day2/sunset.png"), S("/old/disk/holiday/never.mov")};
    }

    QString path(const char* relative) const { return QDir::cleanPath(tmp.path() + QLatin1Char('/') + S(relative)); }

    QTemporaryDir tmp;
    QStringList lost;
};

TEST_F(MissingFiles, SearchMatchesNamesPrefersTheClosestFoldersAndStopsWhenCancelled)
{
    const QMap<QString, QString> found = MissingFilesDialog::searchFolderTree(path("new"), lost);
    EXPECT_EQ(found.size(), 3);
    EXPECT_EQ(found.value(S("/old/disk/holiday/day1/beach.mp4")), path("new/holiday/day1/beach.mp4"));
    EXPECT_EQ(found.value(S("/old/disk/holiday/music/song.mp3")), path("new/holiday/music/song.mp3"));
    EXPECT_EQ(found.value(S("/old/disk/holiday/day2/sunset.png")), path("new/holiday/day2/sunset.png"));
    EXPECT_FALSE(found.contains(S("/old/disk/holiday/never.mov")));
    // A missing folder, nothing to look for, or a cancelled search: nothing found.
    EXPECT_TRUE(MissingFilesDialog::searchFolderTree(path("nowhere"), lost).isEmpty());
    EXPECT_TRUE(MissingFilesDialog::searchFolderTree(path("new"), {}).isEmpty());
    const std::atomic<bool> cancelled{true};
    EXPECT_TRUE(MissingFilesDialog::searchFolderTree(path("new"), lost, &cancelled).isEmpty());
}

TEST_F(MissingFiles, ShowsTheLostFilesWithTheNamedWidgets)
{
    MissingFilesDialog dialog(lost + QStringList{S(" /old/disk//holiday/never.mov ")});
    EXPECT_EQ(dialog.objectName(), S("MissingFilesDialog"));
    for (const char* name : {"contentFrame", "pathFrame", "progressFrame", "buttonsFrame"})
        EXPECT_NE(dialog.findChild<QFrame*>(S(name)), nullptr) << name;
    EXPECT_EQ(dialog.findChild<QLabel*>(S("headerLabel"))->text(), S("Please, specify the folder with lost files"));
    EXPECT_EQ(dialog.findChild<QLabel*>(S("descriptionLabel"))->text(),
              S("Your files were moved or deleted, please specify its new location to restore your project."));
    EXPECT_EQ(dialog.findChild<QLabel*>(S("progressLabel"))->text(), S("File search in progress..."));
    EXPECT_NE(dialog.findChild<QWidget*>(S("progressGif")), nullptr);
    EXPECT_NE(dialog.findChild<QLabel*>(S("pathLabel")), nullptr);
    EXPECT_NE(dialog.findChild<QLabel*>(S("nameLabel")), nullptr);
    EXPECT_NE(dialog.findChild<QPushButton*>(S("searchButton")), nullptr);
    EXPECT_EQ(dialog.findChild<QPushButton*>(S("specifyFolderButton"))->text(), S("Specify folder"));
    EXPECT_EQ(dialog.findChild<QPushButton*>(S("skipButton"))->text(), S("Skip"));
    EXPECT_EQ(dialog.findChild<QPushButton*>(S("cancelButton"))->text(), S("Cancel Search"));

    auto* view = dialog.findChild<QTreeWidget*>(S("filesView"));
    ASSERT_NE(view, nullptr);
    EXPECT_EQ(view->headerItem()->text(0), S("Name"));
    EXPECT_EQ(view->headerItem()->text(1), S("Old path"));
    // The duplicate (an untidy spelling of the same path) is shown once.
    EXPECT_EQ(rowsOf(view),
              (QStringList{S("beach.mp4 | /old/disk/holiday/day1"), S("song.mp3 | /old/disk/holiday/music"),
                           S("sunset.png | /old/disk/holiday/day2"), S("never.mov | /old/disk/holiday")}));
    EXPECT_EQ(dialog.state(), State::WaitingForFolder);
    EXPECT_TRUE(dialog.findChild<QPushButton*>(S("specifyFolderButton"))->property("activeButton").toBool());
}

TEST_F(MissingFiles, SearchRunsAsideAndReturnsToWaitingWhileFilesAreLeft)
{
    MissingFilesDialog dialog(lost);
    dialog.show();
    QSignalSpy states(&dialog, &MissingFilesDialog::stateChanged);
    QSignalSpy finished(&dialog, &MissingFilesDialog::searchFinished);
    auto* progress = dialog.findChild<QFrame*>(S("progressFrame"));
    auto* cancel = dialog.findChild<QPushButton*>(S("cancelButton"));

    dialog.searchFolder(path("new/holiday/../holiday"));
    EXPECT_EQ(dialog.state(), State::Searching);
    EXPECT_TRUE(progress->isVisible());
    EXPECT_TRUE(cancel->isVisible());
    EXPECT_TRUE(cancel->property("activeButton").toBool());
    EXPECT_FALSE(dialog.findChild<QPushButton*>(S("specifyFolderButton"))->property("activeButton").toBool());
    EXPECT_EQ(dialog.findChild<QLabel*>(S("pathLabel"))->text(), path("new/holiday"));

    ASSERT_TRUE(finished.wait(5000));
    EXPECT_EQ(finished.takeFirst().at(0).toInt(), 3);
    ASSERT_EQ(states.size(), 2);
    EXPECT_EQ(states.at(0).at(0).value<State>(), State::Searching);
    EXPECT_EQ(states.at(1).at(0).value<State>(), State::WaitingForFolder);
    EXPECT_FALSE(progress->isVisible());
    EXPECT_FALSE(cancel->isVisible());
    EXPECT_EQ(dialog.remainingFiles(), QStringList{S("/old/disk/holiday/never.mov")});
    EXPECT_EQ(rowsOf(dialog.findChild<QTreeWidget*>(S("filesView"))), QStringList{S("never.mov | /old/disk/holiday")});
    EXPECT_EQ(dialog.foundFiles().value(S("/old/disk/holiday/music/song.mp3")), path("new/holiday/music/song.mp3"));
    EXPECT_TRUE(dialog.isVisible());
}

TEST_F(MissingFiles, FindingEveryFileFinishesTheDialog)
{
    MissingFilesDialog dialog(lost.mid(0, 3));
    dialog.show();
    QSignalSpy states(&dialog, &MissingFilesDialog::stateChanged);
    QSignalSpy finished(&dialog, &QDialog::finished);
    dialog.searchFolder(path("new"));
    ASSERT_TRUE(finished.wait(5000));
    EXPECT_EQ(finished.first().at(0).toInt(), int(QDialog::Accepted));
    EXPECT_EQ(dialog.state(), State::Finished);
    EXPECT_EQ(states.last().at(0).value<State>(), State::Finished);
    EXPECT_EQ(dialog.foundFiles().size(), 3);

    // Destroying a dialog during its search waits for the worker, which stops at once.
    auto* searching = new MissingFilesDialog(lost);
    searching->searchFolder(path("new"));
    delete searching;
}

TEST_F(MissingFiles, CancellingDropsTheRunningSearchAndSkipKeepsWhatWasFound)
{
    MissingFilesDialog dialog(lost);
    dialog.show();
    QSignalSpy finished(&dialog, &MissingFilesDialog::searchFinished);
    dialog.searchFolder(path("new"));
    dialog.findChild<QPushButton*>(S("cancelButton"))->click();
    EXPECT_EQ(dialog.state(), State::WaitingForFolder);
    EXPECT_FALSE(finished.wait(300));
    EXPECT_TRUE(dialog.foundFiles().isEmpty());
    EXPECT_EQ(dialog.remainingFiles().size(), 4);
    EXPECT_TRUE(dialog.findChild<QPushButton*>(S("specifyFolderButton"))->property("activeButton").toBool());

    // A new search after the cancelled one works normally, and Skip keeps what it found.
    dialog.searchFolder(path("new/holiday/music"));
    ASSERT_TRUE(finished.wait(5000));
    dialog.findChild<QPushButton*>(S("skipButton"))->click();
    EXPECT_EQ(dialog.result(), int(QDialog::Accepted));
    EXPECT_EQ(dialog.foundFiles().keys(), QStringList{S("/old/disk/holiday/music/song.mp3")});
}

TEST_F(MissingFiles, ARowCanBeLocatedByHand)
{
    Dialog::initialize(true);
    touch(path("manual/never.mov"));
    MissingFilesDialog dialog(lost);
    dialog.show();
    ModalDriver driver;
    QString title;
    driver.then<QFileDialog>([&](QFileDialog* d) {
        title = d->windowTitle();
        TestSupport::chooseFiles(d, path("manual"), {S("never.mov")});
    });
    auto* view = dialog.findChild<QTreeWidget*>(S("filesView"));
    Q_EMIT view->itemDoubleClicked(view->topLevelItem(3), 0);
    EXPECT_EQ(title, S("Find missing file: never.mov"));
    EXPECT_EQ(dialog.foundFiles().value(S("/old/disk/holiday/never.mov")), path("manual/never.mov"));
    EXPECT_EQ(view->topLevelItemCount(), 3);
    Dialog::initialize(false);
}

TEST_F(MissingFiles, FilesystemRunsTheDialogThroughSpecifyFolder)
{
    Dialog::initialize(true);
    ModalDriver driver;
    QString folderTitle;
    driver
        .then<MissingFilesDialog>([](MissingFilesDialog* d) {
            // Clicked from the event loop, so that the folder dialog is not nested in this step.
            QMetaObject::invokeMethod(d->findChild<QPushButton*>(S("specifyFolderButton")), "click",
                                      Qt::QueuedConnection);
        })
        .then<QFileDialog>([&](QFileDialog* d) {
            folderTitle = d->windowTitle();
            TestSupport::chooseFolder(d, path("new"));
        })
        .then<MissingFilesDialog>([](MissingFilesDialog*) {}) // back to it, searching
        ;
    QMap<QString, QString> found;
    // The search leaves never.mov behind; Skip is pressed when the dialog waits again.
    QObject context;
    QTimer skipper;
    skipper.setInterval(10);
    QObject::connect(&skipper, &QTimer::timeout, &context, [&] {
        auto* d = qobject_cast<MissingFilesDialog*>(QApplication::activeModalWidget());
        if (d && d->state() == State::WaitingForFolder && !d->foundFiles().isEmpty())
            d->findChild<QPushButton*>(S("skipButton"))->click();
    });
    skipper.start();
    EXPECT_TRUE(Filesystem::findMissingFiles(lost, found));
    EXPECT_EQ(folderTitle, S("Open Directory"));
    EXPECT_EQ(found.size(), 4);
    EXPECT_EQ(found.value(S("/old/disk/holiday/day1/beach.mp4")), path("new/holiday/day1/beach.mp4"));
    EXPECT_EQ(found.value(S("/old/disk/holiday/never.mov")), S("/old/disk/holiday/never.mov"));
    Dialog::initialize(false);
}
