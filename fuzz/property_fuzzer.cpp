// Property text as settings and project data store it: whatever parses must write back to
// text that parses to the same tree.
#include "FuzzMain.h"

#include <Core/PropertySerializer.h>

#include <string>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace Dravik::Core;
    DataInputString input(std::string(reinterpret_cast<const char*>(data), size));
    Property tree;
    if (!PropertySerializer::Deserialize(tree, input))
        return 0;
    DataOutputString written;
    PropertySerializer::Serialize(tree, written);
    DataInputString again(written.GetString());
    Property back;
    FUZZ_CHECK(PropertySerializer::Deserialize(back, again));
    FUZZ_CHECK(back == tree);
    return 0;
}
