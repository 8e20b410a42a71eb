#include <Util/Dialog/Dialog.h>

#include <Core/Application.h>
#include <DQtUtil/AlertBox.h>

#include "ModalDriver.h"
#include "TestSupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QPushButton>

#include <gtest/gtest.h>

using Dravik::Util::AlertBox;
using TestSupport::ModalDriver;

namespace {

using TestSupport::S;

// What the user saw in an alert box.
struct Seen
{
    int level = -1;
    QString title;
    QString text;
    QStringList buttons; // captions, in the box's order
    Qt::WindowFlags flags;
    Qt::TextFormat format = Qt::AutoText;
    QWidget* parent = nullptr;
    QString defaultButton;
    QString details;
};

Seen look(QMessageBox* box)
{
    Seen seen;
    auto* alert = qobject_cast<AlertBox*>(box);
    seen.level = alert ? alert->GetLevel() : -1;
    seen.title = box->windowTitle();
    seen.text = box->text();
    for (QAbstractButton* b : box->buttons())
        seen.buttons << b->text();
    seen.buttons.sort();
    seen.flags = box->windowFlags();
    seen.format = box->textFormat();
    seen.parent = box->parentWidget();
    if (box->defaultButton())
        seen.defaultButton = box->defaultButton()->text();
    seen.details = box->detailedText();
    return seen;
}

QAbstractButton* buttonCaptioned(QMessageBox* box, const QString& caption)
{
    for (QAbstractButton* b : box->buttons())
        if (b->text() == caption)
            return b;
    return nullptr;
}

// Answers the next alert box with the button of that caption, recording what it showed.
void answer(ModalDriver& driver, Seen& seen, const QString& caption)
{
    driver.then<QMessageBox>([&seen, caption](QMessageBox* box) {
        seen = look(box);
        QAbstractButton* b = buttonCaptioned(box, caption);
        ASSERT_NE(b, nullptr) << caption.toStdString();
        b->click();
    });
}

} // namespace

// The silent strategy lets unattended runs go on.
class SilentDialogs : public testing::Test
{
protected:
    void SetUp() override { Dialog::initialize(false); }
};

TEST_F(SilentDialogs, AnswerWithoutShowingAnything)
{
    ModalDriver driver;
    driver.then<QWidget>([](QWidget* w) { w->close(); }); // must never run
    bool save = true;
    EXPECT_TRUE(Dialog::alertModifiedProject(save));
    EXPECT_FALSE(save);
    EXPECT_EQ(Dialog::alertMissingFile(S("a.mp4"), S("/x")), Dialog::Skip);
    EXPECT_TRUE(Dialog::alertOverwrite(S("/x/a.mp4")));
    EXPECT_TRUE(Dialog::alertOverwriteFolder(S("/x")));
    EXPECT_FALSE(Dialog::alertRestoreSession());
    EXPECT_FALSE(Dialog::alertAction(S("T"), S("X"), S("Go"), S("Stop")));
    EXPECT_FALSE(Dialog::showHasFailedFiles(true, S("m")));
    EXPECT_EQ(Dialog::showValidationInputDialog(S("T"), S("L"), S("text"), {}), QString());
    Dialog::showWarning(S("T"), S("X"));
    Dialog::showMessageAlert(S("T"), S("X"), S("d"));
    Dialog::showCriticalError(*qApp, S("d"));
    Dialog::showFileInfo(nullptr);
    QCoreApplication::processEvents();
    EXPECT_EQ(driver.stepsDone(), 0);
    EXPECT_FALSE(Dialog::isInteractive());
}

TEST_F(SilentDialogs, ANullStrategyIsRefused)
{
    TestSupport::LogCapture log;
    Dialog::setStrategy(nullptr);
    EXPECT_TRUE(log.containsError("null strategy refused"));
    EXPECT_TRUE(Dialog::alertOverwrite(S("/x"))); // still the silent strategy
}

// A strategy of the caller's own receives the calls of the free functions.
class RecordingStrategy : public Dialog::DialogStrategyEmpty
{
public:
    QStringList calls;

private:
    bool alertOverwrite(const QString& path) override
    {
        calls << S("overwrite ") + path;
        return false;
    }
    bool showHasFailedFiles(bool allowKeep, const QString& message) override
    {
        calls << S("failed ") + (allowKeep ? S("keep ") : S("")) + message;
        return true;
    }
};

TEST(CustomDialogStrategy, ReceivesTheFreeFunctionCalls)
{
    auto strategy = std::make_shared<RecordingStrategy>();
    Dialog::setStrategy(strategy);
    EXPECT_FALSE(Dialog::alertOverwrite(S("/a")));
    EXPECT_TRUE(Dialog::showHasFailedFiles(true, S("m")));
    EXPECT_EQ(strategy->calls, (QStringList{S("overwrite /a"), S("failed keep m")}));
    EXPECT_FALSE(Dialog::isInteractive()); // it derives from the silent one
    Dialog::initialize(false);
    EXPECT_EQ(strategy.use_count(), 1); // the slot released it
}

