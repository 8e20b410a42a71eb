#pragma once

#include <EditorModel/Types.h>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QString>

namespace Serialize {

// The JSON document of `data` as QJsonDocument::fromJson reads it, except that a document
// repeating a key inside one object is refused before Qt parses it: Qt 5.15's parser loses
// the memory of the earlier value of such a key when it is an array or an object, and no
// writer of ours repeats a key. Keys compare with escapes decoded ("a" and "\u0061" are the
// same key); a key holding a NUL character is refused as well, since Qt compares keys only
// up to it.
//
// A refused document gives a null document and, in `error` when given, the reason and where
// ("illegal value at byte 4", "the key "a" repeated at byte 10").
QJsonDocument readJson(const QByteArray& data, QString* error = nullptr);

// A placement as nine numbers, row by row: [m11, m12, m13, m21, m22, m23, m31, m32, m33].
QJsonArray writeTransform(const Types::Transform& transform);
// The placement of such an array; false (and `out` unchanged) unless it holds nine finite numbers.
bool readTransform(const QJsonValue& value, Types::Transform& out);

// Logs why `reader` refused a document: "Serialize::readAnimation: no keys (detail)".
void logRefusal(const char* reader, const char* why, const QString& detail = QString());

} // namespace Serialize
