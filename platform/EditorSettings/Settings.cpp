#include "Settings.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

#include <memory>

#include <dlfcn.h>

namespace {

const char kLastVideo[] = "Paths/lastAddVideo";
const char kLastAudio[] = "Paths/lastAddAudio";
const char kLastImage[] = "Paths/lastAddImage";
const char kLastMedia[] = "Paths/lastAddMedia";
const char kLastDirectory[] = "Paths/lastAddDirectory";
const char kRememberFolders[] = "Paths/rememberLastFolders";
const char kProjectPath[] = "Paths/project";
const char kSnapshotPath[] = "Paths/snapshot";
const char kRecent[] = "recent";
const char kTargets[] = "targets";
const char kRecentPreviews[] = "recentPreviews";

struct Store
{
    std::unique_ptr<QSettings> settings;
    QString redirectedFile;
    QString previewFolder;
};

Store& state()
{
    static Store store;
    return store;
}

QString applicationName()
{
    const QString name = QCoreApplication::applicationName();
    return name.isEmpty() ? QStringLiteral("EditorUtil") : name;
}

QSettings& settings()
{
    Store& s = state();
    if (!s.settings) {
        if (!s.redirectedFile.isEmpty()) {
            s.settings = std::make_unique<QSettings>(s.redirectedFile, QSettings::IniFormat);
        } else {
            const QString organization = QCoreApplication::organizationName();
            s.settings = std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                                     organization.isEmpty() ? applicationName() : organization,
                                                     applicationName());
        }
    }
    return *s.settings;
}

QString readString(const char* key) { return settings().value(QLatin1String(key)).toString(); }

void writeString(const char* key, const QString& value) { settings().setValue(QLatin1String(key), value); }

std::string readStd(const char* key) { return readString(key).toStdString(); }

void writeStd(const char* key, const std::string& value) { writeString(key, QString::fromStdString(value)); }

QString standardFolder(QStandardPaths::StandardLocation location, const QString& leaf)
{
    QString base = QStandardPaths::writableLocation(location);
    if (base.isEmpty())
        base = QDir::homePath();
    return QDir::cleanPath(base + QLatin1Char('/') + applicationName() + QLatin1Char('/') + leaf);
}

QString previewFile(const char* name) { return QDir(Settings::previewImageFolder()).filePath(QLatin1String(name)); }

} // namespace

void Settings::useStoreFile(const QString& iniFilePath)
{
    Store& s = state();
    if (s.settings)
        s.settings->sync();
    s.settings.reset();
    s.redirectedFile = iniFilePath;
}

void Settings::useDefaultStore() { useStoreFile(QString()); }

QString Settings::storeFileName() { return settings().fileName(); }

void Settings::sync() { settings().sync(); }

QString Settings::lastAddVideoPath() { return readString(kLastVideo); }
void Settings::setLastAddVideoPath(const QString& path) { writeString(kLastVideo, path); }
QString Settings::lastAddAudioPath() { return readString(kLastAudio); }
void Settings::setLastAddAudioPath(const QString& path) { writeString(kLastAudio, path); }
QString Settings::lastAddImagePath() { return readString(kLastImage); }
void Settings::setLastAddImagePath(const QString& path) { writeString(kLastImage, path); }
QString Settings::lastAddMediaPath() { return readString(kLastMedia); }
void Settings::setLastAddMediaPath(const QString& path) { writeString(kLastMedia, path); }
QString Settings::lastAddDirectoryPath() { return readString(kLastDirectory); }
void Settings::setLastAddDirectoryPath(const QString& path) { writeString(kLastDirectory, path); }

bool Settings::rememberLastFolders() { return settings().value(QLatin1String(kRememberFolders), true).toBool(); }
void Settings::setRememberLastFolders(bool remember) { settings().setValue(QLatin1String(kRememberFolders), remember); }

QString Settings::projectPath()
{
    const QString stored = readString(kProjectPath);
    return stored.isEmpty() ? standardFolder(QStandardPaths::DocumentsLocation, QStringLiteral("Projects")) : stored;
}
void Settings::setProjectPath(const QString& path) { writeString(kProjectPath, path); }

QString Settings::projectFileExtension() { return QStringLiteral("dscproj"); }
QString Settings::projectFileOpenFilter() { return QStringLiteral("*.dscproj"); }
QString Settings::projectFileSaveFilter() { return QStringLiteral("*.dscproj"); }
QString Settings::projectNameDefault() { return QStringLiteral("New Project"); }
QStringList Settings::supportedProjectFileExtensions() { return {QStringLiteral("dscproj")}; }
QString Settings::packageExtenstion() { return QStringLiteral("dscpack"); }

