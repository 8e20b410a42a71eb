#pragma once

// Points the settings store at an INI file in a fresh temporary folder for the lifetime of
// the object, then back at the default store (which the test main's
// QStandardPaths::setTestModeEnabled keeps apart from the user's). Header-only.

#include <EditorSettings/Settings.h>

#include <QTemporaryDir>

namespace TestSupport {

class TempSettings
{
public:
    TempSettings() { Settings::useStoreFile(m_dir.filePath(QStringLiteral("settings.ini"))); }
    ~TempSettings() { Settings::useDefaultStore(); }
    TempSettings(const TempSettings&) = delete;
    TempSettings& operator=(const TempSettings&) = delete;

    QString folder() const { return m_dir.path(); }
    QString storeFile() const { return m_dir.filePath(QStringLiteral("settings.ini")); }

private:
    QTemporaryDir m_dir;
};

} // namespace TestSupport
