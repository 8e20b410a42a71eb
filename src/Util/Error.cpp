#include "Error.h"

#include <Util/Interfaces/Core.h>

#include <QCoreApplication>

namespace Error {

namespace {

// How a code is answered in one context.
enum class Kind : std::uint8_t
{
    Fallback,      // the context's own fallback (last row of the table)
    CommonUnknown, // "An unknown error has occurred" [Common]
    Codec,         // codec availability, worded for free or paid editions
    Text,          // a message of its own
};

struct Cell
{
    Kind kind;
    const char* text;    // for Kind::Text
    const char* context; // translation context of the text
};

constexpr int kContexts = 5;

struct Row
{
    std::int32_t code;
    Cell cells[kContexts];
};

const char kGeneral[] = "QObject";
const char kCommon[] = "Common";
const char kExport[] = "Export";
const char kCapture[] = "Capture";
const char kAnalyze[] = "Analyze";
const char kStabilization[] = "Stabilization";
const char kFreezeFrame[] = "FreezeFrame";
const char* const kContextNames[kContexts] = {kExport, kCapture, kAnalyze, kStabilization, kFreezeFrame};

const char kInvalidPreset[] = "Conversion error. Invalid preset settings: unsupported codec for specified format.";
const char kIntelChip[] = "Can't export project because of problem with the Intel graphics chip. Try disabling Intel "
                          "hardware acceleration in the Preferences.";
const char kFrameSize[] = "The frame size is not supported by selected codec encoding implementation.";
const char kOutputLicense[] =
    "The project cannot be exported because the output codec licenses have not been activated.";
const char kInputLicense[] =
    "Some of the files could not been opened because the codec licenses have not been activated.";
const char kNoSpace[] = "No more space left on device";
const char kCopyProtected[] = "Sorry, this file is copyright protected and cannot be converted.";
const char kCannotCreate[] = "Can not create output file";
const char kConversionMemory[] =
    "Conversion error. Out of memory. Try reducing the width and height for the output file.";
const char kOutOfMemory[] = "Out of memory";
const char kCorrupted[] = "The input file is corrupted or missing from the specified location.";
const char kStabilizationPath[] =
    "Path to stabilized files could not be used. Please select a different directory in Preferences.";
const char kUnknown[] = "An unknown error has occurred";
const char kCaptureUnknown[] = "An unknown error has occured";
const char kUnknownWithContact[] = "An unknown error has occurred. %1";
const char kContact[] = "Please contact us at <a href=\"%1\">%2</a> to get assistance.";
const char kCodecUnsupported[] = "The chosen codec is not supported.";
const char kCodecPaid[] = "Unfortunately, the chosen codec is available only in the paid version. Please follow this "
                          "<a href='%1'>link</a> to buy the full version or use the presets with a free MJPEG codec.";

constexpr Cell F{Kind::Fallback, nullptr, nullptr};
constexpr Cell U{Kind::CommonUnknown, nullptr, nullptr};
constexpr Cell codec(const char* context) { return {Kind::Codec, nullptr, context}; }
constexpr Cell text(const char* message, const char* context) { return {Kind::Text, message, context}; }

// Columns: Export, Capture, Analyze, Stabilization, FreezeFrame.
const Row kTable[] = {
    {6, {text(kInvalidPreset, kGeneral), F, F, F, F}},
    {8, {U, F, F, F, F}},
    {10, {codec(kExport), U, F, U, U}},
    {11, {codec(kExport), U, codec(kAnalyze), U, U}},
    {12, {text(kIntelChip, kExport), F, F, F, F}},
    {14, {codec(kExport), U, F, U, U}},
    {15, {text(kFrameSize, kExport), F, F, text(kFrameSize, kStabilization), F}},
    {19, {text(kOutputLicense, kExport), U, F, text(kOutputLicense, kStabilization), U}},
    {20, {text(kInputLicense, kExport), F, text(kInputLicense, kAnalyze), F, F}},
    {22,
     {text(kNoSpace, kGeneral), text(kNoSpace, kCapture), text(kNoSpace, kAnalyze), text(kNoSpace, kStabilization),
      text(kNoSpace, kFreezeFrame)}},
    {26, {text(kCopyProtected, kGeneral), F, text(kCopyProtected, kAnalyze), text(kCopyProtected, kStabilization), F}},
    {33,
     {text(kCannotCreate, kExport), text(kCannotCreate, kCapture), F, text(kCannotCreate, kStabilization),
      text(kCannotCreate, kFreezeFrame)}},
    {34,
     {text(kConversionMemory, kGeneral), text(kOutOfMemory, kCapture), text(kOutOfMemory, kAnalyze),
      text(kOutOfMemory, kStabilization), text(kOutOfMemory, kFreezeFrame)}},
    {35,
     {text(kConversionMemory, kGeneral), F, text(kOutOfMemory, kAnalyze), text(kOutOfMemory, kStabilization),
      text(kOutOfMemory, kFreezeFrame)}},
    {36, {text(kCorrupted, kExport), F, text(kCorrupted, kAnalyze), text(kCorrupted, kStabilization), F}},
    {43, {F, F, F, text(kStabilizationPath, kStabilization), F}},
};

QString translate(const char* context, const char* text) { return QCoreApplication::translate(context, text); }

QString contactSentence()
{
    const QString link =
        QString::fromStdString(Dravik::App::Application::GetCustomizationManager().GetSupportMailLink());
    QString shown = link;
    shown.remove(QStringLiteral("mailto:"), Qt::CaseSensitive);
    return translate(kCommon, kContact).arg(link, shown);
}

QString codecAvailability(const char* context)
{
    const auto& customization = Dravik::App::Application::GetCustomizationManager();
    if (!customization.HasPaidEdition())
        return translate(context, kCodecUnsupported);
    return translate(context, kCodecPaid)
        .arg(QString::fromStdString(
            customization.GetPurchaseLink(Dravik::App::CustomizationManager::FullVersionLinkId)));
}

QString fallback(Context context)
{
    switch (context) {
    case Export:
        return QString();
    case Capture:
        return translate(kCapture, kCaptureUnknown);
    default:
        return translate(kContextNames[context], kUnknownWithContact).arg(contactSentence());
    }
}

} // namespace

namespace {

QString describe(const Dravik::Proc::ProcessingError& error, Context context)
{
    if (context < Export || context > FreezeFrame)
        return translate(kCommon, kUnknown);
    const std::int32_t code = error.GetCode();
    Cell cell = F;
    for (const Row& row : kTable) {
        if (row.code == code) {
            cell = row.cells[context];
            break;
        }
    }
    switch (cell.kind) {
    case Kind::CommonUnknown:
        return translate(kCommon, kUnknown);
    case Kind::Codec:
        return codecAvailability(cell.context);
    case Kind::Text:
        return translate(cell.context, cell.text);
    case Kind::Fallback:
        break;
    }
    return fallback(context);
}

} // namespace

Types::String describeTranscodingError(const Dravik::Proc::ProcessingError& error, Context context)
{
    return Types::String(describe(error, context));
}

} // namespace Error
