#pragma once

// The editor's settings library: the static Settings:: accessors.
#include <EditorSettings/Settings.h>
