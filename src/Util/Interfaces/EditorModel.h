#pragma once

#include <Util/Interfaces/PubSub.h>

// Placeholder until the model library lands: the editors only hold pointers to its records.
namespace Editor {
class Object;
}
namespace Composition {
class Object;
}
