#pragma once

#include <Util/EditorUtilExport.h>

#include <QLocale>
#include <QString>

// The library's own translation catalogue (editorutil_<language>.qm), looked for in:
//   1. the folder given to setCatalogueFolder(), else the environment variable
//      EDITORUTIL_TRANSLATIONS_DIR;
//   2. share/EditorUtil/translations beside the program (<program dir>/../share/...);
//   3. the build tree's and the install prefix's share/EditorUtil/translations;
//   4. EditorUtil/translations in the generic data folders.
// GUI thread only.
namespace Translations {

// Installs the catalogue for `locale`'s language in place of the one installed before; the C
// locale, English or a language without a catalogue leave the original texts. True when a
// catalogue was installed.
EDITORUTIL_EXPORT bool install(const QLocale& locale);
// The file that install() would load for `locale`; empty when there is none.
EDITORUTIL_EXPORT QString catalogueFile(const QLocale& locale);
EDITORUTIL_EXPORT void setCatalogueFolder(const QString& folder);

} // namespace Translations
