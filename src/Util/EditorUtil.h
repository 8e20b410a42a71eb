#pragma once

#include <Util/EditorUtilExport.h>

#include <QString>

namespace EditorUtil {

// Version of the library the program runs with ("0.1.0"), which may differ from the
// headers it was compiled against.
EDITORUTIL_EXPORT QString version();

} // namespace EditorUtil
