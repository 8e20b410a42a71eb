#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>

#include <string>

// The editor's persistent settings, one static accessor per value, kept in a QSettings INI
// store.
//
// Where the store lives: by default the per-user INI file of the application
// (organization and application names of QCoreApplication, "EditorUtil" when unset).
// useStoreFile() redirects every accessor to another INI file (tests point it into a
// QTemporaryDir); useDefaultStore() returns to the per-user file.
//
// Stock preview pictures (the *PreviewImagePath accessors) are files of one folder:
//   1. the folder given to setPreviewImageFolder(), else
//   2. the folder named by the environment variable EDITORUTIL_PREVIEW_DIR, else
//   3. EditorUtil/preview in the data folder of the installation the EditorUtil library was
//      loaded from (<libdir>/../share/EditorUtil/preview for the usual layout), when it
//      exists, so a program linking the installed library needs no configuration, else
//   4. share/EditorUtil/preview beside the program (<program dir>/../share/EditorUtil/preview),
//      when it exists (the build tree), else
//   5. EditorUtil/preview in the generic data folders (QStandardPaths::GenericDataLocation),
//      when one exists, else the folder of step 4.
// File names inside it: effect.png, transitionA.png, transitionB.png, title.png, callout.png,
// quiz.png, panzoom.png, animationBackground.png, animationIcon.png.
//
// All accessors run on the GUI thread.
class Settings
{
public:
    // Store location.
    static void useStoreFile(const QString& iniFilePath);
    static void useDefaultStore();
    static QString storeFileName();
    // Writes pending changes to disk (also done on every redirect and at exit).
    static void sync();

    // Last folders of the file dialogs; empty until a dialog stored one.
    static QString lastAddVideoPath();
    static void setLastAddVideoPath(const QString& path);
    static QString lastAddAudioPath();
    static void setLastAddAudioPath(const QString& path);
    static QString lastAddImagePath();
    static void setLastAddImagePath(const QString& path);
    static QString lastAddMediaPath();
    static void setLastAddMediaPath(const QString& path);
    static QString lastAddDirectoryPath();
    static void setLastAddDirectoryPath(const QString& path);
    // When false, media dialogs always open on the standard folders (kiosk or classroom
    // installations where one account is shared). True by default.
    static bool rememberLastFolders();
    static void setRememberLastFolders(bool remember);

    // Projects. The default folder is "<documents>/<application name>/Projects".
    static QString projectPath();
    static void setProjectPath(const QString& path);
    static QString projectFileExtension(); // "dscproj"
    // Dialog filter patterns of project files, separated by spaces: "*.dscproj". The
    // suffix of each pattern is what follows "*.".
    static QString projectFileOpenFilter();
    static QString projectFileSaveFilter();              // "*.dscproj"
    static QString projectNameDefault();                 // "New Project"
    static QStringList supportedProjectFileExtensions(); // {"dscproj"}
    // Suffix of a portable project package: "dscpack".
    static QString packageExtenstion();

    // Frame snapshots. The default folder is "<pictures>/<application name>/Snapshots".
    static QString snapshotPath();
    static void setSnapshotPath(const QString& path);

    // Serialized property lists, kept under the keys "recent" and "targets".
    static std::string recentProjects();
    static void setRecentProjects(const std::string& serialized);
    static std::string targetHistory();
    static void setTargetHistory(const std::string& serialized);
    // Preview pictures of recent projects, in the caller's own binary form.
    static QByteArray recentProjectPreviews();
    static void setRecentProjectPreviews(const QByteArray& data);

    // Stock pictures of the preview providers.
    static QString previewImageFolder();
    static void setPreviewImageFolder(const QString& folder); // empty: back to the default
    static QString effectPreviewImagePath();
    static QString transitionPreviewImageAPath();
    static QString transitionPreviewImageBPath();
    static QString titlePreviewImagePath();
    static QString calloutPreviewImagePath();
    static QString quizPreviewImagePath();
    static QString panZoomPreviewImagePath();
    static QString animationBackgroundPreviewImagePath();
    static QString animationIconPreviewImagePath();

    // Look and behaviour options of the application, each kept as written under
    // "Customization/<name>"; an invalid QVariant when the store has none.
    static QVariant customizationValue(const QString& name);
    static void setCustomizationValue(const QString& name, const QVariant& value);
    static void removeCustomizationValue(const QString& name);
    // How often each tagged action was used, kept under "ActionUsage" on this machine only.
    static QVariantMap actionUsageCounts();
    static void setActionUsageCounts(const QVariantMap& counts);
};