QString Settings::snapshotPath()
{
    const QString stored = readString(kSnapshotPath);
    return stored.isEmpty() ? standardFolder(QStandardPaths::PicturesLocation, QStringLiteral("Snapshots")) : stored;
}
void Settings::setSnapshotPath(const QString& path) { writeString(kSnapshotPath, path); }

std::string Settings::recentProjects() { return readStd(kRecent); }
void Settings::setRecentProjects(const std::string& serialized) { writeStd(kRecent, serialized); }
std::string Settings::targetHistory() { return readStd(kTargets); }
void Settings::setTargetHistory(const std::string& serialized) { writeStd(kTargets, serialized); }

QByteArray Settings::recentProjectPreviews() { return settings().value(QLatin1String(kRecentPreviews)).toByteArray(); }
void Settings::setRecentProjectPreviews(const QByteArray& data)
{
    settings().setValue(QLatin1String(kRecentPreviews), data);
}

namespace {

// The folder of the shared library this code was linked into (the installed EditorUtil
// library), or an empty string when it cannot be told.
QString libraryFolder()
{
    Dl_info info = {};
    if (!dladdr(reinterpret_cast<const void*>(&Settings::previewImageFolder), &info) || !info.dli_fname)
        return {};
    return QFileInfo(QFile::decodeName(info.dli_fname)).absolutePath();
}

} // namespace

QString Settings::previewImageFolder()
{
    const Store& s = state();
    if (!s.previewFolder.isEmpty())
        return s.previewFolder;
    const QString fromEnvironment = qEnvironmentVariable("EDITORUTIL_PREVIEW_DIR");
    if (!fromEnvironment.isEmpty())
        return QDir::cleanPath(fromEnvironment);
    const QString sub = QStringLiteral("/EditorUtil/preview");
    // The data folder of the installation the library belongs to, wherever the program runs.
    const QString library = libraryFolder();
    if (!library.isEmpty()) {
        const QString besideLibrary =
            QDir::cleanPath(library + QLatin1Char('/') + QStringLiteral(EDITORSETTINGS_DATA_FROM_LIBRARY) + sub);
        if (QFileInfo(besideLibrary).isDir())
            return besideLibrary;
    }
    const QString besideProgram =
        QDir::cleanPath(QCoreApplication::applicationDirPath() + QStringLiteral("/../share") + sub);
    if (QFileInfo(besideProgram).isDir())
        return besideProgram;
    const QString installed = QStandardPaths::locate(
        QStandardPaths::GenericDataLocation, QStringLiteral("EditorUtil/preview"), QStandardPaths::LocateDirectory);
    return installed.isEmpty() ? besideProgram : QDir::cleanPath(installed);
}

void Settings::setPreviewImageFolder(const QString& folder) { state().previewFolder = folder; }

QString Settings::effectPreviewImagePath() { return previewFile("effect.png"); }
QString Settings::transitionPreviewImageAPath() { return previewFile("transitionA.png"); }
QString Settings::transitionPreviewImageBPath() { return previewFile("transitionB.png"); }
QString Settings::titlePreviewImagePath() { return previewFile("title.png"); }
QString Settings::calloutPreviewImagePath() { return previewFile("callout.png"); }
QString Settings::quizPreviewImagePath() { return previewFile("quiz.png"); }
QString Settings::panZoomPreviewImagePath() { return previewFile("panzoom.png"); }
QString Settings::animationBackgroundPreviewImagePath() { return previewFile("animationBackground.png"); }
QString Settings::animationIconPreviewImagePath() { return previewFile("animationIcon.png"); }

namespace {
QString customizationKey(const QString& name) { return QStringLiteral("Customization/") + name; }
} // namespace

QVariant Settings::customizationValue(const QString& name) { return settings().value(customizationKey(name)); }
void Settings::setCustomizationValue(const QString& name, const QVariant& value)
{
    settings().setValue(customizationKey(name), value);
}
void Settings::removeCustomizationValue(const QString& name) { settings().remove(customizationKey(name)); }

QVariantMap Settings::actionUsageCounts() { return settings().value(QStringLiteral("ActionUsage")).toMap(); }
void Settings::setActionUsageCounts(const QVariantMap& counts)
{
    settings().setValue(QStringLiteral("ActionUsage"), counts);
}
