#pragma once

#include <Util/EditorUtilExport.h>

#include <QString>

#include <functional>
#include <memory>

class QApplication;

namespace Media {
class File;
}

// Every question and alert the library puts to the user. The free functions forward to one
// process-wide strategy chosen with initialize(): real modal alert boxes, or silent answers
// for unattended runs.
namespace Dialog {

enum MissingFileAction
{
    Abort = 0,
    Skip = 1,
    Browse = 2
};

using Validator = std::function<bool(const QString& text, QString& error)>;

EDITORUTIL_EXPORT bool alertAction(const QString& title, const QString& text, const QString& okText,
                                   const QString& cancelText);
EDITORUTIL_EXPORT MissingFileAction alertMissingFile(const QString& fileName, const QString& path);
EDITORUTIL_EXPORT bool alertModifiedProject(bool& save);
EDITORUTIL_EXPORT bool alertOverwrite(const QString& path);
EDITORUTIL_EXPORT bool alertOverwriteFolder(const QString& path);
EDITORUTIL_EXPORT bool alertRestoreSession();
// `details`, when not empty, is offered under the box's "Show Details..." button.
EDITORUTIL_EXPORT void showCriticalError(const QApplication& application, const QString& details);
EDITORUTIL_EXPORT void showFileInfo(const Media::File* file);
// Asks whether files that failed to open are removed (true) or kept (false). `message`, when
// not empty (the failed files and why), is offered under the box's "Show Details..." button;
// when `allowKeep` is false only "Remove" is offered.
EDITORUTIL_EXPORT bool showHasFailedFiles(bool allowKeep, const QString& message);
// `details`, when not empty, is offered under the box's "Show Details..." button.
EDITORUTIL_EXPORT void showMessageAlert(const QString& title, const QString& text, const QString& details);
EDITORUTIL_EXPORT QString showValidationInputDialog(const QString& title, const QString& label, const QString& text,
                                                    Validator validator);
EDITORUTIL_EXPORT void showWarning(const QString& title, const QString& text);

class IDialogStrategy;

// Chooses the strategy of the process: DialogStrategy when `interactive`, else
// DialogStrategyEmpty. Replacing a strategy releases the previous one.
EDITORUTIL_EXPORT void initialize(bool interactive);
// False while the silent strategy (or none) is installed: callers that would open a dialog
// of their own (the missing-files search) skip it then.
EDITORUTIL_EXPORT bool isInteractive();
// Installs a strategy of the caller's own (a null pointer is refused with a logged error).
EDITORUTIL_EXPORT void setStrategy(std::shared_ptr<IDialogStrategy> strategy);

// How questions are put. The operations are private: callers use the free functions above.
class EDITORUTIL_EXPORT IDialogStrategy
{
public:
    virtual ~IDialogStrategy();

private:
    friend bool alertAction(const QString&, const QString&, const QString&, const QString&);
    friend MissingFileAction alertMissingFile(const QString&, const QString&);
    friend bool alertModifiedProject(bool&);
    friend bool alertOverwrite(const QString&);
    friend bool alertOverwriteFolder(const QString&);
    friend bool alertRestoreSession();
    friend void showCriticalError(const QApplication&, const QString&);
    friend void showFileInfo(const Media::File*);
    friend bool showHasFailedFiles(bool, const QString&);
    friend void showMessageAlert(const QString&, const QString&, const QString&);
    friend QString showValidationInputDialog(const QString&, const QString&, const QString&, Validator);
    friend void showWarning(const QString&, const QString&);

    virtual bool alertModifiedProject(bool& save) = 0;
    virtual bool alertOverwrite(const QString& path) = 0;
    virtual bool alertOverwriteFolder(const QString& path) = 0;
    virtual bool alertRestoreSession() = 0;
    virtual void showFileInfo(const Media::File* file) = 0;
    virtual void showWarning(const QString& title, const QString& text) = 0;
    virtual MissingFileAction alertMissingFile(const QString& fileName, const QString& path) = 0;
    virtual bool showHasFailedFiles(bool allowKeep, const QString& message) = 0;
    virtual void showCriticalError(const QApplication& application, const QString& details) = 0;
    virtual bool alertAction(const QString& title, const QString& text, const QString& okText,
                             const QString& cancelText) = 0;
    virtual QString showValidationInputDialog(const QString& title, const QString& label, const QString& text,
                                              Validator validator) = 0;
    virtual void showMessageAlert(const QString& title, const QString& text, const QString& details) = 0;
};

// Modal alert boxes parented to the current window.
class EDITORUTIL_EXPORT DialogStrategy : public IDialogStrategy
{
private:
    bool alertModifiedProject(bool& save) override;
    bool alertOverwrite(const QString& path) override;
    bool alertOverwriteFolder(const QString& path) override;
    bool alertRestoreSession() override;
    void showFileInfo(const Media::File* file) override;
    void showWarning(const QString& title, const QString& text) override;
    MissingFileAction alertMissingFile(const QString& fileName, const QString& path) override;
    bool showHasFailedFiles(bool allowKeep, const QString& message) override;
    void showCriticalError(const QApplication& application, const QString& details) override;
    bool alertAction(const QString& title, const QString& text, const QString& okText,
                     const QString& cancelText) override;
    QString showValidationInputDialog(const QString& title, const QString& label, const QString& text,
                                      Validator validator) override;
    void showMessageAlert(const QString& title, const QString& text, const QString& details) override;
};

// Shows nothing and answers so that unattended runs go on: skip lost files, continue
// without saving, overwrite outputs, keep failed files, decline everything else.
class EDITORUTIL_EXPORT DialogStrategyEmpty : public IDialogStrategy
{
private:
    bool alertModifiedProject(bool& save) override;
    bool alertOverwrite(const QString& path) override;
    bool alertOverwriteFolder(const QString& path) override;
    bool alertRestoreSession() override;
    void showFileInfo(const Media::File* file) override;
    void showWarning(const QString& title, const QString& text) override;
    MissingFileAction alertMissingFile(const QString& fileName, const QString& path) override;
    bool showHasFailedFiles(bool allowKeep, const QString& message) override;
    void showCriticalError(const QApplication& application, const QString& details) override;
    bool alertAction(const QString& title, const QString& text, const QString& okText,
                     const QString& cancelText) override;
    QString showValidationInputDialog(const QString& title, const QString& label, const QString& text,
                                      Validator validator) override;
    void showMessageAlert(const QString& title, const QString& text, const QString& details) override;
};

} // namespace Dialog
