#pragma once

#include <PubSub/PubSub.h>
