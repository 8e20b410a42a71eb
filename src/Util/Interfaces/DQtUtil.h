#pragma once

#include <DQtUtil/ExclusiveService.h>
#include <DQtUtil/SceneHelper.h>
