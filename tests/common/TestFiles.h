#pragma once

// Small files on disk for tests. Header-only so that any test folder can use it.

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QString>

namespace TestSupport {

// Writes `content` to `path`, creating its folders. False when it could not.
inline bool writeFile(const QString& path, const QByteArray& content = QByteArray())
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

// The whole content of `path`, empty when it cannot be read.
inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace TestSupport
