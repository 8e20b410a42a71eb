#include "Filesystem.h"

#include <Util/Detail/FilesystemInternals.h>
#include <Util/Dialog/Dialog.h>
#include <Util/Dialog/MissingFilesDialog/MissingFilesDialog.h>
#include <Util/Interfaces/Core.h>
#include <Util/Interfaces/DQtUtil.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QBuffer>
#include <QCoreApplication>
#include <QDataStream>
#include <QElapsedTimer>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QRegularExpression>
#include <QSaveFile>
#include <QUuid>
#include <QtEndian>

#include <glog/logging.h>

#include <algorithm>
namespace Filesystem {

namespace {

QStringList readStringList(const std::string& serialized, const char* expectedName)
{
    if (serialized.empty())
        return {};
    Dravik::Core::DataInputString input(serialized);
    Dravik::Core::Property list;
    if (!Dravik::Core::PropertySerializer::Deserialize(list, input))
        return {};
    if (list.GetName() != expectedName)
        LOG(ERROR) << "Filesystem: stored list is named \"" << list.GetName() << "\" instead of \"" << expectedName
                   << "\"";
    QStringList result;
    for (const auto& child : list.GetChildren())
        if (child.GetType() == Dravik::Core::Property::Type::String)
            result << QString::fromStdString(child.GetString());
    return result;
}

std::string writeStringList(const QStringList& paths, const char* name)
{
    Dravik::Core::Property list(name, Dravik::Core::Property::Type::Array);
    for (const QString& path : paths)
        list.Append(Dravik::Core::Property::MakeString(std::string(), path.toStdString()));
    Dravik::Core::DataOutputString output;
    Dravik::Core::PropertySerializer::Serialize(list, output);
    return output.GetString();
}

} // namespace

// Lists and locations.

QStringList recentProjects() { return readStringList(Settings::recentProjects(), "recent"); }

void saveRecentProjects(QStringList projects)
{
    Settings::setRecentProjects(writeStringList(cleanPath(std::move(projects)), "recent"));
}

QStringList lastUsedOutputDirectories() { return cleanPath(readStringList(Settings::targetHistory(), "targets")); }

void saveLastUsedOutputDirectories(QStringList directories)
{
    Settings::setTargetHistory(writeStringList(cleanPath(std::move(directories)), "targets"));
}

namespace {
constexpr quint32 kPreviewsMagic = 0x45555250; // "EURP"
constexpr quint32 kPreviewsVersion = 1;

// Bytes of the PNG stream starting at `from` (signature, chunks up to IEND), or 0.
int pngLength(const QByteArray& data, int from)
{
    if (data.mid(from, 8) != QByteArrayLiteral("\x89PNG\r\n\x1a\n"))
        return 0;
    qint64 at = from + 8;
    while (at + 12 <= data.size()) {
        const quint32 length = qFromBigEndian<quint32>(data.constData() + at);
        const bool last = data.mid(int(at) + 4, 4) == QByteArrayLiteral("IEND");
        at += 12 + qint64(length);
        if (last)
            return at <= data.size() ? int(at - from) : 0;
    }
    return 0;
}

// The picture decoded no larger than a preview, judged by its header first; null when it is
// not a PNG or announces more than previewStoredMaxSide pixels a side.
QImage readPreview(const QByteArray& png)
{
    QBuffer buffer;
    buffer.setData(png);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "png");
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > previewStoredMaxSide || size.height() > previewStoredMaxSide)
        return {};
    if (size.width() > previewSide || size.height() > previewSide)
        reader.setScaledSize(size.scaled(previewSide, previewSide, Qt::KeepAspectRatio));
    return reader.read();
}
} // namespace

// Read entry by entry as QDataStream writes a QMap<QString, QPixmap> (count, then key, null
// marker and PNG per entry), so no picture is decoded before its size is known.
QMap<QString, QPixmap> recentProjectPreviews()
{
    const QByteArray data = Settings::recentProjectPreviews();
    if (data.isEmpty())
        return {};
    QDataStream in(data);
    in.setVersion(QDataStream::Qt_5_15);
    quint32 magic = 0;
    quint32 version = 0;
    quint32 count = 0;
    in >> magic >> version >> count;
    QMap<QString, QPixmap> previews;
    bool readable = in.status() == QDataStream::Ok && magic == kPreviewsMagic && version == kPreviewsVersion;
    for (quint32 i = 0; readable && i < count; ++i) {
        QString key;
        qint32 hasPicture = 0;
        in >> key >> hasPicture;
        const int at = int(in.device()->pos());
        const int length = hasPicture ? pngLength(data, at) : 0;
        readable = in.status() == QDataStream::Ok && (!hasPicture || length > 0);
        if (!readable)
            break;
        in.skipRawData(length);
        const QImage picture = hasPicture ? readPreview(data.mid(at, length)) : QImage();
        if (hasPicture && picture.isNull())
            LOG(ERROR) << "Filesystem::recentProjectPreviews: the preview of " << key.toStdString()
                       << " is not a PNG of at most " << previewStoredMaxSide << " pixels a side; left out";
        else
            previews.insert(key, QPixmap::fromImage(picture));
    }
    if (!readable) {
        LOG(ERROR) << "Filesystem::recentProjectPreviews: stored previews are unreadable";
        return {};
    }
    return previews;
}

void saveRecentProjectPreviews(const QMap<QString, QPixmap>& previews)
{
    QMap<QString, QPixmap> cleaned;
    for (auto it = previews.cbegin(); it != previews.cend(); ++it)
        cleaned.insert(cleanPath(it.key()), it.value());
    QByteArray data;
    QDataStream out(&data, QIODevice::WriteOnly);
    out.setVersion(QDataStream::Qt_5_15);
    out << kPreviewsMagic << kPreviewsVersion << cleaned;
    Settings::setRecentProjectPreviews(data);
}

} // namespace Filesystem
