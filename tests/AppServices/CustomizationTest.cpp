#include <Util/ActionStatistics.h>
#include <Util/Customization.h>

#include <EditorSettings/Settings.h>
#include <TempSettings.h>
#include <TestSupport.h>

#include <gtest/gtest.h>

#include <QAction>
#include <QSignalSpy>

namespace {

QString S(const char* text) { return QString::fromUtf8(text); }
using Option = Customization::Option;

struct StoredCase
{
    const char* name;
    Option option;
    QVariant stored;
    QVariant read;
    bool logged;
};

} // namespace

TEST(CustomizationTest, StoredValuesAreReadOrFallBackToTheDefaultWithALogLine)
{
    const StoredCase cases[] = {
        {"nothing stored", Option::Theme, QVariant(), S("light"), false},
        {"dark theme", Option::Theme, S("dark"), S("dark"), false},
        {"unknown theme", Option::Theme, S("purple"), S("light"), true},
        {"colour name", Option::AccentColor, S("red"), S("#ff0000"), false},
        {"no colour", Option::AccentColor, S("not a colour"), S("#2a82da"), true},
        {"image duration", Option::ImageDuration, S("250"), 250, false},
        {"negative duration", Option::ImageDuration, S("-5"), 5000, true},
        {"transition too long", Option::TransitionDuration, 70000, 1000, true},
        {"snap to playhead", Option::SnapMode, S("itemsAndPlayhead"), S("itemsAndPlayhead"), false},
        {"snap distance not a number", Option::SnapDistance, S("abc"), 10, true},
    };
    for (const StoredCase& c : cases) {
        SCOPED_TRACE(c.name);
        TestSupport::TempSettings settings;
        if (c.stored.isValid())
            Settings::setCustomizationValue(Customization::name(c.option), c.stored);
        TestSupport::LogCapture log;
        Customization customization;
        EXPECT_EQ(customization.value(c.option).toString(), c.read.toString());
        EXPECT_EQ(log.containsError("Customization::reload"), c.logged);
    }
}

TEST(CustomizationTest, ChangesAreValidatedStoredAndSignalledOnce)
{
    TestSupport::TempSettings settings;
    Customization customization;
    QSignalSpy changed(&customization, &Customization::changed);

    EXPECT_TRUE(customization.setTheme(Customization::Theme::Dark));
    EXPECT_TRUE(customization.setTheme(Customization::Theme::Dark));
    ASSERT_EQ(changed.count(), 1);
    EXPECT_EQ(changed.takeFirst().at(0).value<Option>(), Option::Theme);
    EXPECT_EQ(Settings::customizationValue(S("theme")).toString(), S("dark"));

    TestSupport::LogCapture log;
    EXPECT_FALSE(customization.setValue(Option::ImageDuration, 50));
    EXPECT_FALSE(customization.setAccentColor(QColor()));
    EXPECT_TRUE(log.containsError("Customization::setValue"));
    EXPECT_EQ(changed.count(), 0);
    EXPECT_EQ(customization.durationMs(Option::ImageDuration), 5000);

    EXPECT_TRUE(customization.setValue(Option::SnapDistance, S("25")));
    EXPECT_EQ(Customization().snapDistance(), 25); // what the next start reads

    Settings::setCustomizationValue(S("snapMode"), S("off"));
    customization.reload();
    EXPECT_EQ(customization.snapMode(), Customization::Snap::Off);
    ASSERT_EQ(changed.count(), 2);
    EXPECT_EQ(changed.at(1).at(0).value<Option>(), Option::SnapMode);

    changed.clear();
    customization.restoreDefaults();
    EXPECT_EQ(changed.count(), 3); // theme, snap distance, snap mode
    EXPECT_EQ(customization.theme(), Customization::Theme::Light);
    EXPECT_FALSE(Settings::customizationValue(S("theme")).isValid());
}

TEST(ActionStatisticsTest, TaggedTriggersAreCountedAndSurviveARestart)
{
    TestSupport::TempSettings settings;
    QAction cut(S("Cut")), split(S("Split")), untagged(S("Help"));
    {
        ActionStatistics statistics;
        QSignalSpy recorded(&statistics, &ActionStatistics::recorded);
        statistics.tag(&cut, S("cut"));
        statistics.tag(&split, S("split"));
        for (int i = 0; i < 3; ++i)
            cut.trigger();
        split.trigger();
        untagged.trigger();
        EXPECT_EQ(recorded.count(), 4);
        EXPECT_EQ(recorded.last(), QList<QVariant>({S("split"), 1}));
        EXPECT_EQ(ActionStatistics::tagOf(&cut), S("cut"));

        statistics.tag(&split, S("razor")); // retagged: counts go to the new tag
        split.trigger();
        statistics.tag(&cut, QString()); // untagged: no longer counted
        cut.trigger();
        EXPECT_EQ(recorded.count(), 5);
        EXPECT_EQ(statistics.mostUsed(2), (QList<QPair<QString, int>>{{S("cut"), 3}, {S("razor"), 1}}));
    }
    Settings::setActionUsageCounts([] {
        QVariantMap m = Settings::actionUsageCounts();
        m.insert(S("broken"), S("many"));
        return m;
    }());
    TestSupport::LogCapture log;
    ActionStatistics restarted;
    EXPECT_EQ(restarted.mostUsed(), (QList<QPair<QString, int>>{{S("cut"), 3}, {S("razor"), 1}, {S("split"), 1}}));
    EXPECT_TRUE(log.containsError("\"broken\" is invalid"));
    restarted.tag(nullptr, S("x"));
    EXPECT_TRUE(log.containsError("ActionStatistics::tag"));
    restarted.clear();
    EXPECT_TRUE(ActionStatistics().mostUsed().isEmpty());
}
