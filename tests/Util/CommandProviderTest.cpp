#include <Util/CommandProvider.h>

#include <EditorModel/GlobalObjects.h>
#include <PubSub/PubSub.h>

#include <gtest/gtest.h>

#include "TestSupport.h"

#include <vector>

namespace {

using TestSupport::S;

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

} // namespace

class CommandProviderTest : public testing::Test
{
protected:
    CommandLog commands;
    Application application;
};

// Requests recorded before start-up, as "tools", "show", "hide", "category <name>", "file <path>",
// are published once it completes, in a fixed order.
TEST(CommandProviderStartUp, PublishesWhatWaitedInTheFixedOrder)
{
    const struct
    {
        const char* name;
        std::vector<const char*> arguments;
        std::vector<const char*> requests;
        bool pending; // files waiting for the start-up
        std::vector<const char*> published;
    } rows[] = {
        {"only_the_first_project",
         {"/p/first.dscproj", "/p/second.dscproj", "/v/clip.mp4"},
         {},
         true,
         {"OpenProject /p/first.dscproj"}},
        {"media_files_are_not_kept", {"/v/clip.mp4"}, {}, false, {}},
        {"fixed_order",
         {"--mode", "slideshow"},
         {"category music", "hide", "show", "file /v/b.mp4", "file /v/a.wav"},
         true,
         {"StartSlideshow", "AddFile /v/b.mp4", "AddFile /v/a.wav", "ShowMainWindow", "HideMainWindow",
          "ShowAddMediaCategory music"}},
        {"later_category_wins_over_tools",
         {},
         {"tools", "category video", "category titles"},
         false,
         {"ShowAddMediaCategory titles"}},
        {"tools_page_alone", {}, {"tools"}, false, {"ShowToolsPage"}},
        {"slideshow_before_project",
         {"--mode=slideshow", "/p/show.dscproj"},
         {},
         true,
         {"StartSlideshow", "OpenProject /p/show.dscproj"}},
        {"mode_normal", {"--mode", "normal"}, {}, false, {}},
        {"mode_is_case_sensitive", {"--mode", "Slideshow"}, {}, false, {}},
        {"project_then_window", {"/p/a.dscproj"}, {"show"}, true, {"OpenProject /p/a.dscproj", "ShowMainWindow"}},
        {"a_recorded_project_drops_other_files",
         {},
         {"file /v/a.mp4", "file /p/late.dscproj", "file /p/later.dscproj"},
         true,
         {"OpenProject /p/late.dscproj"}},
    };
    for (const auto& c : rows) {
        SCOPED_TRACE(c.name);
        CommandLog commands; // this row's messages only
        Application application;
        QStringList arguments{S("editor")};
        for (const char* a : c.arguments)
            arguments << S(a);
        CommandProvider provider(arguments);
        for (const char* request : c.requests) {
            const QString r = S(request);
            const QString argument = r.section(QLatin1Char(' '), 1);
            if (r == S("tools"))
                provider.showToolsPage();
            else if (r == S("show"))
                provider.showMainWindow();
            else if (r == S("hide"))
                provider.hideMainWindow();
            else if (r.startsWith(S("category ")))
                provider.showAddMediaCategory(argument);
            else
                provider.handleFile(argument);
        }
        EXPECT_EQ(provider.hasPendingFiles(), c.pending);
        EXPECT_TRUE(commands.log.isEmpty());
        application.startupCompleted();
        application.startupCompleted(); // start-up happens once
        QStringList expected;
        for (const char* line : c.published)
            expected << S(line);
        EXPECT_EQ(commands.log, expected);
        EXPECT_FALSE(provider.hasPendingFiles());
    }
}

TEST_F(CommandProviderTest, AfterStartUpRequestsArePublishedAtOnce)
{
    CommandProvider provider(QStringList{S("editor")});
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

TEST_F(CommandProviderTest, ADestroyedProviderIgnoresTheStartUp)
{
    {
        CommandProvider provider(QStringList{S("editor"), S("/p/a.dscproj")});
    }
    application.startupCompleted();
    EXPECT_TRUE(commands.log.isEmpty());
}
