// Overlay preset documents dragged between windows: whatever reads must write back to a
// document holding as many presets.
#include "FuzzMain.h"

#include <EditorSerialization/OverlayPresets.h>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const auto presets = Serialize::readOverlayPresets(QByteArray(reinterpret_cast<const char*>(data), int(size)));
    if (presets.empty())
        return 0;
    std::vector<const Overlay::Preset*> pointers;
    for (const auto& preset : presets)
        pointers.push_back(preset.get());
    FUZZ_CHECK(Serialize::readOverlayPresets(Serialize::writeOverlayPresets(pointers)).size() == presets.size());
    return 0;
}
