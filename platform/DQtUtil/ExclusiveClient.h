#pragma once

// ExclusiveClient is declared beside the service it uses.
#include <DQtUtil/ExclusiveService.h>
