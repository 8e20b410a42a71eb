#include <Util/Error.h>

#include <Core/Application.h>
#include <Core/ProcessingError.h>

#include <QCoreApplication>
#include <QTranslator>

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace {

using TestSupport::S;

QString describe(int code, int context)
{
    return Error::describeTranscodingError(Dravik::Proc::ProcessingError(code, "", "", "", "", 0),
                                           static_cast<Error::Context>(context))
        .toQString();
}

const char kUnknown[] = "An unknown error has occurred";
const char kCapture[] = "An unknown error has occured";
const char kContact[] = "An unknown error has occurred. Please contact us at <a href=\"mailto:help@video.test\">"
                        "help@video.test</a> to get assistance.";
const char kCodecFree[] = "The chosen codec is not supported.";
const char kOom[] = "Out of memory";
const char kConversionOom[] = "Conversion error. Out of memory. Try reducing the width and height for the output file.";

} // namespace

class ErrorTable : public testing::Test
{
protected:
    void SetUp() override
    {
        manager = std::make_shared<Dravik::App::CustomizationManager>();
        manager->SetSupportMailLink("mailto:help@video.test");
        manager->SetPurchaseLink(59, "https://shop.test/upgrade");
        Dravik::App::Application::SetCustomizationManager(manager);
    }
    void TearDown() override { Dravik::App::Application::SetCustomizationManager(nullptr); }

    std::shared_ptr<Dravik::App::CustomizationManager> manager;
};

struct Row
{
    int code;
    const char* cells[5]; // Export, Capture, Analyze, Stabilization, FreezeFrame
};

// The whole table as the user reads it, irregularities included.
const Row kRows[] = {
    {6,
     {"Conversion error. Invalid preset settings: unsupported codec for specified format.", kCapture, kContact,
      kContact, kContact}},
    {8, {kUnknown, kCapture, kContact, kContact, kContact}},
    {10, {kCodecFree, kUnknown, kContact, kUnknown, kUnknown}},
    {11, {kCodecFree, kUnknown, kCodecFree, kUnknown, kUnknown}},
    {12,
     {"Can't export project because of problem with the Intel graphics chip. Try disabling Intel hardware "
      "acceleration in the Preferences.",
      kCapture, kContact, kContact, kContact}},
    {14, {kCodecFree, kUnknown, kContact, kUnknown, kUnknown}},
    {15,
     {"The frame size is not supported by selected codec encoding implementation.", kCapture, kContact,
      "The frame size is not supported by selected codec encoding implementation.", kContact}},
    {19,
     {"The project cannot be exported because the output codec licenses have not been activated.", kUnknown, kContact,
      "The project cannot be exported because the output codec licenses have not been activated.", kUnknown}},
    {20,
     {"Some of the files could not been opened because the codec licenses have not been activated.", kCapture,
      "Some of the files could not been opened because the codec licenses have not been activated.", kContact,
      kContact}},
    {22,
     {"No more space left on device", "No more space left on device", "No more space left on device",
      "No more space left on device", "No more space left on device"}},
    {26,
     {"Sorry, this file is copyright protected and cannot be converted.", kCapture,
      "Sorry, this file is copyright protected and cannot be converted.",
      "Sorry, this file is copyright protected and cannot be converted.", kContact}},
    {33,
     {"Can not create output file", "Can not create output file", kContact, "Can not create output file",
      "Can not create output file"}},
    {34, {kConversionOom, kOom, kOom, kOom, kOom}},
    {35, {kConversionOom, kCapture, kOom, kOom, kOom}},
    {36,
     {"The input file is corrupted or missing from the specified location.", kCapture,
      "The input file is corrupted or missing from the specified location.",
      "The input file is corrupted or missing from the specified location.", kContact}},
    {43,
     {"", kCapture, kContact,
      "Path to stabilized files could not be used. Please select a different directory in Preferences.", kContact}},
    {99, {"", kCapture, kContact, kContact, kContact}},
    {0, {"", kCapture, kContact, kContact, kContact}},
    {-5, {"", kCapture, kContact, kContact, kContact}},
};

