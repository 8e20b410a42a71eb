#pragma once

#include <Util/Dialog/Dialog.h>

#include <QPoint>
#include <QStringList>

#include <functional>
#include <vector>

class QMimeData;
class QWidget;

// What the scripted tour and the window's tests share: real input events sent to the real
// widgets, waiting on the event loop, and a dialog strategy that answers by script.
namespace Scripted {

// Runs the event loop until `done` holds; false when `milliseconds` passed first.
bool waitFor(const std::function<bool()>& done, int milliseconds = 20000);

// A mouse drag on `viewport` from `from` to `to` in a few steps, the modifiers held during the
// moves and the release. With `abort`, Escape is pressed on `keyTarget` before the release.
void drag(QWidget* viewport, QPoint from, QPoint to, Qt::KeyboardModifiers modifiers = Qt::NoModifier,
          bool abort = false, QWidget* keyTarget = nullptr);
void click(QWidget* viewport, QPoint at);
// `data` dropped at `at` as a drag would drop it (enter, move, drop); whether it was taken.
bool drop(QWidget* viewport, const QMimeData* data, QPoint at);
// Files dropped at `at` as the desktop or the bin would drop them.
bool dropFiles(QWidget* viewport, const QStringList& paths, QPoint at);

// Answers every question silently, as unattended runs do, but counts as interactive so that
// the window's own dialogs (the missing-files search) open for the script to drive; the
// failed-files questions and warnings are kept.
class ScriptedStrategy : public Dialog::IDialogStrategy
{
public:
    struct Question
    {
        bool allowKeep;
        QString message;
    };
    struct Warning
    {
        QString title;
        QString text;
    };
    bool removeFailed = false;
    std::vector<Question> failedFilesQuestions;
    std::vector<Warning> warnings;

private:
    bool alertModifiedProject(bool& save) override;
    bool alertOverwrite(const QString&) override { return true; }
    bool alertOverwriteFolder(const QString&) override { return true; }
    bool alertRestoreSession() override { return false; }
    void showFileInfo(const Media::File*) override {}
    void showWarning(const QString& title, const QString& text) override;
    Dialog::MissingFileAction alertMissingFile(const QString&, const QString&) override { return Dialog::Skip; }
    bool showHasFailedFiles(bool allowKeep, const QString& message) override;
    void showCriticalError(const QApplication&, const QString& details) override;
    bool alertAction(const QString&, const QString&, const QString&, const QString&) override { return false; }
    QString showValidationInputDialog(const QString&, const QString&, const QString&, Dialog::Validator) override
    {
        return QString();
    }
    void showMessageAlert(const QString& title, const QString& text, const QString&) override;
};

} // namespace Scripted
