#include <Util/Dialog/Dialog.h>
#include <Util/Filesystem.h>
#include <Util/Import/QuizUtils.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Interfaces/EditorSerialization.h>
#include <Util/Interfaces/EditorSettings.h>
#include <Util/Project.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSaveFile>
#include <QSet>

#include <glog/logging.h>

#include <algorithm>

namespace Project {

namespace {

QString tr(const char* text) { return QCoreApplication::translate("Project", text); }

QString damagedMessage(const QString& path)
{
    return tr("The project \"%1\" is damaged or incomplete and cannot be opened.").arg(QDir::toNativeSeparators(path));
}

const QString formatKey = QStringLiteral("format");
const QString formatName = QStringLiteral("dscproj");
const QString versionKey = QStringLiteral("version");

Result failure(Status status, const QString& message)
{
    Result result;
    result.status = status;
    result.message = message;
    return result;
}

QJsonObject toJson(const ClipEntry& clip)
{
    QJsonObject o{{QStringLiteral("file"), clip.file},
                  {QStringLiteral("stream"), clip.stream},
                  {QStringLiteral("type"), clip.type},
                  {QStringLiteral("name"), clip.name},
                  {QStringLiteral("track"), clip.track},
                  {QStringLiteral("position"), QString::number(clip.position)},
                  {QStringLiteral("length"), QString::number(clip.length)},
                  {QStringLiteral("offset"), QString::number(clip.offset)},
                  {QStringLiteral("speed"), clip.speed},
                  {QStringLiteral("reversed"), clip.reversed},
                  {QStringLiteral("master"), clip.master},
                  {QStringLiteral("linkOffset"), QString::number(clip.linkOffset)}};
    QJsonArray effects;
    for (const EffectEntry& effect : clip.effects) {
        QJsonObject parameters;
        for (auto it = effect.parameters.begin(); it != effect.parameters.end(); ++it)
            parameters.insert(it.key(), it.value());
        effects.append(QJsonObject{{QStringLiteral("collection"), effect.collection},
                                   {QStringLiteral("id"), effect.id},
                                   {QStringLiteral("parameters"), parameters}});
    }
    if (!effects.isEmpty())
        o.insert(QStringLiteral("effects"), effects);
    for (const auto& [key, value] :
         {std::pair(QStringLiteral("animation"), &clip.animation), std::pair(QStringLiteral("overlay"), &clip.overlay),
          std::pair(QStringLiteral("quiz"), &clip.quiz)})
        if (!value->isEmpty())
            o.insert(key, *value);
    return o;
}

// Times are written as decimal strings: a JSON number holds 53 bits only.
bool readTime(const QJsonObject& object, const QString& key, qint64& value)
{
    bool ok = false;
    value = object.value(key).toString().toLongLong(&ok);
    return ok;
}

QByteArray bytes(const QJsonObject& object) { return QJsonDocument(object).toJson(QJsonDocument::Compact); }

// The effects, animation, title and quiz of a clip, each read the way its own reader reads it.
// A key left out means none; one holding another kind of value is damage.
bool contentFromJson(const QJsonObject& o, ClipEntry& clip)
{
    const std::pair<const char*, QJsonValue::Type> kinds[] = {{"effects", QJsonValue::Array},
                                                              {"animation", QJsonValue::Object},
                                                              {"overlay", QJsonValue::Object},
                                                              {"quiz", QJsonValue::Object}};
    for (const auto& [key, type] : kinds) {
        const QJsonValue value = o.value(QLatin1String(key));
        if (!value.isUndefined() && value.type() != type)
            return false;
    }
    for (const QJsonValue& value : o.value(QStringLiteral("effects")).toArray()) {
        const QJsonObject e = value.toObject();
        EffectEntry effect{
            e.value(QStringLiteral("collection")).toString(), e.value(QStringLiteral("id")).toString(), {}};
        const QJsonObject parameters = e.value(QStringLiteral("parameters")).toObject();
        for (auto it = parameters.begin(); it != parameters.end(); ++it) {
            if (!it.value().isDouble())
                return false;
            effect.parameters.insert(it.key(), it.value().toDouble());
        }
        if (effect.collection.isEmpty() || effect.id.isEmpty())
            return false;
        clip.effects << effect;
    }
    clip.animation = o.value(QStringLiteral("animation")).toObject();
    clip.overlay = o.value(QStringLiteral("overlay")).toObject();
    clip.quiz = o.value(QStringLiteral("quiz")).toObject();
    return (clip.animation.isEmpty() || Serialize::readAnimation(bytes(clip.animation)))
           && (clip.overlay.isEmpty() || Serialize::readOverlayPresets(bytes(clip.overlay)).size() == 1)
           && (clip.quiz.isEmpty() || Quiz::Utils::readQuestions(bytes(clip.quiz)));
}

bool fromJson(const QJsonValue& value, int trackCount, int index, ClipEntry& clip)
{
    if (!value.isObject())
        return false;
    const QJsonObject o = value.toObject();
    if (!contentFromJson(o, clip))
        return false;
    clip.file = o.value(QStringLiteral("file")).toString();
    clip.stream = o.value(QStringLiteral("stream")).toInt(-1);
    clip.type = o.value(QStringLiteral("type")).toInt();
    clip.name = o.value(QStringLiteral("name")).toString();
    clip.track = o.value(QStringLiteral("track")).toInt(-1);
    clip.speed = o.value(QStringLiteral("speed")).toDouble(1.0);
    clip.reversed = o.value(QStringLiteral("reversed")).toBool();
    clip.master = o.value(QStringLiteral("master")).toInt(-1);
    return readTime(o, QStringLiteral("position"), clip.position) && readTime(o, QStringLiteral("length"), clip.length)
           && readTime(o, QStringLiteral("offset"), clip.offset)
           && readTime(o, QStringLiteral("linkOffset"), clip.linkOffset) && clip.track >= 0 && clip.track < trackCount
           && clip.length > 0 && clip.speed > 0 && clip.master < index;
}

} // namespace

bool operator==(const EffectEntry& a, const EffectEntry& b)
{
    return a.collection == b.collection && a.id == b.id && a.parameters == b.parameters;
}

bool operator==(const ClipEntry& a, const ClipEntry& b)
{
    return a.effects == b.effects && a.animation == b.animation && a.overlay == b.overlay && a.quiz == b.quiz
           && a.file == b.file && a.stream == b.stream && a.type == b.type && a.name == b.name && a.track == b.track
           && a.position == b.position && a.length == b.length && a.offset == b.offset && a.speed == b.speed
           && a.reversed == b.reversed && a.master == b.master && a.linkOffset == b.linkOffset;
}

bool operator==(const Document& a, const Document& b)
{
    return a.name == b.name && a.media == b.media && a.trackKinds == b.trackKinds && a.clips == b.clips;
}

Document capture(const Timeline::Object* timeline, const std::vector<const Media::File*>& media, const QString& name)
{
    Document document;
    document.name = name;
    for (const Media::File* file : media)
        if (file)
            document.media << Filesystem::cleanPath(file->path().toQString());
    if (!timeline) {
        LOG(ERROR) << "Project::capture: no timeline";
        return document;
    }
    const std::vector<const Timeline::Track*> tracks = timeline->tracks();
    for (const Timeline::Track* track : tracks)
        document.trackKinds << int(track->kind());
    const std::vector<const Timeline::Clip*> clips = timeline->clips();
    for (const Timeline::Clip* clip : clips) {
        const Timeline::ClipTiming& timing = timeline->clipTiming(clip);
        ClipEntry entry;
        entry.file = clip->file() ? Filesystem::cleanPath(clip->file()->path().toQString()) : QString();
        entry.stream = clip->streamIndex();
        entry.type = int(clip->type());
        entry.name = clip->name().toQString();
        entry.track = int(std::find(tracks.begin(), tracks.end(), timing.track) - tracks.begin());
        entry.position = timing.position;
        entry.length = timing.length;
        entry.offset = timing.offset;
        entry.speed = timing.speed;
        entry.reversed = timing.reversed;
        if (const Timeline::Link* link = timeline->linkOf(clip)) {
            entry.master = int(std::find(clips.begin(), clips.end(), link->master) - clips.begin());
            entry.linkOffset = link->offset;
        }
        for (const Effect::Object* effect : clip->effects()) {
            EffectEntry e{QString::fromStdString(effect->collectionId()), QString::fromStdString(effect->id()), {}};
            for (const auto& [name, value] : effect->parameters())
                e.parameters.insert(QString::fromStdString(name), value);
            entry.effects << e;
        }
        if (clip->animation())
            entry.animation = QJsonDocument::fromJson(Serialize::writeAnimation(*clip->animation())).object();
        if (clip->overlay())
            entry.overlay = QJsonDocument::fromJson(Serialize::writeOverlayPresets({clip->overlay()})).object();
        if (clip->quiz())
            entry.quiz = QJsonDocument::fromJson(Quiz::Utils::writeQuestions(clip->quiz()->questions)).object();
        document.clips << entry;
    }
    // A master listed after its slave is written as no link at all.
    for (int i = 0; i < document.clips.size(); ++i)
        if (document.clips[i].master >= i)
            document.clips[i].master = -1;
    return document;
}

Timeline::Clip restoreClip(const ClipEntry& entry, const Media::File* file)
{
    Timeline::Clip clip(Timeline::Clip::Type(entry.type), file, entry.stream);
    clip.setName(entry.name);
    for (const EffectEntry& e : entry.effects) {
        Effect::Object effect(e.collection.toStdString(), e.id.toStdString());
        for (auto it = e.parameters.begin(); it != e.parameters.end(); ++it)
            effect.setParameter(it.key().toStdString(), it.value());
        clip.replaceEffect(&effect);
    }
    if (!entry.animation.isEmpty())
        if (std::optional<Animation::TransformationItem> item = Serialize::readAnimation(bytes(entry.animation)))
            clip.setAnimation(std::make_shared<const Animation::TransformationItem>(std::move(*item)));
    if (!entry.overlay.isEmpty()) {
        std::vector<std::unique_ptr<Overlay::Preset>> presets = Serialize::readOverlayPresets(bytes(entry.overlay));
        if (presets.size() == 1)
            clip.setOverlay(std::move(presets.front()));
    }
    if (!entry.quiz.isEmpty()) {
        if (std::optional<std::vector<Quiz::Question>> questions = Quiz::Utils::readQuestions(bytes(entry.quiz))) {
            auto quiz = std::make_shared<Quiz::Preset>();
            quiz->name = Types::String(entry.name);
            quiz->questions = std::move(*questions);
            clip.setQuiz(std::move(quiz));
        }
    }
    return clip;
}

Result load(const QString& path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return failure(Status::Unreadable,
                       tr("The project \"%1\" cannot be read.").arg(QDir::toNativeSeparators(path)));
    if (file.size() > MaxFileBytes) {
        LOG(ERROR) << "Project::load: " << path.toStdString() << " holds " << file.size()
                   << " bytes, more than a project can";
        return failure(Status::Corrupted, damagedMessage(path));
    }
    return read(file.readAll(), path);
}

Result read(const QByteArray& bytes, const QString& path)
{
    const QString shown = QDir::toNativeSeparators(path);
    const QJsonDocument json = Serialize::readJson(bytes);
    const QString damaged = damagedMessage(path);
    if (!json.isObject())
        return failure(Status::Corrupted, damaged);
    const QJsonObject root = json.object();
    if (root.value(formatKey).toString() != formatName || !root.value(versionKey).isDouble())
        return failure(Status::Corrupted, damaged);
    if (root.value(versionKey).toInt() > FormatVersion)
        return failure(
            Status::NewerVersion,
            tr("The project \"%1\" was saved by a newer version of the editor and cannot be opened here.").arg(shown));

    Result result;
    Document& document = result.document;
    document.name = root.value(QStringLiteral("name")).toString();
    for (const QJsonValue& value : root.value(QStringLiteral("media")).toArray())
        document.media << value.toString();
    for (const QJsonValue& value : root.value(QStringLiteral("tracks")).toArray())
        document.trackKinds << value.toInt();
    const QJsonArray clips = root.value(QStringLiteral("clips")).toArray();
    for (int i = 0; i < clips.size(); ++i) {
        ClipEntry clip;
        if (!fromJson(clips[i], document.trackKinds.size(), i, clip))
            return failure(Status::Corrupted, damaged);
        document.clips << clip;
    }
    return result;
}

Result save(const QString& path, const Document& document)
{
    QJsonArray clips;
    for (const ClipEntry& clip : document.clips)
        clips.append(toJson(clip));
    QJsonArray tracks;
    for (int kind : document.trackKinds)
        tracks.append(kind);
    const QJsonObject root{{formatKey, formatName},
                           {versionKey, FormatVersion},
                           {QStringLiteral("name"), document.name},
                           {QStringLiteral("media"), QJsonArray::fromStringList(document.media)},
                           {QStringLiteral("tracks"), tracks},
                           {QStringLiteral("clips"), clips}};
    QSaveFile file(path);
    const QByteArray data = QJsonDocument(root).toJson(QJsonDocument::Indented);
    // Unbuffered: a disk that takes only part of the data shows in write()'s count.
    if (!file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) || file.write(data) != data.size() || !file.commit()) {
        LOG(ERROR) << "Project::save: " << file.errorString().toStdString();
        return failure(
            Status::WriteFailed,
            tr("The project could not be saved to \"%1\": %2").arg(QDir::toNativeSeparators(path), file.errorString()));
    }
    return Result();
}