// The interactive strategy, answered through its alert boxes.
class InteractiveDialogs : public testing::Test
{
protected:
    void SetUp() override { Dialog::initialize(true); }
    void TearDown() override { Dialog::initialize(false); }

    ModalDriver driver;
    Seen seen;
};

TEST_F(InteractiveDialogs, ModifiedProjectOffersSaveDontSaveAndCancel)
{
    EXPECT_TRUE(Dialog::isInteractive());
    bool save = false;
    answer(driver, seen, S("Save"));
    EXPECT_TRUE(Dialog::alertModifiedProject(save));
    EXPECT_TRUE(save);
    EXPECT_EQ(seen.title, S("Save project"));
    EXPECT_EQ(seen.text, S("Warning! Current project is not saved. Save project before operation?"));
    EXPECT_EQ(seen.buttons, (QStringList{S("Cancel"), S("Don't save"), S("Save")}));

    answer(driver, seen, S("Don't save"));
    EXPECT_TRUE(Dialog::alertModifiedProject(save));
    EXPECT_FALSE(save);

    save = true;
    answer(driver, seen, S("Cancel"));
    EXPECT_FALSE(Dialog::alertModifiedProject(save));
    EXPECT_FALSE(save);
    EXPECT_EQ(driver.stepsDone(), 3);
}

struct YesNoCase
{
    const char* name;
    bool (*call)();
    const char* title;
    const char* text;
};

class YesNoAlerts : public InteractiveDialogs, public testing::WithParamInterface<YesNoCase>
{
};

