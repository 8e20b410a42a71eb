#pragma once

#include <Util/Interfaces/PubSub.h>

#include <EditorModel/EditorModel.h>

// Adding media files to timelines, the default opener and the timeline request service.
#include <EditorModel/FileAdder.h>
#include <EditorModel/SignatureOpener.h>
#include <EditorModel/TimelineRequestService.h>
