#pragma once

// The maker's core, configuration, processing and application libraries.
#include <Core/Application.h>
#include <Core/DataStream.h>
#include <Core/FormatFile.h>
#include <Core/ProcessingError.h>
#include <Core/ProgressController.h>
#include <Core/Property.h>
#include <Core/PropertySerializer.h>
