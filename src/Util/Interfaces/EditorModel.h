#pragma once

#include <Util/Interfaces/PubSub.h>

#include <EditorModel/EditorModel.h>
