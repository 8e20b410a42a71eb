#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/IPC/Controller.h>

#include <QCommandLineOption>
#include <QList>
#include <QStringList>

#include <memory>

class CommandProvider;

// What an application's main calls first, right after creating its QApplication and its
// CommandProvider: decides whether this start is the user's first instance of the editor.
//
//   CommandProvider commands;
//   Launcher launcher(&commands);
//   if (launcher.start() == IPC::Controller::Role::Secondary)
//       return 0; // a running editor took the files
//
// A secondary has handed its files (positional arguments, made absolute against its working
// directory) to the primary, which acknowledged them. The primary gets a listening
// controller() that feeds later starts to `commands`, and its own files go the same way, so
// a file given to whichever instance won a simultaneous start is not dropped. GUI thread only.
class EDITORUTIL_EXPORT Launcher
{
public:
    struct Options
    {
        // Separates programs that share an application name.
        QString key;
        // Add-media category the primary opens for handed-over files; empty: none.
        QString handoverCategory;
        // How long a start waits for a primary's acknowledgement before it becomes one.
        int timeoutMs = 2000;
        // Relative paths are made absolute against it; empty: the current folder.
        QString workingDirectory;
        // The application's own options besides "mode" and help, so their values are not
        // taken for files.
        QList<QCommandLineOption> options;
    };

    // Uses QCoreApplication::arguments() and default options.
    explicit Launcher(CommandProvider* provider);
    Launcher(CommandProvider* provider, const QStringList& arguments, Options options);
    ~Launcher();
    Launcher(const Launcher&) = delete;
    Launcher& operator=(const Launcher&) = delete;

    // Decides and acts: Secondary once the primary acknowledged this start's request;
    // Primary otherwise, with the request delivered locally.
    IPC::Controller::Role start();
    // What this start hands over (or opens itself).
    const IPC::Request& request() const;
    // The primary's controller (set its gateway here); null for a secondary.
    IPC::Controller* controller() const;

private:
    class Private;
    std::unique_ptr<Private> d;
};
