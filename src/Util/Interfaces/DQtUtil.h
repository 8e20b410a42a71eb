#pragma once

// The maker's Qt utility library.
#include <DQtUtil/AlertBox.h>
#include <DQtUtil/Desktop.h>
#include <DQtUtil/SpontaneousDialog.h>
