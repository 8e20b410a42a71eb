#pragma once

// The serialization library: deep copies of timelines and the serialized form of overlay presets.
#include <EditorSerialization/Cloner.h>
#include <EditorSerialization/ObjectStorage.h>
#include <EditorSerialization/OverlayPresets.h>
