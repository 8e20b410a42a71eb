// Frames a second start of the editor (or anything on the socket) hands the running one: a
// frame that decodes must encode back to one that decodes the same.
#include "FuzzMain.h"

#include <Util/IPC/Controller.h>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using IPC::Controller;
    QString problem;
    const auto frame = Controller::decodeFrame(QByteArray(reinterpret_cast<const char*>(data), int(size)), &problem);
    if (!frame) {
        FUZZ_CHECK(!problem.isEmpty());
        return 0;
    }
    FUZZ_CHECK(frame->request.files.size() <= Controller::MaxFilesPerFrame);
    const auto back = Controller::decodeFrame(Controller::encodeFrame(*frame));
    FUZZ_CHECK(back && back->id == frame->id && back->final == frame->final
               && back->request.files == frame->request.files && back->request.mode == frame->request.mode
               && back->request.category == frame->request.category);
    return 0;
}
