#pragma once

#include <EditorModel/Animation.h>

#include <QByteArray>

#include <optional>

// The serialized form of an animation of a picture's placement (a pan-and-zoom or animation
// preset), carried in mime data and kept in saved projects: a UTF-8 JSON document
//
//   {"format": "animation", "version": 1, "name": "...",
//    "keys": [{"time": "0", "transform": [m11, m12, m13, m21, m22, m23, m31, m32, m33]}, ...]}
//
// Times are decimal strings (a JSON number holds 53 bits only), never negative, each once; the
// keys may come in any order and there is at least one. "name" may be left out.
namespace Serialize {

// Largest document the parser accepts.
constexpr int maxAnimationBytes = 4 * 1024 * 1024;

QByteArray writeAnimation(const Animation::TransformationItem& item);

// The animation of a document; nothing (and a logged reason) when it is malformed.
std::optional<Animation::TransformationItem> readAnimation(const QByteArray& data);

} // namespace Serialize
