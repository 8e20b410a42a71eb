#include <Util/CommandProvider.h>

#include <EditorModel/GlobalObjects.h>
#include <PubSub/PubSub.h>

#include <gtest/gtest.h>

namespace {

QString S(const char* text) { return QString::fromUtf8(text); }

// Everything published to Command::globalObject(), in order, as "Name argument".
class CommandLog : public PubSub::Subscriber<Command::OpenProject>,
                   public PubSub::Subscriber<Command::AddFile>,
                   public PubSub::Subscriber<Command::StartSlideshow>,
                   public PubSub::Subscriber<Command::ShowMainWindow>,
                   public PubSub::Subscriber<Command::HideMainWindow>,
                   public PubSub::Subscriber<Command::ShowAddMediaCategory>,
                   public PubSub::Subscriber<Command::ShowToolsPage>
{
public:
    CommandLog() { subscribe(Command::globalObject()); }

    void notify(const Command::OpenProject& m) override { log << S("OpenProject ") + m.path().toQString(); }
    void notify(const Command::AddFile& m) override { log << S("AddFile ") + m.path().toQString(); }
    void notify(const Command::StartSlideshow&) override { log << S("StartSlideshow"); }
    void notify(const Command::ShowMainWindow&) override { log << S("ShowMainWindow"); }
    void notify(const Command::HideMainWindow&) override { log << S("HideMainWindow"); }
    void notify(const Command::ShowAddMediaCategory& m) override
    {
        log << S("ShowAddMediaCategory ") + m.category().toQString();
    }
    void notify(const Command::ShowToolsPage&) override { log << S("ShowToolsPage"); }

    QStringList log;
};

class Application : public PubSub::Publisher<AppEvents::StartupCompleted>
{
public:
    void startupCompleted() { publish(AppEvents::StartupCompleted()); }
};

QStringList commandLine(std::initializer_list<const char*> arguments)
{
    QStringList list{S("editor")};
    for (const char* a : arguments)
        list << S(a);
    return list;
}

} // namespace

class CommandProviderTest : public testing::Test
{
protected:
    CommandLog commands;
    Application application;
};

TEST_F(CommandProviderTest, OnlyTheFirstProjectOfTheCommandLineIsOpened)
{
    CommandProvider provider(commandLine({"/p/first.dscproj", "/p/second.dscproj", "/v/clip.mp4"}));
    EXPECT_TRUE(provider.hasPendingFiles());
    EXPECT_TRUE(commands.log.isEmpty());
    application.startupCompleted();
    EXPECT_EQ(commands.log, QStringList{S("OpenProject /p/first.dscproj")});
    EXPECT_FALSE(provider.hasPendingFiles());
}

TEST_F(CommandProviderTest, MediaFilesOfTheCommandLineAreNotKept)
{
    CommandProvider provider(commandLine({"/v/clip.mp4"}));
    EXPECT_FALSE(provider.hasPendingFiles());
    application.startupCompleted();
    EXPECT_TRUE(commands.log.isEmpty());
}

TEST_F(CommandProviderTest, RecordedRequestsArePublishedInTheFixedOrder)
{
    CommandProvider provider(commandLine({"--mode", "slideshow"}));
    provider.showAddMediaCategory(S("music"));
    provider.hideMainWindow();
    provider.showMainWindow();
    provider.handleFile(S("/v/b.mp4"));
    provider.handleFile(S("/v/a.wav"));
    EXPECT_TRUE(provider.hasPendingFiles());
    EXPECT_TRUE(commands.log.isEmpty());

    application.startupCompleted();
    EXPECT_EQ(commands.log, (QStringList{S("StartSlideshow"), S("AddFile /v/b.mp4"), S("AddFile /v/a.wav"),
                                         S("ShowMainWindow"), S("HideMainWindow"), S("ShowAddMediaCategory music")}));
}

TEST_F(CommandProviderTest, ALaterCategoryReplacesAnEarlierOneAndWinsOverTheToolsPage)
{
    CommandProvider provider(commandLine({}));
    provider.showToolsPage();
    provider.showAddMediaCategory(S("video"));
    provider.showAddMediaCategory(S("titles"));
    application.startupCompleted();
    EXPECT_EQ(commands.log, QStringList{S("ShowAddMediaCategory titles")});
}

TEST_F(CommandProviderTest, AWaitingToolsPageIsShownWithoutACategory)
{
    CommandProvider provider(commandLine({}));
    provider.showToolsPage();
    application.startupCompleted();
    EXPECT_EQ(commands.log, QStringList{S("ShowToolsPage")});
}

TEST_F(CommandProviderTest, SlideshowComesBeforeTheProject)
{
    CommandProvider provider(commandLine({"--mode=slideshow", "/p/show.dscproj"}));
    application.startupCompleted();
    EXPECT_EQ(commands.log, (QStringList{S("StartSlideshow"), S("OpenProject /p/show.dscproj")}));
}

TEST_F(CommandProviderTest, OtherModesStartNoSlideshow)
{
    for (const char* mode : {"normal", "Slideshow", "kiosk"}) {
        commands.log.clear();
        CommandProvider provider(commandLine({"--mode", mode}));
        application.startupCompleted();
        EXPECT_TRUE(commands.log.isEmpty()) << mode;
    }
}

TEST_F(CommandProviderTest, AfterStartUpRequestsArePublishedAtOnce)
{
    CommandProvider provider(commandLine({}));
    application.startupCompleted();
    provider.showMainWindow();
    provider.showToolsPage();
    provider.showAddMediaCategory(S("audio"));
    provider.hideMainWindow();
    provider.handleFile(S("/v/a.mp4"));
    EXPECT_FALSE(provider.hasPendingFiles());
    EXPECT_EQ(commands.log, (QStringList{S("ShowMainWindow"), S("ShowToolsPage"), S("ShowAddMediaCategory audio"),
                                         S("HideMainWindow"), S("AddFile /v/a.mp4")}));
}

TEST_F(CommandProviderTest, StartUpHappensOnce)
{
    CommandProvider provider(commandLine({"/p/a.dscproj"}));
    provider.showMainWindow();
    application.startupCompleted();
    application.startupCompleted();
    EXPECT_EQ(commands.log, (QStringList{S("OpenProject /p/a.dscproj"), S("ShowMainWindow")}));
}

TEST_F(CommandProviderTest, RecordedFilesWithAProjectOpenOnlyThatProject)
{
    CommandProvider provider(commandLine({}));
    provider.handleFile(S("/v/a.mp4"));
    provider.handleFile(S("/p/late.dscproj"));
    provider.handleFile(S("/p/later.dscproj"));
    application.startupCompleted();
    EXPECT_EQ(commands.log, QStringList{S("OpenProject /p/late.dscproj")});
}

TEST_F(CommandProviderTest, ADestroyedProviderIgnoresTheStartUp)
{
    {
        CommandProvider provider(commandLine({"/p/a.dscproj"}));
    }
    application.startupCompleted();
    EXPECT_TRUE(commands.log.isEmpty());
}
