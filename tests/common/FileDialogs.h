#pragma once

// Answers a QFileDialog opened by the code under test (from a ModalDriver step).
// Header-only so that any test folder can use it.

#include <QAbstractItemView>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QItemSelectionModel>
#include <QLineEdit>
#include <QSignalBlocker>
#include <QStringList>

namespace TestSupport {

// What a file dialog showed when it opened.
struct FileDialogSeen
{
    QString title;
    QString directory; // cleaned
    QStringList filters;
    QString typed; // the proposed file name
    QFileDialog::Options options;
};

inline FileDialogSeen lookAt(QFileDialog* dialog)
{
    FileDialogSeen seen;
    seen.title = dialog->windowTitle();
    seen.directory = QDir::cleanPath(dialog->directory().absolutePath());
    seen.filters = dialog->nameFilters();
    seen.typed = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text();
    seen.options = dialog->options();
    return seen;
}

// Puts the text in the file-name line without letting the dialog turn it into a selection
// of its list view (which holds only what the current filter shows, and only once the
// folder has been read): the dialog then returns exactly the typed names.
inline void typeNames(QFileDialog* dialog, const QString& text)
{
    auto* edit = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
    {
        const QSignalBlocker blocker(edit);
        edit->setText(text);
    }
    for (auto* view : dialog->findChildren<QAbstractItemView*>())
        if (view->selectionModel())
            view->selectionModel()->clearSelection();
}

// Types the names (relative to `folder`) into the dialog and presses its accept button.
inline void chooseFiles(QFileDialog* dialog, const QString& folder, const QStringList& names)
{
    dialog->setDirectory(folder);
    QStringList quoted;
    for (const QString& name : names)
        quoted << QLatin1Char('"') + name + QLatin1Char('"');
    typeNames(dialog, names.size() == 1 ? names.first() : quoted.join(QLatin1Char(' ')));
    static_cast<QDialog*>(dialog)->accept();
}

// Accepts whatever is typed, even entries the widget would open as folders (a package that
// a native dialog would show as one file).
inline void chooseEntries(QFileDialog* dialog, const QString& folder, const QStringList& names)
{
    dialog->setDirectory(folder);
    QStringList quoted;
    for (const QString& name : names)
        quoted << QLatin1Char('"') + name + QLatin1Char('"');
    typeNames(dialog, quoted.join(QLatin1Char(' ')));
    static_cast<QDialog*>(dialog)->done(QDialog::Accepted);
}

// Accepts the folder in a folder dialog.
inline void chooseFolder(QFileDialog* dialog, const QString& folder)
{
    dialog->setDirectory(folder);
    typeNames(dialog, QString());
    static_cast<QDialog*>(dialog)->accept();
}

} // namespace TestSupport
