#pragma once

#include <Util/EditorUtilExport.h>

#include <QString>
#include <QStringList>

#include <memory>

// Turns the command line and the requests that reach a running editor (files handed over by
// another instance, showing or hiding the main window, the add-media panel, the tools page)
// into application commands published to Command::globalObject(). Until the application
// publishes AppEvents::StartupCompleted every request is recorded; at that moment the
// recorded ones are published in a fixed order (slideshow mode, files, show window, hide
// window, then the add-media category or else the tools page), and from then on each request
// is published at once. Of a batch of files, only the first project file is opened when
// there is one (the others are dropped); otherwise every file is added, in order.
// GUI thread only.
class EDITORUTIL_EXPORT CommandProvider
{
public:
    // Parses QCoreApplication::arguments().
    CommandProvider();
    // Parses `arguments` (the program name first, as QCoreApplication gives them).
    explicit CommandProvider(const QStringList& arguments);
    ~CommandProvider();
    CommandProvider(const CommandProvider&) = delete;
    CommandProvider& operator=(const CommandProvider&) = delete;

    void handleFile(const QString& path);
    bool hasPendingFiles() const;
    void showMainWindow();
    void hideMainWindow();
    void showToolsPage();
    // Before start-up a later category replaces an earlier one.
    void showAddMediaCategory(const QString& category);

private:
    class Private;
    std::unique_ptr<Private> d;
};
