#pragma once

// The serialization library: deep copies of timelines, the serialized form of overlay presets
// and the JSON reader every document of the library goes through.
#include <EditorSerialization/Animations.h>
#include <EditorSerialization/Cloner.h>
#include <EditorSerialization/Json.h>
#include <EditorSerialization/ObjectStorage.h>
#include <EditorSerialization/OverlayPresets.h>
