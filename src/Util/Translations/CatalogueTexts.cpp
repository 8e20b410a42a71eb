// Texts whose translation context lupdate cannot see where they are used: error messages
// kept in a table and looked up per context, channel layout names of the core library, and
// the dialog texts that go through a helper with the context "Dialog". Listed here only so
// that the catalogues hold them under the context the library asks for at run time.
#include <QtGlobal>

namespace {

[[maybe_unused]] const char* const kTexts[] = {
    QT_TRANSLATE_NOOP("QObject", "Conversion error. Invalid preset settings: unsupported codec for specified format."),
    QT_TRANSLATE_NOOP("QObject", "No more space left on device"),
    QT_TRANSLATE_NOOP("QObject", "Sorry, this file is copyright protected and cannot be converted."),
    QT_TRANSLATE_NOOP("QObject",
                      "Conversion error. Out of memory. Try reducing the width and height for the output file."),
    QT_TRANSLATE_NOOP("Common", "An unknown error has occurred"),
    QT_TRANSLATE_NOOP("Common", "Please contact us at <a href=\"%1\">%2</a> to get assistance."),
    QT_TRANSLATE_NOOP("Export",
                      "Can't export project because of problem with the Intel graphics chip. Try disabling Intel "
                      "hardware acceleration in the Preferences."),
    QT_TRANSLATE_NOOP("Export", "The frame size is not supported by selected codec encoding implementation."),
    QT_TRANSLATE_NOOP("Export",
                      "The project cannot be exported because the output codec licenses have not been activated."),
    QT_TRANSLATE_NOOP("Export",
                      "Some of the files could not been opened because the codec licenses have not been activated."),
    QT_TRANSLATE_NOOP("Export", "Can not create output file"),
    QT_TRANSLATE_NOOP("Export", "The input file is corrupted or missing from the specified location."),
    QT_TRANSLATE_NOOP("Export", "The chosen codec is not supported."),
    QT_TRANSLATE_NOOP("Export",
                      "Unfortunately, the chosen codec is available only in the paid version. Please follow this "
                      "<a href='%1'>link</a> to buy the full version or use the presets with a free MJPEG codec."),
    QT_TRANSLATE_NOOP("Capture", "No more space left on device"),
    QT_TRANSLATE_NOOP("Capture", "Can not create output file"),
    QT_TRANSLATE_NOOP("Capture", "Out of memory"),
    QT_TRANSLATE_NOOP("Capture", "An unknown error has occured"),
    QT_TRANSLATE_NOOP("Analyze", "The chosen codec is not supported."),
    QT_TRANSLATE_NOOP("Analyze",
                      "Unfortunately, the chosen codec is available only in the paid version. Please follow this "
                      "<a href='%1'>link</a> to buy the full version or use the presets with a free MJPEG codec."),
    QT_TRANSLATE_NOOP("Analyze",
                      "Some of the files could not been opened because the codec licenses have not been activated."),
    QT_TRANSLATE_NOOP("Analyze", "No more space left on device"),
    QT_TRANSLATE_NOOP("Analyze", "Sorry, this file is copyright protected and cannot be converted."),
    QT_TRANSLATE_NOOP("Analyze", "Out of memory"),
    QT_TRANSLATE_NOOP("Analyze", "The input file is corrupted or missing from the specified location."),
    QT_TRANSLATE_NOOP("Analyze", "An unknown error has occurred. %1"),
    QT_TRANSLATE_NOOP("Stabilization", "The frame size is not supported by selected codec encoding implementation."),
    QT_TRANSLATE_NOOP("Stabilization",
                      "The project cannot be exported because the output codec licenses have not been activated."),
    QT_TRANSLATE_NOOP("Stabilization", "No more space left on device"),
    QT_TRANSLATE_NOOP("Stabilization", "Sorry, this file is copyright protected and cannot be converted."),
    QT_TRANSLATE_NOOP("Stabilization", "Can not create output file"),
    QT_TRANSLATE_NOOP("Stabilization", "Out of memory"),
    QT_TRANSLATE_NOOP("Stabilization", "The input file is corrupted or missing from the specified location."),
    QT_TRANSLATE_NOOP(
        "Stabilization",
        "Path to stabilized files could not be used. Please select a different directory in Preferences."),
    QT_TRANSLATE_NOOP("Stabilization", "An unknown error has occurred. %1"),
    QT_TRANSLATE_NOOP("FreezeFrame", "No more space left on device"),
    QT_TRANSLATE_NOOP("FreezeFrame", "Can not create output file"),
    QT_TRANSLATE_NOOP("FreezeFrame", "Out of memory"),
    QT_TRANSLATE_NOOP("FreezeFrame", "An unknown error has occurred. %1"),
    QT_TRANSLATE_NOOP("core", "Mono"),
    QT_TRANSLATE_NOOP("core", "Stereo"),
    QT_TRANSLATE_NOOP("core", "Quad"),
    QT_TRANSLATE_NOOP("core", "Unknown"),
    QT_TRANSLATE_NOOP("Dialog", "Save project"),
    QT_TRANSLATE_NOOP("Dialog", "Warning! Current project is not saved. Save project before operation?"),
    QT_TRANSLATE_NOOP("Dialog", "Don't save"),
    QT_TRANSLATE_NOOP("Dialog", "File exists"),
    QT_TRANSLATE_NOOP("Dialog", "File \"%1\" already exists. Overwrite it?"),
    QT_TRANSLATE_NOOP("Dialog", "Folder exist"),
    QT_TRANSLATE_NOOP("Dialog", "Folder \"%1\" already exists. Overwrite it?"),
    QT_TRANSLATE_NOOP("Dialog", "Recover editing session"),
    QT_TRANSLATE_NOOP("Dialog", "Your last editing session ended unexpectedly. Do you want to restore it?"),
    QT_TRANSLATE_NOOP("Dialog", "Can't open the file"),
    QT_TRANSLATE_NOOP("Dialog",
                      "Could not find the file %1 at the specified location: %2. The file may have been moved or "
                      "deleted. Click Browse to find the file at its new location."),
    QT_TRANSLATE_NOOP("Dialog", "Browse"),
    QT_TRANSLATE_NOOP("Dialog", "Skip"),
    QT_TRANSLATE_NOOP("Dialog", "Abort"),
    QT_TRANSLATE_NOOP("Dialog", "Some of the files can't be opened."),
    QT_TRANSLATE_NOOP("Dialog", "<br>Please choose:<br>Remove unopened files from the project or keep them?"),
    QT_TRANSLATE_NOOP("Dialog", "Can't open files"),
    QT_TRANSLATE_NOOP("Dialog", "Keep"),
    QT_TRANSLATE_NOOP("Dialog", "Remove"),
    QT_TRANSLATE_NOOP("Dialog", "Critical error"),
    QT_TRANSLATE_NOOP("Dialog",
                      "Unknown problem has been detected.<br><br>Please contact us at <a href=\"%2\">%3</a> to solve "
                      "this problem."),
};

} // namespace
