#include "Launcher.h"

#include <Util/Filesystem.h>

#include <glog/logging.h>

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

class Launcher::Private
{
public:
    Private(CommandProvider* provider, const QStringList& arguments, Options options)
        : options(std::move(options)), controller(std::make_unique<IPC::Controller>(provider, this->options.key))
    {
        QCommandLineParser parser;
        const QCommandLineOption mode(QStringLiteral("mode"), QString(), QStringLiteral("mode"));
        parser.addOption(mode);
        parser.addOptions(this->options.options);
        parser.addHelpOption();
        parser.parse(arguments);
        const QDir folder(this->options.workingDirectory.isEmpty() ? QDir::currentPath()
                                                                   : this->options.workingDirectory);
        int missing = 0;
        QString firstMissing;
        for (const QString& argument : parser.positionalArguments()) {
            const QString file = Filesystem::cleanPath(folder.absoluteFilePath(argument));
            if (!QFileInfo::exists(file) && missing++ == 0)
                firstMissing = file;
            request.files << file;
        }
        if (missing > 0)
            LOG(ERROR) << "Launcher::Launcher: " << missing << " of " << request.files.size()
                       << " files do not exist (first: " << firstMissing.toStdString()
                       << "); they are passed on so the editor reports them";
        request.mode = parser.value(mode);
        request.category = this->options.handoverCategory;
    }

    Options options;
    IPC::Request request;
    std::unique_ptr<IPC::Controller> controller;
};

Launcher::Launcher(CommandProvider* provider) : Launcher(provider, QCoreApplication::arguments(), Options()) {}

Launcher::Launcher(CommandProvider* provider, const QStringList& arguments, Options options)
    : d(std::make_unique<Private>(provider, arguments, std::move(options)))
{}

Launcher::~Launcher() = default;

IPC::Controller::Role Launcher::start()
{
    if (d->controller->role() != IPC::Controller::Role::Undecided) {
        LOG(ERROR) << "Launcher::start: called twice; the role stays as it was";
        return d->controller->role();
    }
    const IPC::Controller::Role role = d->controller->start(d->request, d->options.timeoutMs);
    if (role == IPC::Controller::Role::Primary)
        d->controller->deliver(d->request);
    return role;
}

const IPC::Request& Launcher::request() const { return d->request; }

IPC::Controller* Launcher::controller() const
{
    return d->controller->role() == IPC::Controller::Role::Primary ? d->controller.get() : nullptr;
}
