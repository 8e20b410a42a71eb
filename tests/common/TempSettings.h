#pragma once

// Points the settings store at an INI file in a fresh temporary folder for the lifetime of
// the object, so tests never read or write the user's settings. Header-only.

#include <EditorSettings/Settings.h>

#include <QTemporaryDir>

namespace TestSupport {

class TempSettings
{
public:
    TempSettings() { Settings::useStoreFile(m_dir.filePath(QStringLiteral("settings.ini"))); }
    ~TempSettings() { Settings::useStoreFile(m_dir.filePath(QStringLiteral("closed.ini"))); }
    TempSettings(const TempSettings&) = delete;
    TempSettings& operator=(const TempSettings&) = delete;

    QString folder() const { return m_dir.path(); }
    QString storeFile() const { return m_dir.filePath(QStringLiteral("settings.ini")); }

private:
    QTemporaryDir m_dir;
};

} // namespace TestSupport
