#include <Util/Style.h>

#include <TempSettings.h>
#include <TestSupport.h>

#include <gtest/gtest.h>

#include <QApplication>

namespace {
QString S(const char* text) { return QString::fromUtf8(text); }
} // namespace

TEST(StyleTest, VariablesAreSubstitutedAndAnUnknownOneIsNamedWithItsLine)
{
    const QMap<QString, QString> variables{{S("text"), S("#000000")}, {S("accent"), S("#2a82da")}};
    struct Case
    {
        const char* name;
        const char* sheet;
        const char* result;
        const char* error;
    };
    const Case cases[] = {
        {"every variable", "QLabel { color: @text; border: 1px solid @accent; }",
         "QLabel { color: #000000; border: 1px solid #2a82da; }", ""},
        {"no variable name after @", "QLabel { image: url(:/play@2x.png); }", "QLabel { image: url(:/play@2x.png); }",
         ""},
        {"unknown variable", "QLabel { color: @text; }\nQPushButton { color: @shade; }", "",
         "Unknown style variable \"@shade\" on line 2"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TestSupport::LogCapture log;
        QString error = S("stale");
        EXPECT_EQ(Style::substitute(S(c.sheet), variables, &error), S(c.result));
        EXPECT_EQ(error, S(c.error));
        EXPECT_EQ(log.containsError("Style::substitute"), *c.error != '\0');
    }
}

TEST(StyleTest, TheBaseSheetIsAppliedOnceWithTheThemesColours)
{
    TestSupport::TempSettings settings;
    const QString before = qApp->styleSheet();
    Customization customization;
    customization.setTheme(Customization::Theme::Dark);

    EXPECT_TRUE(Style::apply(Style::baseSheet(), customization));
    EXPECT_TRUE(qApp->styleSheet().contains(S("background-color: #2b2b2b")));
    EXPECT_FALSE(qApp->styleSheet().contains(QLatin1Char('@')));
    EXPECT_FALSE(Style::apply(Style::baseSheet(), customization)); // the same sheet: not set again

    customization.setAccentColor(QColor(S("#ffcc00")));
    EXPECT_TRUE(Style::apply(Style::baseSheet(), customization));
    EXPECT_TRUE(qApp->styleSheet().contains(S("background-color: #ffcc00; color: #000000")));

    const QString applied = qApp->styleSheet();
    QString error;
    EXPECT_FALSE(Style::apply(S("QWidget { color: @nothing; }"), customization, &error));
    EXPECT_EQ(error, S("Unknown style variable \"@nothing\" on line 1"));
    EXPECT_EQ(qApp->styleSheet(), applied);
    qApp->setStyleSheet(before);
}