TEST_F(ErrorTable, EveryCodeInEveryContext)
{
    for (const Row& row : kRows)
        for (int context = 0; context < 5; ++context)
            EXPECT_EQ(describe(row.code, context), S(row.cells[context]))
                << "code " << row.code << ", context " << context;
}

TEST_F(ErrorTable, ContextsOutsideTheEnumerationGiveTheCommonUnknownText)
{
    for (int code : {6, 22, 99})
        for (int context : {-1, 5, 7})
            EXPECT_EQ(describe(code, context), S(kUnknown)) << code << " " << context;
}

TEST_F(ErrorTable, PaidEditionsLinkToThePurchasePage)
{
    manager->SetPaidEdition(true);
    const QString paid = S("Unfortunately, the chosen codec is available only in the paid version. Please follow this "
                           "<a href='https://shop.test/upgrade'>link</a> to buy the full version or use the presets "
                           "with a free MJPEG codec.");
    for (int code : {10, 11, 14})
        EXPECT_EQ(describe(code, Error::Export), paid) << code;
    EXPECT_EQ(describe(11, Error::Analyze), paid);
    EXPECT_EQ(describe(10, Error::Analyze), S(kContact));
    EXPECT_EQ(describe(10, Error::Capture), S(kUnknown));
}

TEST_F(ErrorTable, TheContactSentenceFollowsTheSupportAddress)
{
    manager->SetSupportMailLink("mailto:care@editor.test?subject=mailto:");
    EXPECT_EQ(describe(99, Error::FreezeFrame),
              S("An unknown error has occurred. Please contact us at <a "
                "href=\"mailto:care@editor.test?subject=mailto:\">care@editor.test?subject=</a> to get assistance."));
}

namespace {

// Marks every text with the translation context it was looked up in: "[Export]Can not...".
class ContextMarker : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char* context, const char* sourceText, const char*, int) const override
    {
        return QLatin1Char('[') + QString::fromUtf8(context) + QLatin1Char(']') + QString::fromUtf8(sourceText);
    }
};

} // namespace

// Each message is looked up in the context its operation is translated in: "g" the general
// context, "c" Common, "e" Export, "." the column's own context, "-" no text at all.
TEST_F(ErrorTable, EachMessageIsTranslatedInItsContext)
{
    const struct
    {
        int code;
        const char* contexts; // Export, Capture, Analyze, Stabilization, FreezeFrame
    } rows[] = {{6, "g...."},  {8, "c...."},  {10, "ec.cc"}, {11, "ec.cc"}, {12, "e...."}, {14, "ec.cc"},
                {15, "e...."}, {19, "ec..c"}, {20, "e...."}, {22, "g...."}, {26, "g...."}, {33, "e...."},
                {34, "g...."}, {35, "g...."}, {36, "e...."}, {43, "-...."}, {99, "-...."}};
    const char* const own[] = {"Export", "Capture", "Analyze", "Stabilization", "FreezeFrame"};
    ContextMarker marker;
    QCoreApplication::installTranslator(&marker);
    for (const auto& row : rows) {
        for (int context = 0; context < 5; ++context) {
            const QString text = describe(row.code, context);
            const char mark = row.contexts[context];
            const QString expected = mark == 'g'   ? S("[QObject]")
                                     : mark == 'c' ? S("[Common]")
                                     : mark == 'e' ? S("[Export]")
                                     : mark == '.' ? QString(QLatin1Char('[') + S(own[context]) + QLatin1Char(']'))
                                                   : QString();
            if (expected.isEmpty()) {
                EXPECT_EQ(text, QString()) << "code " << row.code << ", context " << context;
            } else {
                EXPECT_TRUE(text.startsWith(expected))
                    << "code " << row.code << ", context " << context << ": " << text.toStdString();
            }
            if (text.contains(S("Please contact us"))) {
                EXPECT_TRUE(text.contains(S("[Common]Please contact us"))) << text.toStdString();
            }
        }
    }
    EXPECT_EQ(describe(6, 7), S("[Common]An unknown error has occurred"));
    QCoreApplication::removeTranslator(&marker);
}
