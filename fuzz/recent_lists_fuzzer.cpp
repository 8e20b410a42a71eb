// Recent lists as an older or broken version may have left them in the settings: the first
// byte picks the list ('r' projects, 't' output folders, 'p' previews), the rest is stored.
#include "FuzzMain.h"

#include <Util/Filesystem.h>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    if (size == 0)
        return 0;
    const std::string stored(reinterpret_cast<const char*>(data) + 1, size - 1);
    switch (data[0]) {
    case 'r':
        Settings::setRecentProjects(stored);
        Filesystem::recentProjects();
        break;
    case 't':
        Settings::setTargetHistory(stored);
        for (const QString& folder : Filesystem::lastUsedOutputDirectories())
            FUZZ_CHECK(Filesystem::cleanPath(folder) == folder);
        break;
    case 'p':
        Settings::setRecentProjectPreviews(QByteArray::fromStdString(stored));
        for (const QPixmap& preview : Filesystem::recentProjectPreviews())
            FUZZ_CHECK(preview.width() <= Filesystem::previewSide && preview.height() <= Filesystem::previewSide);
        break;
    }
    return 0;
}
