#pragma once

#include <EditorModel/Presets.h>

#include <QByteArray>

#include <memory>
#include <vector>

// The serialized form of overlay presets, carried in mime data under Overlay::Preset::mimeType:
// a UTF-8 JSON document
//
//   {"format": "overlay-presets", "version": 1,
//    "presets": [{"name": "...", "tag": "...",
//                 "items": [{"text": "...", "transform": [m11, m12, m13, m21, m22, m23, m31, m32, m33]}]}]}
//
// "name", "tag" and "transform" may be left out (empty texts, identity); a document that
// repeats a key in one object is refused (see readJson).
namespace Serialize {

// Largest document the parser accepts.
constexpr int maxOverlayPresetBytes = 32 * 1024 * 1024;

QByteArray writeOverlayPresets(const std::vector<const Overlay::Preset*>& presets);

// The presets of a document; an empty list (and a logged reason) when the document is not a
// well-formed list of presets. Nothing of a malformed document is returned.
std::vector<std::unique_ptr<Overlay::Preset>> readOverlayPresets(const QByteArray& data);

} // namespace Serialize
