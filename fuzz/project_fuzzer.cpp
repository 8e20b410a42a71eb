// Project files from a broken disk or another program: a document that is read must save to
// a file that loads the same.
#include "FuzzMain.h"

#include <Util/Project.h>

FUZZ_INIT

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const QString path =
        QDir::temp().filePath(QStringLiteral("editorutil-fuzz-%1.dscproj").arg(qApp->applicationPid()));
    const Project::Result read =
        Project::read(QByteArray(reinterpret_cast<const char*>(data), int(size)), QStringLiteral("/p/fuzz.dscproj"));
    FUZZ_CHECK(read.ok() == read.message.isEmpty());
    if (!read.ok() || !Project::save(path, read.document).ok())
        return 0;
    const Project::Result loaded = Project::load(path);
    FUZZ_CHECK(loaded.ok() && loaded.document == read.document);
    return 0;
}
