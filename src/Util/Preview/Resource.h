#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>

#include <QString>

#include <string>
#include <tuple>

// Resource identifiers: the names under which the editor draws frames and waveforms of a
// media stream, a text key and the kind of stream. A video stream is "<path>:v:<index>",
// an audio stream "<path>:a:<index>", the path cleaned (Filesystem::cleanPath); any other
// kind has an empty key.
namespace Resource {

EDITORUTIL_EXPORT std::tuple<std::string, Resource::Type> encode(const QString& path, Resource::Type type, int index);
EDITORUTIL_EXPORT std::tuple<std::string, Resource::Type> encode(const Media::File* file, const Media::Video* video);
EDITORUTIL_EXPORT std::tuple<std::string, Resource::Type> encode(const Media::File* file, const Media::Audio* audio);
EDITORUTIL_EXPORT std::tuple<std::string, Resource::Type> encode(const Media::File::Track::Video* track);
EDITORUTIL_EXPORT std::tuple<std::string, Resource::Type> encode(const Media::File::Track::Audio* track);
// The stream a clip shows: video for video and picture clips, audio for audio clips; for
// other clips the kind of the clip's stream in its file. Empty for a clip without media.
EDITORUTIL_EXPORT std::tuple<std::string, Resource::Type> encode(const Timeline::Clip* clip);

// Registers `file` under the identifiers of every video and audio stream its metadata
// lists, until the file is removed from the model or registered again.
EDITORUTIL_EXPORT void registerFile(const Media::File* file, const Media::Metadata& metadata);
// The file registered under `resource`, or null.
EDITORUTIL_EXPORT const Media::File* registeredFile(const std::tuple<std::string, Resource::Type>& resource);

} // namespace Resource
