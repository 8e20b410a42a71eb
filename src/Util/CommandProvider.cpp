#include "CommandProvider.h"

#include <Util/Filesystem.h>
#include <Util/Interfaces/EditorModel.h>

#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QCoreApplication>

class CommandProvider::Private
    : public PubSub::Publisher<Command::OpenProject, Command::AddFile, Command::StartSlideshow, Command::ShowMainWindow,
                               Command::HideMainWindow, Command::ShowAddMediaCategory, Command::ShowToolsPage>,
      public PubSub::Subscriber<AppEvents::StartupCompleted>
{
public:
    explicit Private(const QStringList& arguments)
        : modeOption(QStringLiteral("mode"),
                     QCoreApplication::translate("CommandProvider",
                                                 "Editor mode. Can be \"normal\" (default) and \"slideshow\"."),
                     QStringLiteral("mode"), QStringLiteral("normal"))
    {
        parser.addOption(modeOption);
        parser.addHelpOption();
        parser.parse(arguments);
        const QStringList projects = Filesystem::extractProjectFiles(parser.positionalArguments());
        if (!projects.isEmpty())
            pendingFiles << projects.first();
        subscribe(AppEvents::globalObject());
    }

    ~Private() override { unsubscribeEverything(); }

    void notify(const AppEvents::StartupCompleted&) override
    {
        if (ready)
            return;
        if (parser.isSet(modeOption)) {
            const QString mode = parser.value(modeOption);
            if (mode != QLatin1String("normal") && mode == QLatin1String("slideshow"))
                publish(Command::StartSlideshow());
        }
        flushFiles();
        if (pendingShowMainWindow)
            publish(Command::ShowMainWindow());
        if (pendingHideMainWindow)
            publish(Command::HideMainWindow());
        if (!pendingCategory.isEmpty())
            publish(Command::ShowAddMediaCategory(Types::String(pendingCategory)));
        else if (pendingShowToolsPage)
            publish(Command::ShowToolsPage());
        ready = true;
    }

    void flushFiles()
    {
        const QStringList projects = Filesystem::extractProjectFiles(pendingFiles);
        if (!projects.isEmpty()) {
            publish(Command::OpenProject(Types::String(projects.first())));
        } else {
            for (const QString& file : qAsConst(pendingFiles))
                publish(Command::AddFile(Types::String(file)));
        }
        pendingFiles.clear();
    }

    QCommandLineParser parser;
    QCommandLineOption modeOption;
    QStringList pendingFiles;
    QString pendingCategory;
    bool ready = false;
    bool pendingShowMainWindow = false;
    bool pendingHideMainWindow = false;
    bool pendingShowToolsPage = false;
};

CommandProvider::CommandProvider() : CommandProvider(QCoreApplication::arguments()) {}

CommandProvider::CommandProvider(const QStringList& arguments) : d(std::make_unique<Private>(arguments)) {}

CommandProvider::~CommandProvider() = default;

void CommandProvider::handleFile(const QString& path)
{
    d->pendingFiles << path;
    if (d->ready)
        d->flushFiles();
}

bool CommandProvider::hasPendingFiles() const { return !d->pendingFiles.isEmpty(); }

void CommandProvider::showMainWindow()
{
    if (!d->ready)
        d->pendingShowMainWindow = true;
    else
        d->publish(Command::ShowMainWindow());
}

void CommandProvider::hideMainWindow()
{
    if (!d->ready)
        d->pendingHideMainWindow = true;
    else
        d->publish(Command::HideMainWindow());
}

void CommandProvider::showToolsPage()
{
    if (!d->ready)
        d->pendingShowToolsPage = true;
    else
        d->publish(Command::ShowToolsPage());
}

void CommandProvider::showAddMediaCategory(const QString& category)
{
    if (!d->ready)
        d->pendingCategory = category;
    else
        d->publish(Command::ShowAddMediaCategory(Types::String(category)));
}
