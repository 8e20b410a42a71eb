#include "Dialog.h"

#include <Util/Dialog/ValidationInputDialog.h>
#include <Util/Interfaces/Core.h>
#include <Util/Interfaces/DQtUtil.h>

#include <QAbstractButton>
#include <QApplication>
#include <QCoreApplication>
#include <QPointer>

#include <glog/logging.h>

namespace Dialog {

namespace {

std::shared_ptr<IDialogStrategy>& strategySlot()
{
    static std::shared_ptr<IDialogStrategy> slot;
    return slot;
}

IDialogStrategy& current()
{
    auto& slot = strategySlot();
    if (!slot) {
        LOG(ERROR) << "Dialog: a dialog was requested before Dialog::initialize(); answering silently";
        slot = std::make_shared<DialogStrategyEmpty>();
    }
    return *slot;
}

QString tr(const char* text) { return QCoreApplication::translate("Dialog", text); }

constexpr Qt::WindowFlags kFixedDialog = Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint;

using Dravik::Util::AlertBox;

QWidget* parentWindow() { return Dravik::Util::SpontaneousDialog::findParent(); }

// Asks with a question box of standard buttons and returns the button that closed it.
QMessageBox::StandardButton ask(const QString& title, const QString& text, QMessageBox::StandardButtons buttons,
                                QMessageBox::StandardButton defaultButton = QMessageBox::NoButton)
{
    AlertBox box(AlertBox::LevelQuestion, title, text, buttons, parentWindow(), kFixedDialog);
    if (defaultButton != QMessageBox::NoButton)
        box.setDefaultButton(defaultButton);
    return box.Exec();
}

void inform(int level, const QString& title, const QString& text, const QString& details)
{
    AlertBox box(level, title, text, QMessageBox::Ok, parentWindow(), kFixedDialog);
    box.SetRichText(true);
    if (!details.isEmpty())
        box.setDetailedText(details);
    box.Exec();
}

QString supportLink()
{
    return QString::fromStdString(Dravik::App::Application::GetCustomizationManager().GetSupportMailLink());
}

} // namespace

IDialogStrategy::~IDialogStrategy() = default;

void initialize(bool interactive)
{
    if (interactive)
        strategySlot() = std::make_shared<DialogStrategy>();
    else
        strategySlot() = std::make_shared<DialogStrategyEmpty>();
}

bool isInteractive()
{
    const auto& slot = strategySlot();
    return slot && !dynamic_cast<const DialogStrategyEmpty*>(slot.get());
}

void setStrategy(std::shared_ptr<IDialogStrategy> strategy)
{
    if (!strategy) {
        LOG(ERROR) << "Dialog::setStrategy: null strategy refused";
        return;
    }
    strategySlot() = std::move(strategy);
}

bool alertAction(const QString& title, const QString& text, const QString& okText, const QString& cancelText)
{
    return current().alertAction(title, text, okText, cancelText);
}
MissingFileAction alertMissingFile(const QString& fileName, const QString& path)
{
    return current().alertMissingFile(fileName, path);
}
bool alertModifiedProject(bool& save) { return current().alertModifiedProject(save); }
bool alertOverwrite(const QString& path) { return current().alertOverwrite(path); }
bool alertOverwriteFolder(const QString& path) { return current().alertOverwriteFolder(path); }
bool alertRestoreSession() { return current().alertRestoreSession(); }
void showCriticalError(const QApplication& application, const QString& details)
{
    current().showCriticalError(application, details);
}
void showFileInfo(const Media::File* file) { current().showFileInfo(file); }
bool showHasFailedFiles(bool allowKeep, const QString& message)
{
    return current().showHasFailedFiles(allowKeep, message);
}
void showMessageAlert(const QString& title, const QString& text, const QString& details)
{
    current().showMessageAlert(title, text, details);
}
QString showValidationInputDialog(const QString& title, const QString& label, const QString& text, Validator validator)
{
    return current().showValidationInputDialog(title, label, text, std::move(validator));
}
void showWarning(const QString& title, const QString& text) { current().showWarning(title, text); }

// Interactive strategy.

bool DialogStrategy::alertModifiedProject(bool& save)
{
    AlertBox box(AlertBox::LevelQuestion, tr("Save project"),
                 tr("Warning! Current project is not saved. Save project before operation?"),
                 QMessageBox::Save | QMessageBox::Discard | QMessageBox::Cancel, parentWindow(), kFixedDialog);
    box.SetButtonText(QMessageBox::Discard, tr("Don't save"));
    const QMessageBox::StandardButton answer = box.Exec();
    save = answer == QMessageBox::Save;
    return answer != QMessageBox::Cancel;
}

bool DialogStrategy::alertOverwrite(const QString& path)
{
    return ask(tr("File exists"), tr("File \"%1\" already exists. Overwrite it?").arg(path),
               QMessageBox::Yes | QMessageBox::No)
           == QMessageBox::Yes;
}

bool DialogStrategy::alertOverwriteFolder(const QString& path)
{
    return ask(tr("Folder exist"), tr("Folder \"%1\" already exists. Overwrite it?").arg(path),
               QMessageBox::Yes | QMessageBox::No)
           == QMessageBox::Yes;
}

bool DialogStrategy::alertRestoreSession()
{
    return ask(tr("Recover editing session"),
               tr("Your last editing session ended unexpectedly. Do you want to restore it?"),
               QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes)
           == QMessageBox::Yes;
}

void DialogStrategy::showWarning(const QString& title, const QString& text)
{
    inform(AlertBox::LevelWarning, title, text, QString());
}

MissingFileAction DialogStrategy::alertMissingFile(const QString& fileName, const QString& path)
{
    AlertBox box(AlertBox::LevelQuestion, tr("Can't open the file"),
                 tr("Could not find the file %1 at the specified location: %2. The file may have been moved or "
                    "deleted. Click Browse to find the file at its new location.")
                     .arg(fileName, path),
                 QMessageBox::NoButton, parentWindow(), Qt::Window | Qt::WindowTitleHint | Qt::CustomizeWindowHint);
    QAbstractButton* browse = box.AddButton(tr("Browse"), QMessageBox::AcceptRole);
    box.AddButton(tr("Skip"), QMessageBox::RejectRole);
    QAbstractButton* abort = box.AddButton(tr("Abort"), QMessageBox::RejectRole);
    box.Exec();
    QAbstractButton* clicked = box.ClickedButton();
    if (clicked == abort)
        return Abort;
    if (clicked == browse)
        return Browse;
    return Skip;
}

bool DialogStrategy::showHasFailedFiles(bool allowKeep, const QString& message)
{
    const QString text = tr("Some of the files can't be opened.")
                         + tr("<br>Please choose:<br>Remove unopened files from the project or keep them?");
    AlertBox box(AlertBox::LevelQuestion, tr("Can't open files"), text, QMessageBox::NoButton, parentWindow(),
                 kFixedDialog);
    box.SetRichText(true);
    if (!message.isEmpty())
        box.setDetailedText(message);
    QAbstractButton* keep = allowKeep ? box.AddButton(tr("Keep"), QMessageBox::RejectRole) : nullptr;
    QAbstractButton* remove = box.AddButton(tr("Remove"), QMessageBox::AcceptRole);
    box.Exec();
    // Closing the box by other means keeps the files when keeping is offered.
    return box.ClickedButton() == remove || !keep;
}

void DialogStrategy::showCriticalError(const QApplication& application, const QString& details)
{
    const QString link = supportLink();
    QString display = link;
    display.remove(QStringLiteral("mailto:"));
    AlertBox box(AlertBox::LevelWarning, tr("Critical error"),
                 tr("Unknown problem has been detected.<br><br>Please contact us at <a href=\"%2\">%3</a> to solve "
                    "this problem.")
                     .arg(link, display),
                 QMessageBox::Ok, nullptr, Qt::BypassWindowManagerHint);
    box.SetRichText(true);
    box.setWindowIcon(application.windowIcon());
    if (!details.isEmpty())
        box.setDetailedText(details);
    box.Exec();
}

bool DialogStrategy::alertAction(const QString& title, const QString& text, const QString& okText,
                                 const QString& cancelText)
{
    AlertBox box(AlertBox::LevelQuestion, title, text, QMessageBox::Ok | QMessageBox::Cancel, parentWindow(),
                 kFixedDialog);
    box.SetRichText(true);
    box.SetButtonText(QMessageBox::Ok, okText);
    box.SetButtonText(QMessageBox::Cancel, cancelText);
    return box.Exec() == QMessageBox::Ok;
}

QString DialogStrategy::showValidationInputDialog(const QString& title, const QString& label, const QString& text,
                                                  Validator validator)
{
    ValidationInputDialog dialog(title, label, text, std::move(validator), parentWindow());
    return dialog.exec() == QDialog::Accepted ? dialog.inputText() : QString();
}

void DialogStrategy::showMessageAlert(const QString& title, const QString& text, const QString& details)
{
    inform(AlertBox::LevelInformation, title, text, details);
}

// Silent strategy.

bool DialogStrategyEmpty::alertModifiedProject(bool& save)
{
    save = false;
    return true;
}
bool DialogStrategyEmpty::alertOverwrite(const QString&) { return true; }
bool DialogStrategyEmpty::alertOverwriteFolder(const QString&) { return true; }
bool DialogStrategyEmpty::alertRestoreSession() { return false; }
void DialogStrategyEmpty::showFileInfo(const Media::File*) {}
void DialogStrategyEmpty::showWarning(const QString&, const QString&) {}
MissingFileAction DialogStrategyEmpty::alertMissingFile(const QString&, const QString&) { return Skip; }
bool DialogStrategyEmpty::showHasFailedFiles(bool, const QString&) { return false; }
void DialogStrategyEmpty::showCriticalError(const QApplication&, const QString&) {}
bool DialogStrategyEmpty::alertAction(const QString&, const QString&, const QString&, const QString&) { return false; }
QString DialogStrategyEmpty::showValidationInputDialog(const QString&, const QString&, const QString&, Validator)
{
    return QString();
}
void DialogStrategyEmpty::showMessageAlert(const QString&, const QString&, const QString&) {}

} // namespace Dialog
