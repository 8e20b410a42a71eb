#include "Dialog.h"

#include <glog/logging.h>

namespace Dialog {

// The file-information dialog reads the media file's streams from the model.
void DialogStrategy::showFileInfo(const Media::File* file)
{
    LOG(ERROR) << "Dialog::showFileInfo: not available in this build (file " << file << ")";
}

} // namespace Dialog
