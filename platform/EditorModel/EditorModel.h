#pragma once

// The whole data model: records, messages, the model's views and the host.
#include <EditorModel/Animation.h>
#include <EditorModel/Editor.h>
#include <EditorModel/GlobalObjects.h>
#include <EditorModel/Host.h>
#include <EditorModel/Media.h>
#include <EditorModel/Messages.h>
#include <EditorModel/ModelView.h>
#include <EditorModel/Playback.h>
#include <EditorModel/Presets.h>
#include <EditorModel/Registry.h>
#include <EditorModel/Selection.h>
#include <EditorModel/Thumbnail.h>
#include <EditorModel/Timeline.h>
#include <EditorModel/TimelineRequests.h>
#include <EditorModel/TimelineViews.h>
#include <EditorModel/Types.h>
