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

// Every alert box: its level, a fixed-size dialog window over the active window, the answer of
// the button that closes it, and where given its texts, sorted captions and proposed button.
TEST_F(InteractiveDialogs, EveryAlertHasItsLevelWindowParentTextsAndAnswer)
{
    const struct
    {
        const char* name;
        int (*call)();
        const char* answer; // caption of the button that closes it
        int result;
        int level;
        bool richText;
        const char* title = nullptr;
        const char* text = nullptr;
        const char* buttons = nullptr; // "|" between captions
        const char* proposed = nullptr;
    } rows[] = {
        {"action",
         [] { return int(Dialog::alertAction(S("Share"), S("<b>Upload</b> now?"), S("Upload"), S("Later"))); },
         "Upload", 1, 2, true, "Share", "<b>Upload</b> now?", "Later|Upload"},
        {"action_default_captions", [] { return int(Dialog::alertAction(S("Share"), S("?"), QString(), QString())); },
         "Cancel", 0, 2, true, nullptr, nullptr, "Cancel|OK"},
        {"modified_project",
         [] {
             bool save = false;
             return int(Dialog::alertModifiedProject(save));
         },
         "Cancel", 0, 2, false},
        {"overwrite_yes", [] { return int(Dialog::alertOverwrite(S("/v/a.mp4"))); }, "&Yes", 1, 2, false, "File exists",
         "File \"/v/a.mp4\" already exists. Overwrite it?", "&No|&Yes", ""},
        {"overwrite_no", [] { return int(Dialog::alertOverwrite(S("/a"))); }, "&No", 0, 2, false},
        {"overwrite_folder_yes", [] { return int(Dialog::alertOverwriteFolder(S("/v/out"))); }, "&Yes", 1, 2, false,
         "Folder exist", "Folder \"/v/out\" already exists. Overwrite it?", "&No|&Yes", ""},
        {"overwrite_folder_no", [] { return int(Dialog::alertOverwriteFolder(S("/a"))); }, "&No", 0, 2, false},
        {"restore_session_yes", [] { return int(Dialog::alertRestoreSession()); }, "&Yes", 1, 2, false,
         "Recover editing session", "Your last editing session ended unexpectedly. Do you want to restore it?",
         "&No|&Yes", "&Yes"},
        {"restore_session_no", [] { return int(Dialog::alertRestoreSession()); }, "&No", 0, 2, false},
        {"failed_files", [] { return int(Dialog::showHasFailedFiles(true, QString())); }, "Keep", 0, 2, true},
        {"message",
         [] {
             Dialog::showMessageAlert(S("Done"), S("Exported"), QString());
             return 0;
         },
         "OK", 0, 0, true, "Done", "Exported", "OK"},
        {"warning",
         [] {
             Dialog::showWarning(S("Careful"), S("Disk <i>almost</i> full"));
             return 0;
         },
         "OK", 0, 1, true, "Careful", "Disk <i>almost</i> full", "OK"},
    };
    QWidget window;
    window.show();
    int steps = 0;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QApplication::setActiveWindow(&window);
        answer(driver, seen, S(row.answer));
        EXPECT_EQ(row.call(), row.result);
        ASSERT_EQ(driver.stepsDone(), ++steps);
        EXPECT_EQ(seen.level, row.level);
        EXPECT_EQ(seen.parent, &window);
        EXPECT_EQ(seen.flags & Qt::WindowType_Mask, Qt::Dialog);
        EXPECT_TRUE(seen.flags.testFlag(Qt::MSWindowsFixedSizeDialogHint));
        if (row.richText) {
            EXPECT_EQ(seen.format, Qt::RichText);
        }
        if (row.title) {
            EXPECT_EQ(seen.title, S(row.title));
        }
        if (row.text) {
            EXPECT_EQ(seen.text, S(row.text));
        }
        if (row.buttons) {
            EXPECT_EQ(seen.buttons, S(row.buttons).split(QLatin1Char('|')));
        }
        if (row.proposed) {
            EXPECT_EQ(seen.defaultButton, S(row.proposed));
        }
    }
}

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
