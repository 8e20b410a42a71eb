#pragma once

// Internal to the library: the pieces the Filesystem sources share (dialogs, recent lists,
// walks and paths live in separate files behind the one public header).

#include <Util/Interfaces/Core.h>

#include <QFileDialog>
#include <QSet>
#include <QString>
#include <QStringList>

class QWidget;

namespace Filesystem {
namespace Detail {

using Dravik::Conf::IFormatFile;

QString tr(const char* text);

inline const QFileDialog::Options kDialogOptions = QFileDialog::HideNameFilterDetails;

QWidget* parentWindow();

QStringList groupExtensions(int group);
QSet<QString> groupExtensionSet(int group);
QStringList groupPatterns(int group);

// "Video Files (*.mp4 *.mov ...)", the description translated in the engine's "core" domain.
QString groupFilterLine(int group);

void ensureFolder(const QString& folder);
QString suffixOf(const QString& path);

} // namespace Detail
} // namespace Filesystem
