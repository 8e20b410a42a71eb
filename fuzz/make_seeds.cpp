// Writes seed inputs for the harnesses with the library's own writers:
//   fuzz_make_seeds <corpus folder>    (one sub-folder per harness)
#include "FuzzMain.h"

#include <Core/PropertySerializer.h>
#include <EditorSerialization/OverlayPresets.h>
#include <Util/Filesystem.h>
#include <Util/IPC/Controller.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Import/QuizUtils.h>
#include <Util/Project.h>

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QMimeData>

namespace {

QString corpus;

void seed(const char* harness, const char* name, const QByteArray& bytes)
{
    QDir().mkpath(corpus + QLatin1Char('/') + QLatin1String(harness));
    QFile file(corpus + QLatin1Char('/') + QLatin1String(harness) + QLatin1Char('/') + QLatin1String(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", qPrintable(file.fileName()));
}

QByteArray std2q(const std::string& text) { return QByteArray::fromStdString(text); }

QByteArray fileBytes(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("cannot read %s", qPrintable(path));
    return file.readAll();
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        qFatal("usage: fuzz_make_seeds <corpus folder>");
    corpus = QString::fromLocal8Bit(argv[1]);
    startFuzzApplication();

    using namespace Dravik::Core;
    Property tree("project", Property::Type::Object);
    Property tracks("tracks", Property::Type::Array);
    tracks.Append(Property::MakeString("name", "Main \"track\"\n2"));
    tracks.Append(Property::MakeInt("length", -9000000000LL));
    tree.Append(tracks);
    tree.Append(Property::MakeDouble("rate", 29.97));
    tree.Append(Property::MakeBool("muted", true));
    tree.Append(Property("empty"));
    DataOutputString text;
    PropertySerializer::Serialize(tree, text);
    seed("property", "tree", std2q(text.GetString()));

    Filesystem::saveRecentProjects({QStringLiteral("/p/a.dscproj"), QStringLiteral("/p/été 2.dscproj")});
    Filesystem::saveLastUsedOutputDirectories({QStringLiteral("/out/one"), QStringLiteral("/out/two")});
    QImage red(8, 6, QImage::Format_RGB32);
    red.fill(Qt::red);
    Filesystem::saveRecentProjectPreviews(
        {{QStringLiteral("/p/a.dscproj"), QPixmap::fromImage(red)}, {QStringLiteral("/p/b.dscproj"), QPixmap()}});
    seed("property", "recent", std2q(Settings::recentProjects()));
    seed("recent_lists", "projects", 'r' + std2q(Settings::recentProjects()));
    seed("recent_lists", "targets", 't' + std2q(Settings::targetHistory()));
    seed("recent_lists", "previews", 'p' + Settings::recentProjectPreviews());

    Overlay::Preset title;
    title.name = Types::String("Title");
    title.setTag("Titles").appendItem(
        Overlay::Item().setText("<b>Bold</b>").setTransform(Types::Transform(2, 0, 0, 0, 2, 0, -5, 7.5, 1)));
    Overlay::Preset plain;
    plain.appendItem(Overlay::Item().setText("plain"));
    const QByteArray presets = Serialize::writeOverlayPresets({&title, &plain});
    seed("overlay_presets", "two", presets);

    QMimeData mime;
    MimeUtils::packFiles(
        &mime, {QStringLiteral("/v/clip.mp4"), QStringLiteral("/v/a%2b.svg"), QStringLiteral("/p/x.dscproj")});
    MimeUtils::setMimeDragAsrc(&mime, QStringLiteral("media-library/Clips"));
    const QByteArray urls = mime.data(QStringLiteral("text/uri-list"));
    seed("mime", "presets", urls + '|' + presets + '|' + mime.data(MimeUtils::dragAsrcFormat()));
    seed("mime", "files", urls + "||" + mime.data(MimeUtils::dragAsrcFormat()));

    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    red.save(&buffer, "PNG");
    seed("media", "png", '\3' + png);

    Quiz::Utils::Session session;
    for (const auto& quiz : Quiz::Utils::defaultQuizzes())
        session.questions.insert(session.questions.end(), quiz->questions.begin(), quiz->questions.end());
    session.timestamp = 120000000;
    session.replayFrom = 0;
    seed("quiz", "session", Quiz::Utils::write(session));
    seed("quiz", "questions", Quiz::Utils::writeQuestions(Quiz::Utils::defaultQuizzes()[1]->questions));

    seed("ipc", "first",
         IPC::Controller::encodeFrame(
             {7, false, {{QStringLiteral("/v/a.mp4"), QStringLiteral("/v/été.mov")}, QStringLiteral("video"), {}}}));
    seed("ipc", "final",
         IPC::Controller::encodeFrame({7, true, {{QStringLiteral("/p/x.dscproj")}, {}, QStringLiteral("slideshow")}}));

    Project::Document document;
    document.name = QStringLiteral("Trip \"2\"");
    document.media << QStringLiteral("/v/a.mp4") << QStringLiteral("/v/b.wav");
    document.trackKinds << 0 << 1;
    Project::ClipEntry video;
    video.file = QStringLiteral("/v/a.mp4");
    video.stream = 0;
    video.name = QStringLiteral("a");
    video.position = 1000;
    video.length = 9000000000LL;
    video.offset = 500;
    video.speed = 1.5;
    Project::ClipEntry audio = video;
    audio.file = QStringLiteral("/v/b.wav");
    audio.type = 1;
    audio.track = 1;
    audio.reversed = true;
    audio.master = 0;
    audio.linkOffset = -250;
    document.clips << video << audio;
    const QString project =
        QDir::temp().filePath(QStringLiteral("editorutil-seed-%1.dscproj").arg(qApp->applicationPid()));
    if (!Project::save(project, document).ok())
        qFatal("cannot write %s", qPrintable(project));
    seed("project", "two-tracks", fileBytes(project));
    QFile::remove(project);
    return 0;
}
