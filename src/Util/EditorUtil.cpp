#include "EditorUtil.h"

namespace EditorUtil {

QString version() { return QStringLiteral(EDITORUTIL_VERSION_STRING); }

} // namespace EditorUtil
