// Media bytes from anywhere: probed, then the first frame of the main video stream decoded.
// The first byte picks the file name's extension, which the engine uses as a hint.
#include "FuzzMain.h"

#include <MediaEngine/FrameDecoder.h>
#include <MediaEngine/Probe.h>

#include <QFile>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const char* const extensions[] = {"mp4", "avi", "mkv", "png", "wav", "jpg", "gif", "mov"};
    if (size == 0)
        return 0;
    const QString path = QDir::temp().filePath(QStringLiteral("editorutil-fuzz-%1.%2")
                                                   .arg(qApp->applicationPid())
                                                   .arg(QLatin1String(extensions[data[0] % 8])));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        return 0;
    file.write(reinterpret_cast<const char*>(data) + 1, qint64(size) - 1);
    file.close();
    MediaEngine::Limits limits;
    limits.probeTimeoutMs = limits.decodeTimeoutMs = 2000;
    const MediaEngine::ProbeResult probe = MediaEngine::probeFile(path, limits);
    if (probe.ok() && !probe.video.empty()) {
        MediaEngine::FrameRequest request;
        request.path = path;
        request.size = QSize(64, 48);
        const MediaEngine::FrameResult frame = MediaEngine::decodeFrame(request, limits);
        FUZZ_CHECK(!frame.ok() || frame.image.size() == request.size);
    }
    QFile::remove(path);
    return 0;
}
