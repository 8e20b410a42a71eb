// Mime data of a drop from another program: a URL list, an overlay preset document and a
// drag origin, cut from the input at each '|' in that order.
#include "FuzzMain.h"

#include <Util/Import/MimeUtils.h>

#include <QFileInfo>
#include <QMimeData>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QList<QByteArray> parts = QByteArray(reinterpret_cast<const char*>(data), int(size)).split('|');
    const QString formats[] = {QStringLiteral("text/uri-list"), Overlay::Preset::mimeType->toQString(),
                               MimeUtils::dragAsrcFormat()};
    QMimeData mime; // an empty part leaves its format out, as a drop without it would
    for (int i = 0; i < 3; ++i)
        if (!parts.value(i).isEmpty())
            mime.setData(formats[i], parts.value(i));
    const QSet<QString> suffixes{QStringLiteral("mp4"), QStringLiteral("svg"), QStringLiteral("dscproj")};
    for (const QString& file : MimeUtils::extractFiles(&mime, suffixes))
        FUZZ_CHECK(QFileInfo(file).isAbsolute() && !file.contains(QChar::Null));
    MimeUtils::isMimeDataContainsSupportedFile(&mime, suffixes, true);
    MimeUtils::isMimeDataContainsProjectFiles(&mime);
    MimeUtils::makeOverlayPresetList(&mime);
    MimeUtils::mimeDragAsrc(&mime);
    return 0;
}