TEST_P(YesNoAlerts, YesIsTrueAndNoIsFalse)
{
    answer(driver, seen, S("&Yes"));
    EXPECT_TRUE(GetParam().call());
    EXPECT_EQ(seen.title, S(GetParam().title));
    EXPECT_EQ(seen.text, S(GetParam().text));
    EXPECT_EQ(seen.buttons, (QStringList{S("&No"), S("&Yes")}));
    answer(driver, seen, S("&No"));
    EXPECT_FALSE(GetParam().call());
    EXPECT_EQ(driver.stepsDone(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Alerts, YesNoAlerts,
    testing::Values(YesNoCase{"overwrite", [] { return Dialog::alertOverwrite(S("/v/a.mp4")); }, "File exists",
                              "File \"/v/a.mp4\" already exists. Overwrite it?"},
                    YesNoCase{"overwrite_folder", [] { return Dialog::alertOverwriteFolder(S("/v/out")); },
                              "Folder exist", "Folder \"/v/out\" already exists. Overwrite it?"},
                    YesNoCase{"restore_session", [] { return Dialog::alertRestoreSession(); },
                              "Recover editing session",
                              "Your last editing session ended unexpectedly. Do you want to restore it?"}),
    [](const testing::TestParamInfo<YesNoCase>& info) { return std::string(info.param.name); });

TEST_F(InteractiveDialogs, RestoreSessionProposesYes)
{
    answer(driver, seen, S("&No"));
    Dialog::alertRestoreSession();
    EXPECT_EQ(seen.defaultButton, S("&Yes"));
}

TEST_F(InteractiveDialogs, MissingFileMapsItsThreeButtons)
{
    QWidget window;
    window.show();
    QApplication::setActiveWindow(&window);
    answer(driver, seen, S("Browse"));
    EXPECT_EQ(Dialog::alertMissingFile(S("a.mp4"), S("/old")), Dialog::Browse);
    EXPECT_EQ(seen.title, S("Can't open the file"));
    EXPECT_EQ(seen.text, S("Could not find the file a.mp4 at the specified location: /old. The file may have been "
                           "moved or deleted. Click Browse to find the file at its new location."));
    EXPECT_EQ(seen.buttons, (QStringList{S("Abort"), S("Browse"), S("Skip")}));
    EXPECT_EQ(seen.level, 2);
    EXPECT_EQ(seen.parent, &window);
    EXPECT_EQ(seen.flags & Qt::WindowType_Mask, Qt::Window) << "a window without close button";
    EXPECT_TRUE(seen.flags.testFlag(Qt::WindowTitleHint));
    EXPECT_TRUE(seen.flags.testFlag(Qt::CustomizeWindowHint));
    EXPECT_FALSE(seen.flags.testFlag(Qt::WindowCloseButtonHint));

    answer(driver, seen, S("Abort"));
    EXPECT_EQ(Dialog::alertMissingFile(S("a.mp4"), S("/old")), Dialog::Abort);
    answer(driver, seen, S("Skip"));
    EXPECT_EQ(Dialog::alertMissingFile(S("a.mp4"), S("/old")), Dialog::Skip);
    driver.then<QMessageBox>([](QMessageBox* box) { box->done(0); });
    EXPECT_EQ(Dialog::alertMissingFile(S("a.mp4"), S("/old")), Dialog::Skip) << "closed otherwise";
    EXPECT_EQ(driver.stepsDone(), 4);
}

TEST_F(InteractiveDialogs, FailedFilesAsksToKeepOrRemove)
{
    answer(driver, seen, S("Remove"));
    EXPECT_TRUE(Dialog::showHasFailedFiles(true, S("beach.mp4: codec missing")));
    EXPECT_EQ(seen.title, S("Can't open files"));
    // The question stays the same whatever the caller adds; its message goes under "Show Details...".
    EXPECT_EQ(seen.text, S("Some of the files can't be opened.<br>Please choose:<br>Remove unopened files from the "
                           "project or keep them?"));
    EXPECT_EQ(seen.details, S("beach.mp4: codec missing"));
    EXPECT_EQ(seen.buttons, (QStringList{S("Keep"), S("Remove"), S("Show Details...")}));
    EXPECT_EQ(seen.format, Qt::RichText);

    answer(driver, seen, S("Keep"));
    EXPECT_FALSE(Dialog::showHasFailedFiles(true, QString()));
    EXPECT_EQ(seen.text, S("Some of the files can't be opened.<br>Please choose:<br>Remove unopened files from the "
                           "project or keep them?"));
    EXPECT_EQ(seen.details, QString());
    EXPECT_EQ(seen.buttons, (QStringList{S("Keep"), S("Remove")}));

    // Files that cannot be kept: only Remove, and closing the box removes them too.
    answer(driver, seen, S("Remove"));
    EXPECT_TRUE(Dialog::showHasFailedFiles(false, QString()));
    EXPECT_EQ(seen.buttons, QStringList{S("Remove")});
    driver.then<QMessageBox>([](QMessageBox* box) { box->done(0); });
    EXPECT_TRUE(Dialog::showHasFailedFiles(false, S("x")));
}

TEST_F(InteractiveDialogs, ActionUsesTheGivenCaptions)
{
    answer(driver, seen, S("Upload"));
    EXPECT_TRUE(Dialog::alertAction(S("Share"), S("<b>Upload</b> now?"), S("Upload"), S("Later")));
    EXPECT_EQ(seen.title, S("Share"));
    EXPECT_EQ(seen.buttons, (QStringList{S("Later"), S("Upload")}));
    EXPECT_EQ(seen.format, Qt::RichText);
    answer(driver, seen, S("Cancel"));
    EXPECT_FALSE(Dialog::alertAction(S("Share"), S("?"), QString(), QString()));
    EXPECT_EQ(seen.buttons, (QStringList{S("Cancel"), S("OK")}));
}

TEST_F(InteractiveDialogs, WarningsAndMessagesShowTheCallersTexts)
{
    answer(driver, seen, S("OK"));
    Dialog::showWarning(S("Careful"), S("Disk <i>almost</i> full"));
    EXPECT_EQ(seen.title, S("Careful"));
    EXPECT_EQ(seen.text, S("Disk <i>almost</i> full"));
    EXPECT_EQ(seen.buttons, QStringList{S("OK")});

    answer(driver, seen, S("OK"));
    Dialog::showMessageAlert(S("Done"), S("Exported"), QString());
    EXPECT_EQ(seen.title, S("Done"));
    EXPECT_EQ(driver.stepsDone(), 2);
}

TEST_F(InteractiveDialogs, CriticalErrorNamesTheSupportAddressAndHasNoParent)
{
    auto manager = std::make_shared<Dravik::App::CustomizationManager>();
    manager->SetSupportMailLink("mailto:help@video.test");
    Dravik::App::Application::SetCustomizationManager(manager);
    QWidget window;
    window.show();
    QApplication::setActiveWindow(&window);

    answer(driver, seen, S("OK"));
    Dialog::showCriticalError(*qApp, S("stack"));
    Dravik::App::Application::SetCustomizationManager(nullptr);
    EXPECT_EQ(seen.level, 1);
    EXPECT_EQ(seen.title, S("Critical error"));
    EXPECT_EQ(seen.text, S("Unknown problem has been detected.<br><br>Please contact us at "
                           "<a href=\"mailto:help@video.test\">help@video.test</a> to solve this problem."));
    EXPECT_EQ(seen.parent, nullptr);
    EXPECT_TRUE(seen.flags.testFlag(Qt::BypassWindowManagerHint));
}

// Level, window and parent of every alert box of the interactive strategy.
struct AlertCase
{
    const char* name;
    void (*call)();
    const char* answer; // caption of the button that closes it
    int level;
    bool richText;
};

class EveryAlert : public InteractiveDialogs, public testing::WithParamInterface<AlertCase>
{
};

TEST_P(EveryAlert, HasItsLevelAFixedSizeDialogWindowAndTheActiveWindowAsParent)
{
    QWidget window;
    window.show();
    QApplication::setActiveWindow(&window);
    answer(driver, seen, S(GetParam().answer));
    GetParam().call();
    ASSERT_EQ(driver.stepsDone(), 1);
    EXPECT_EQ(seen.level, GetParam().level);
    EXPECT_EQ(seen.parent, &window);
    EXPECT_EQ(seen.flags & Qt::WindowType_Mask, Qt::Dialog);
    EXPECT_TRUE(seen.flags.testFlag(Qt::MSWindowsFixedSizeDialogHint));
    if (GetParam().richText) {
        EXPECT_EQ(seen.format, Qt::RichText);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Alerts, EveryAlert,
    testing::Values(AlertCase{"action", [] { Dialog::alertAction(S("T"), S("X"), QString(), QString()); }, "OK", 2,
                              true},
                    AlertCase{"modified_project",
                              [] {
                                  bool save = false;
                                  Dialog::alertModifiedProject(save);
                              },
                              "Cancel", 2, false},
                    AlertCase{"overwrite", [] { Dialog::alertOverwrite(S("/a")); }, "&No", 2, false},
                    AlertCase{"overwrite_folder", [] { Dialog::alertOverwriteFolder(S("/a")); }, "&No", 2, false},
                    AlertCase{"restore_session", [] { Dialog::alertRestoreSession(); }, "&No", 2, false},
                    AlertCase{"failed_files", [] { Dialog::showHasFailedFiles(true, QString()); }, "Keep", 2, true},
                    AlertCase{"message", [] { Dialog::showMessageAlert(S("T"), S("X"), QString()); }, "OK", 0, true},
                    AlertCase{"warning", [] { Dialog::showWarning(S("T"), S("X")); }, "OK", 1, true}),
    [](const testing::TestParamInfo<AlertCase>& info) { return std::string(info.param.name); });

TEST_F(InteractiveDialogs, ValidationInputReturnsTheAcceptedText)
{
    driver.then<QDialog>([](QDialog* d) {
        EXPECT_EQ(d->windowTitle(), S("Rename"));
        auto* edit = d->findChild<QLineEdit*>(S("lineEdit"));
        edit->setText(S("Holiday"));
        d->accept();
    });
    EXPECT_EQ(Dialog::showValidationInputDialog(S("Rename"), S("Name:"), S("Untitled"),
                                                [](const QString& t, QString&) { return !t.isEmpty(); }),
              S("Holiday"));
    driver.then<QDialog>([](QDialog* d) { d->reject(); });
    EXPECT_EQ(Dialog::showValidationInputDialog(S("Rename"), S("Name:"), S("Untitled"), {}), QString());
    EXPECT_EQ(driver.stepsDone(), 2);
}

// The file information dialog.

#include <EditorModel/Media.h>
#include <QLabel>

TEST_F(InteractiveDialogs, FileInfoShowsTheFirstStreams)
{
    Media::Video video;
    video.width = 720;
    video.height = 576;
    video.pixelAspect = boost::rational<long long>(16, 15);
    video.frameRate = boost::rational<long long>(25, 1);
    video.duration = 95 * Types::TimeUnitsPerSecond + 500 * Types::TimeUnitsPerMillisecond;
    Media::Audio audio;
    audio.channels = 6;
    audio.duration = 90 * Types::TimeUnitsPerSecond;
    Media::File file(Types::String("/media/holiday/beach.mpg"));
    file.setStreams({&video}, {&audio});

    QMap<QString, QString> values;
    QString title;
    driver.then<QDialog>([&](QDialog* d) {
        title = d->windowTitle();
        for (QLabel* label : d->findChildren<QLabel*>())
            if (label->objectName().endsWith(S("Value")))
                values.insert(label->objectName(), label->text());
        d->accept();
    });
    Dialog::showFileInfo(&file);
    EXPECT_EQ(title, S("File information"));
    EXPECT_EQ(values, (QMap<QString, QString>{{S("fileNameValue"), S("beach.mpg")},
                                              {S("frameSizeValue"), S("768x576")},
                                              {S("frameRateValue"), S("25/1")},
                                              {S("videoDurationValue"), S("01:35.500")},
                                              {S("channelsValue"), S("6")},
                                              {S("audioDurationValue"), S("01:30")}}));

    TestSupport::LogCapture log;
    Dialog::showFileInfo(nullptr);
    EXPECT_TRUE(log.containsError("no file given"));
    EXPECT_EQ(driver.stepsDone(), 1);
}
