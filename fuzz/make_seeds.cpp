// Writes seed inputs for the harnesses with the library's own writers:
//   fuzz_make_seeds <corpus folder>    (one sub-folder per harness)
#include "FuzzMain.h"

#include <Core/PropertySerializer.h>
#include <EditorSerialization/OverlayPresets.h>
#include <Util/Filesystem.h>
#include <Util/Import/MimeUtils.h>

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
    return 0;
}
