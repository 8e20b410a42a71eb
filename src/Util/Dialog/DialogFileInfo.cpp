#include "Dialog.h"

#include <Util/Dialog/FileInfoDialog.h>
#include <Util/Interfaces/DQtUtil.h>

#include <glog/logging.h>

namespace Dialog {

void DialogStrategy::showFileInfo(const Media::File* file)
{
    if (!file) {
        LOG(ERROR) << "Dialog::showFileInfo: no file given";
        return;
    }
    FileInfoDialog dialog(*file, Dravik::Util::SpontaneousDialog::findParent());
    dialog.exec();
}

} // namespace Dialog