Result loadOrWarn(const QString& path)
{
    Result result = load(path);
    if (!result.ok())
        Dialog::showWarning(tr("Open Project"), result.message);
    return result;
}

Result saveOrWarn(const QString& path, const Document& document)
{
    Result result = save(path, document);
    if (!result.ok())
        Dialog::showWarning(tr("Save Project"), result.message);
    return result;
}

QStringList missingFiles(const Document& document)
{
    QStringList missing;
    QSet<QString> seen;
    auto check = [&](const QString& path) {
        if (path.isEmpty() || seen.contains(path))
            return;
        seen.insert(path);
        if (!QFileInfo::exists(path))
            missing << path;
    };
    for (const QString& path : document.media)
        check(path);
    for (const ClipEntry& clip : document.clips)
        check(clip.file);
    return missing;
}

int relink(Document& document, const QMap<QString, QString>& found)
{
    int changed = 0;
    auto replace = [&](QString& path) {
        const QString target = found.value(path);
        if (!target.isEmpty() && target != path) {
            path = target;
            ++changed;
        }
    };
    for (QString& path : document.media)
        replace(path);
    for (ClipEntry& clip : document.clips)
        replace(clip.file);
    return changed;
}

QList<RecentEntry> recentProjects()
{
    QList<RecentEntry> entries;
    const QStringList paths = Filesystem::recentProjects();
    for (const QString& path : paths)
        entries << RecentEntry{path, QFileInfo(path).isReadable()};
    return entries;
}

