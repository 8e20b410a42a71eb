#include <Util/Dialog/FileInfoDialog.h>
#include <Util/Error.h>
#include <Util/Format.h>
#include <Util/Translations.h>

#include <Util/Interfaces/Core.h>
#include <Util/Interfaces/EditorModel.h>

#include <gtest/gtest.h>

#include <functional>

namespace {
QString S(const char* text) { return QString::fromUtf8(text); }
} // namespace

// What the user reads with the German catalogue, and with the C locale again.
TEST(TranslationsTest, TheGermanCatalogueChangesWhatTheUserReadsAndTheCLocaleRestoresIt)
{
    Translations::setCatalogueFolder(S(EDITORUTIL_TEST_BINARY_DIR "/share/EditorUtil/translations"));
    struct Text
    {
        const char* name;
        std::function<QString()> read;
        const char* english;
        const char* german;
    };
    const Text texts[] = {
        {"dialog title",
         [] {
             Media::File file(Types::String("/media/beach.mpg"));
             return Dialog::FileInfoDialog(file).windowTitle();
         },
         "File information", "Dateiinformationen"},
        {"error description",
         [] { return Error::describeTranscodingError(Dravik::Proc::ProcessingError(22), Error::Capture).toQString(); },
         "No more space left on device", "Kein freier Speicherplatz mehr auf dem Gerät"},
        {"formatted size",
         [] {
             Dravik::Conf::FrameInfo frame;
             frame.width = 1920;
             frame.height = 1080;
             Dravik::Conf::SampleInfo samples;
             samples.sampleRate = 48000;
             samples.channelLayout = Dravik::Conf::ChannelLayout::Mono;
             return Format::projectSettings(frame, boost::rational<long long>(30, 1), samples);
         },
         "1920x1080 16:9 30 FPS, 48000 Mono", "1920x1080 16:9 30 B/s, 48000 Mono"},
    };
    ASSERT_TRUE(Translations::install(QLocale(QLocale::German, QLocale::Germany)));
    for (const Text& t : texts) {
        SCOPED_TRACE(t.name);
        EXPECT_EQ(t.read(), S(t.german));
    }
    EXPECT_FALSE(Translations::install(QLocale::c()));
    for (const Text& t : texts) {
        SCOPED_TRACE(t.name);
        EXPECT_EQ(t.read(), S(t.english));
    }
    Translations::setCatalogueFolder(QString());
}