void rememberProject(const QString& path, int limit)
{
    if (path.isEmpty() || limit < 1) {
        LOG(ERROR) << "Project::rememberProject: an empty path or a limit below 1";
        return;
    }
    const QString cleaned = Filesystem::cleanPath(path);
    QStringList paths = Filesystem::recentProjects();
    paths.removeAll(cleaned);
    paths.prepend(cleaned);
    while (paths.size() > limit)
        paths.removeLast();
    Filesystem::saveRecentProjects(paths);
}

QString autosaveFolder() { return Filesystem::cleanPath(Settings::projectPath() + QStringLiteral("/Autosave")); }

QString autosave(const Document& document, int keep)
{
    const QString folder = autosaveFolder();
    if (!QDir().mkpath(folder)) {
        LOG(ERROR) << "Project::autosave: cannot make " << folder.toStdString();
        return QString();
    }
    QString name = document.name.isEmpty() ? Settings::projectNameDefault() : document.name;
    name.replace(QRegularExpression(QStringLiteral("[\\\\/:*?\"<>|]")), QStringLiteral("_"));
    // The stamp, then a counter for copies made within the same millisecond, sort by time.
    const QString stamp = QDateTime::currentDateTime().toString(QStringLiteral("yyyyMMdd-hhmmss-zzz"));
    QString path;
    for (int n = 0; path.isEmpty() || QFileInfo::exists(path); ++n)
        path = Filesystem::cleanPath(QStringLiteral("%1/%2 %3-%4.%5")
                                         .arg(folder, name, stamp)
                                         .arg(n, 2, 10, QLatin1Char('0'))
                                         .arg(Settings::projectFileExtension()));
    if (!save(path, document).ok())
        return QString();
    // The stamp sorts by time: the oldest copies of this project go first.
    QStringList copies = QDir(folder).entryList({name + QStringLiteral(" *.") + Settings::projectFileExtension()},
                                                QDir::Files, QDir::Name);
    while (copies.size() > std::max(keep, 1))
        QFile::remove(QDir(folder).filePath(copies.takeFirst()));
    return path;
}

} // namespace Project
