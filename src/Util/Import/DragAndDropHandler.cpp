#include "DragAndDropHandler.h"

#include "MimeUtils.h"
#include "QuizUtils.h"
#include "TimelineFileOpenHandler.h"
#include "TimelineShadowChange.h"

#include <Util/Editor/ClipContentCommand.h>
#include <Util/Editor/TimelineEdits.h>
#include <Util/Interfaces/EditorSerialization.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QDir>
#include <QDragEnterEvent>
#include <QFileInfo>
#include <QMimeData>
#include <QSet>
#include <QUndoStack>

#include <glog/logging.h>

#include <algorithm>
#include <map>

namespace {

constexpr int maxFolderDepth = 32;
constexpr int maxPayloadBytes = 4096;

QString lowerSuffix(const QString& path) { return QFileInfo(path).suffix().toLower(); }

bool isAudioPath(const QString& path) { return FileAdder::guessClipType(path) == Timeline::Clip::Audio; }

// The local paths of the dropped URLs, in drop order; `remote` counts the others.
QStringList localPaths(const QMimeData* data, int* remote = nullptr)
{
    QStringList paths;
    if (!MimeUtils::hasUrls(data))
        return paths;
    const QList<QUrl> urls = data->urls();
    for (const QUrl& url : urls) {
        const QString path = url.isLocalFile() ? url.toLocalFile() : QString();
        if (path.isEmpty()) {
            if (remote)
                ++*remote;
            continue;
        }
        paths.append(path);
    }
    return paths;
}

// The two lines of a small text payload, or nothing for anything else.
std::optional<std::pair<QString, QString>> twoLines(const QMimeData* data, const QString& format)
{
    const QByteArray bytes = data->data(format);
    if (bytes.isEmpty() || bytes.size() > maxPayloadBytes)
        return std::nullopt;
    const QStringList lines = QString::fromUtf8(bytes).split(QLatin1Char('\n'));
    if (lines.size() != 2 || lines[0].trimmed().isEmpty() || lines[1].trimmed().isEmpty())
        return std::nullopt;
    return std::make_pair(lines[0].trimmed(), lines[1].trimmed());
}

bool isVisual(const Timeline::Clip* clip)
{
    const Timeline::Clip::Type type = clip->type();
    return type == Timeline::Clip::Video || type == Timeline::Clip::Image || type == Timeline::Clip::Nested
           || type == Timeline::Clip::Color;
}

// Whether a clip of `type` may stand on a track of `kind`.
bool fitsTrack(Timeline::Clip::Type type, Timeline::Track::Kind kind)
{
    switch (kind) {
    case Timeline::Track::Video:
    case Timeline::Track::ExtraVideo:
        return type != Timeline::Clip::Audio && type != Timeline::Clip::Title && type != Timeline::Clip::Callout
               && type != Timeline::Clip::Quiz;
    case Timeline::Track::Title:
        return type == Timeline::Clip::Title || type == Timeline::Clip::Callout || type == Timeline::Clip::Quiz;
    case Timeline::Track::NativeAudio:
    case Timeline::Track::Audio:
        return type == Timeline::Clip::Audio;
    }
    return false;
}

bool collectFolder(const QString& folder, int depth, QStringList& out, QSet<QString>& seen, QString* error);

bool addPath(const QFileInfo& info, int depth, QStringList& out, QSet<QString>& seen, QString* error)
{
    const QString path = QDir::cleanPath(info.absoluteFilePath());
    if (info.isDir()) {
        // A link to a folder could lead back into the drop.
        if (info.isSymLink())
            return true;
        return collectFolder(path, depth + 1, out, seen, error);
    }
    if (seen.contains(path))
        return true;
    if (out.size() >= DragAndDropHandler::maxFilesPerDrop) {
        if (error)
            *error =
                DragAndDropHandler::tr("The drop holds more than %1 files.").arg(DragAndDropHandler::maxFilesPerDrop);
        return false;
    }
    seen.insert(path);
    out.append(path);
    return true;
}

bool collectFolder(const QString& folder, int depth, QStringList& out, QSet<QString>& seen, QString* error)
{
    if (depth > maxFolderDepth)
        return true;
    // Hidden entries are left out (no QDir::Hidden).
    QFileInfoList entries = QDir(folder).entryInfoList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot, QDir::NoSort);
    std::sort(entries.begin(), entries.end(), [](const QFileInfo& a, const QFileInfo& b) {
        return DragAndDropHandler::naturalLess(a.fileName(), b.fileName());
    });
    for (const QFileInfo& entry : entries) {
        if (!addPath(entry, depth, out, seen, error))
            return false;
    }
    return true;
}

} // namespace

// --- one drop of files, from the shadow copy to the merge ------------------------------------------

// Adds the files to a shadow copy of the timeline and, once the failures are settled and the
// shadow is ready, brings the drop's changes over to the timeline in one edit: the new clips
// (with their links) and the moves of the clips that were there, each by what it moved in the
// shadow, so that changes made to the timeline meanwhile are kept.
class DragAndDropHandler::Import
{
public:
    Import(DragAndDropHandler& owner, const Timeline::Object* timeline, const QStringList& paths, Types::Time position,
           const Timeline::Track* track)
        : m_owner(owner),
          m_timeline(timeline),
          m_change(timeline, Timeline::Object::Project),
          m_failures(m_change.shadowTimeline())
    {
        const Timeline::Object* shadow = m_change.shadowTimeline();
        // The copy lists its clips in the order of the source's.
        const std::vector<const Timeline::Clip*> copies = shadow->clips();
        const std::vector<const Timeline::Clip*> originals = timeline->clips();
        for (size_t i = 0; i < copies.size() && i < originals.size(); ++i)
            m_copies.emplace(copies[i], Copy{originals[i], shadow->clipTiming(copies[i]).position});
        QObject::connect(&m_change, &TimelineShadowChange::shadowReady, &owner, [this] { land(); });
        m_change.addFiles(paths, FileAdder::DragAndDrop, position, track);
    }

    bool done() const { return m_done; }
    void abandon() { m_timeline = nullptr; }

private:
    struct Copy
    {
        const Timeline::Clip* original;
        Types::Time position;
    };

    void land()
    {
        if (m_done)
            return;
        m_done = true;
        const Timeline::Object* shadow = m_change.shadowTimeline();
        if (!m_timeline) {
            LOG(ERROR) << "DragAndDropHandler: the timeline was removed while the dropped files opened";
            m_owner.finishImport(this, 0);
            return;
        }
        Model::View<Timeline::Object> timelines;
        auto edit = timelines.edit(m_timeline);
        std::map<const Timeline::Clip*, const Timeline::Clip*> onTimeline; // shadow clip -> timeline clip
        std::map<const Timeline::Clip*, Types::Time> moved;                // timeline clip -> by how much
        int added = 0;
        for (const Timeline::Clip* clip : shadow->clips()) {
            const Timeline::ClipTiming& timing = shadow->clipTiming(clip);
            const auto copy = m_copies.find(clip);
            if (copy == m_copies.end()) {
                edit->addClip(clip, timing);
                onTimeline[clip] = clip;
                ++added;
                continue;
            }
            const Timeline::Clip* original = copy->second.original;
            if (!edit->contains(original))
                continue;
            onTimeline[clip] = original;
            moved[original] = timing.position - copy->second.position;
        }
        // A clip linked to one that moved keeps its place against it.
        for (auto& [clip, by] : moved) {
            const Timeline::Clip* master = edit->masterOf(clip);
            if (by == 0 && master && moved.count(master))
                by = moved[master];
        }
        for (const auto& [clip, by] : moved) {
            if (by == 0)
                continue;
            Timeline::ClipTiming timing = edit->clipTiming(clip);
            timing.position += by;
            edit->moveClip(clip, timing);
        }
        for (const Timeline::Clip* clip : shadow->clips()) {
            const Timeline::Link* link = shadow->linkOf(clip);
            if (!link || m_copies.count(clip) || !onTimeline.count(link->master))
                continue;
            edit->addLink(onTimeline[link->master], clip, link->offset);
        }
        if (added == 0)
            edit.cancel();
        else if (!edit.commit())
            added = 0;
        m_owner.finishImport(this, added);
    }

    DragAndDropHandler& m_owner;
    const Timeline::Object* m_timeline;
    TimelineShadowChange m_change;
    TimelineFileOpenHandler m_failures;
    std::map<const Timeline::Clip*, Copy> m_copies;
    bool m_done = false;
};

// Learns that the timeline is gone.
class DragAndDropHandler::TimelineWatch : public Timeline::Details::ObjectViewBase
{
public:
    std::function<void()> gone;

private:
    void timelineRemoved(const Timeline::Object*) override { gone(); }
};

// --- the handler ----------------------------------------------------------------------------------

DragAndDropHandler::Target DragAndDropHandler::Target::onTimeline(const Timeline::Track* track, Types::Time position,
                                                                  const Timeline::Clip* clip)
{
    Target target;
    target.track = track;
    target.position = position;
    target.clip = clip;
    return target;
}

DragAndDropHandler::Target DragAndDropHandler::Target::onScene(const QPointF& point, Types::Time position,
                                                               const Timeline::Clip* clip)
{
    Target target;
    target.position = position;
    target.clip = clip;
    target.scenePoint = point;
    return target;
}

DragAndDropHandler::DragAndDropHandler(const Timeline::Object* timeline, QObject* parent)
    : QObject(parent), m_timeline(timeline), m_watch(std::make_unique<TimelineWatch>())
{
    if (!timeline)
        LOG(ERROR) << "DragAndDropHandler::DragAndDropHandler: no timeline; every drop is refused";
    else
        m_watch->observe(timeline);
    m_watch->gone = [this] { timelineGone(); };
}

DragAndDropHandler::~DragAndDropHandler() = default;

const Timeline::Object* DragAndDropHandler::timeline() const { return m_timeline; }

int DragAndDropHandler::pendingImports() const { return int(m_imports.size()); }

QString DragAndDropHandler::status() const { return m_status; }

QString DragAndDropHandler::effectFormat() { return QStringLiteral("application/x-editor-effect"); }

QString DragAndDropHandler::transitionFormat() { return QStringLiteral("application/x-editor-transition"); }

QString DragAndDropHandler::animationFormat() { return QStringLiteral("application/x-editor-animation"); }

QString DragAndDropHandler::panAndZoomFormat() { return QStringLiteral("application/x-editor-pan-and-zoom"); }

QString DragAndDropHandler::clipFormat() { return QStringLiteral("application/x-editor-clip"); }

void DragAndDropHandler::packEffect(QMimeData* data, const Effect::Object& effect)
{
    data->setData(effectFormat(), QByteArray::fromStdString(effect.collectionId() + '\n' + effect.id()));
}

void DragAndDropHandler::packTransition(QMimeData* data, const Transition::Object& transition)
{
    data->setData(transitionFormat(),
                  QByteArray::fromStdString(transition.id + '\n' + std::to_string(transition.duration)));
}

void DragAndDropHandler::packAnimation(QMimeData* data, const Animation::TransformationItem& animation)
{
    data->setData(animationFormat(), Serialize::writeAnimation(animation));
}

void DragAndDropHandler::packPanAndZoom(QMimeData* data, const Animation::TransformationItem& panAndZoom)
{
    data->setData(panAndZoomFormat(), Serialize::writeAnimation(panAndZoom));
}

void DragAndDropHandler::packClip(QMimeData* data, const Timeline::Clip* clip)
{
    data->setData(clipFormat(), QByteArray::number(quintptr(clip)));
}

void DragAndDropHandler::packQuiz(QMimeData* data, const Quiz::Preset& quiz)
{
    data->setData(Quiz::Preset::mimeType->toQString(), Quiz::Utils::writeQuestions(quiz.questions));
}

bool DragAndDropHandler::naturalLess(const QString& a, const QString& b)
{
    const int na = a.size();
    const int nb = b.size();
    int i = 0;
    int j = 0;
    while (i < na && j < nb) {
        const QChar ca = a.at(i);
        const QChar cb = b.at(j);
        if (ca.isDigit() && cb.isDigit()) {
            // Compare the runs as numbers: without leading zeros, the longer is greater.
            int si = i;
            int sj = j;
            while (si < na && a.at(si) == QLatin1Char('0'))
                ++si;
            while (sj < nb && b.at(sj) == QLatin1Char('0'))
                ++sj;
            int ei = si;
            int ej = sj;
            while (ei < na && a.at(ei).isDigit())
                ++ei;
            while (ej < nb && b.at(ej).isDigit())
                ++ej;
            if (ei - si != ej - sj)
                return ei - si < ej - sj;
            for (int k = 0; k < ei - si; ++k) {
                if (a.at(si + k) != b.at(sj + k))
                    return a.at(si + k) < b.at(sj + k);
            }
            i = ei;
            j = ej;
            continue;
        }
        const QChar fa = ca.toCaseFolded();
        const QChar fb = cb.toCaseFolded();
        if (fa != fb)
            return fa < fb;
        ++i;
        ++j;
    }
    if ((na - i) != (nb - j))
        return na - i < nb - j;
    return a < b; // equal but for case or zeros: a fixed order all the same
}

std::optional<QStringList> DragAndDropHandler::expandDroppedPaths(const QStringList& paths, QString* error)
{
    QStringList sorted = paths;
    std::sort(sorted.begin(), sorted.end(), [](const QString& a, const QString& b) {
        return naturalLess(QFileInfo(a).fileName(), QFileInfo(b).fileName());
    });
    QStringList files;
    QSet<QString> seen;
    for (const QString& path : sorted) {
        if (!addPath(QFileInfo(path), 0, files, seen, error))
            return std::nullopt;
    }
    return files;
}

DragAndDropHandler::Assessment DragAndDropHandler::classify(const QMimeData* data) const
{
    Assessment a;
    if (!data || data->formats().isEmpty()) {
        a.reason = tr("Nothing is dragged.");
        return a;
    }
    if (data->hasFormat(Quiz::Preset::mimeType->toQString()))
        a.kind = Kind::Quiz;
    else if (MimeUtils::isOverlayPresetCompatible(data))
        a.kind = Kind::Overlay;
    else if (data->hasFormat(effectFormat()))
        a.kind = Kind::Effect;
    else if (data->hasFormat(transitionFormat()))
        a.kind = Kind::Transition;
    else if (data->hasFormat(animationFormat()))
        a.kind = Kind::Animation;
    else if (data->hasFormat(panAndZoomFormat()))
        a.kind = Kind::PanAndZoom;
    else if (data->hasFormat(clipFormat()))
        a.kind = Kind::Clip;
    if (a.kind != Kind::None || !MimeUtils::hasUrls(data)) {
        if (a.kind == Kind::None)
            a.reason = tr("The editor cannot use what is dragged.");
        return a;
    }
    int remote = 0;
    const QStringList paths = localPaths(data, &remote);
    if (paths.isEmpty()) {
        a.reason = tr("Only files on this computer can be dropped.");
        return a;
    }
    if (MimeUtils::isMimeDataContainsProjectFiles(data))
        a.kind = Kind::Project;
    else if (MimeUtils::isMimeDataContainsPackageFiles(data))
        a.kind = Kind::Package;
    else if (std::all_of(paths.begin(), paths.end(),
                         [](const QString& p) { return MimeUtils::overlaySuffixes().contains(lowerSuffix(p)); }))
        a.kind = Kind::Overlay;
    else
        a.kind = Kind::Files;
    return a;
}

QString DragAndDropHandler::refusalAt(Kind kind, const QMimeData* data, const Target& target) const
{
    if (!m_timeline)
        return tr("There is no timeline to drop on.");
    const Timeline::Track::Kind trackKind = target.track ? target.track->kind() : Timeline::Track::Video;
    const bool onScene = target.scenePoint.has_value();
    const bool onClip = target.clip && m_timeline->contains(target.clip);
    switch (kind) {
    case Kind::None:
    case Kind::Project:
    case Kind::Package:
        return {};
    case Kind::Files:
        if (!onScene && (trackKind == Timeline::Track::Title || trackKind == Timeline::Track::NativeAudio))
            return tr("Media cannot go on this track.");
        return {};
    case Kind::Overlay:
    case Kind::Quiz:
        if (!onScene && target.track && trackKind != Timeline::Track::Title)
            return kind == Kind::Quiz ? tr("Quizzes go on the title track or the picture.")
                                      : tr("Titles go on the title track or the picture.");
        return {};
    case Kind::Effect:
        return onClip && isVisual(target.clip) ? QString() : tr("Drop the effect on a video or picture clip.");
    case Kind::Transition:
        return onClip && isVisual(target.clip) ? QString() : tr("Drop the transition on a video or picture clip.");
    case Kind::Animation:
        return onClip && isVisual(target.clip) ? QString() : tr("Drop the animation on a video or picture clip.");
    case Kind::PanAndZoom:
        return onClip && isVisual(target.clip) ? QString() : tr("Drop the pan and zoom on a video or picture clip.");
    case Kind::Clip: {
        const Timeline::Clip* clip = draggedClip(data);
        if (!clip)
            return tr("The dragged clip is not on this timeline.");
        if (onScene)
            return tr("Clips move on the timeline, not on the picture.");
        if (target.track && !fitsTrack(clip->type(), target.track->kind()))
            return tr("This clip cannot go on this track.");
        return {};
    }
    }
    return {};
}

DragAndDropHandler::Assessment DragAndDropHandler::assess(const QMimeData* data, const Target& target) const
{
    Assessment a = data && data == m_dragData ? m_dragContent : classify(data);
    if (a.kind == Kind::None)
        return a;
    a.reason = refusalAt(a.kind, data, target);
    a.accepted = a.reason.isEmpty();
    return a;
}

void DragAndDropHandler::setStatus(const QString& status)
{
    if (status == m_status)
        return;
    m_status = status;
    Q_EMIT statusChanged(status);
}

void DragAndDropHandler::refuse(const QString& reason)
{
    LOG(ERROR) << "DragAndDropHandler::drop: " << reason.toStdString();
    Q_EMIT dropRefused(reason);
}

void DragAndDropHandler::answerDrag(const QMimeData* data, const Target& target, QEvent* event)
{
    const Assessment a = assess(data, target);
    setStatus(a.reason);
    event->setAccepted(a.accepted);
    if (a.accepted && showLanding)
        showLanding(target, a.kind);
    else if (!a.accepted && hideLanding)
        hideLanding();
}

void DragAndDropHandler::dragEnterEvent(QDragEnterEvent* event, const Target& target)
{
    m_dragData = event->mimeData();
    m_dragContent = classify(event->mimeData());
    answerDrag(event->mimeData(), target, event);
    if (event->isAccepted())
        event->acceptProposedAction();
}

void DragAndDropHandler::dragMoveEvent(QDragMoveEvent* event, const Target& target)
{
    answerDrag(event->mimeData(), target, event);
    if (event->isAccepted())
        event->acceptProposedAction();
}

void DragAndDropHandler::dragLeaveEvent(QDragLeaveEvent* event)
{
    m_dragData = nullptr;
    m_dragContent = Assessment();
    setStatus(QString());
    if (hideLanding)
        hideLanding();
    if (event)
        event->accept();
}

void DragAndDropHandler::dropEvent(QDropEvent* event, const Target& target)
{
    const bool done = drop(event->mimeData(), target);
    event->setAccepted(done);
    if (done)
        event->acceptProposedAction();
    dragLeaveEvent(nullptr);
}

bool DragAndDropHandler::drop(const QMimeData* data, const Target& target)
{
    const Assessment a = assess(data, target);
    if (!a.accepted) {
        refuse(a.reason);
        return false;
    }
    switch (a.kind) {
    case Kind::Project:
        Q_EMIT projectDropped(MimeUtils::extractProjectFiles(data).value(0));
        return true;
    case Kind::Package: {
        Q_EMIT packageDropped(MimeUtils::extractFiles(data, {Settings::packageExtenstion().toLower()}).value(0));
        return true;
    }
    case Kind::Files:
        return dropFiles(data, target);
    case Kind::Overlay:
        return dropOverlays(data, target);
    case Kind::Quiz:
        return dropQuiz(data, target);
    case Kind::Effect:
    case Kind::Transition:
    case Kind::Animation:
    case Kind::PanAndZoom:
        return dropOnClip(a.kind, data, target);
    case Kind::Clip:
        return dropClip(data, target);
    case Kind::None:
        break;
    }
    return false;
}

bool DragAndDropHandler::dropFiles(const QMimeData* data, const Target& target)
{
    QString error;
    const std::optional<QStringList> expanded = expandDroppedPaths(localPaths(data), &error);
    if (!expanded) {
        refuse(error);
        return false;
    }
    QStringList media;
    QStringList drawings;
    for (const QString& path : *expanded)
        (MimeUtils::overlaySuffixes().contains(lowerSuffix(path)) ? drawings : media).append(path);
    if (media.isEmpty() && drawings.isEmpty()) {
        refuse(tr("The dropped folders hold no files."));
        return false;
    }
    if (!drawings.isEmpty()) {
        QMimeData svg;
        MimeUtils::packFiles(&svg, drawings);
        dropOverlays(&svg, target);
    }
    if (media.isEmpty())
        return true;

    // A track takes the files when they all fit it; otherwise each file's kind picks its track.
    const Timeline::Track* track = target.scenePoint ? m_timeline->extraVideoTrack() : target.track;
    if (track && !target.scenePoint) {
        const bool audioTrack = track->kind() == Timeline::Track::Audio;
        const bool fit = std::all_of(media.begin(), media.end(),
                                     [audioTrack](const QString& p) { return isAudioPath(p) == audioTrack; });
        if (!fit)
            track = nullptr;
    }
    m_imports.push_back(std::make_unique<Import>(*this, m_timeline, media, target.position, track));
    return true;
}

void DragAndDropHandler::finishImport(Import* import, int added)
{
    const auto it = std::find_if(m_imports.begin(), m_imports.end(),
                                 [import](const std::unique_ptr<Import>& i) { return i.get() == import; });
    if (it == m_imports.end())
        return;
    // The import is inside its own signal: it is freed in a later turn.
    std::unique_ptr<Import> finished = std::move(*it);
    m_imports.erase(it);
    QMetaObject::invokeMethod(
        this, [gone = std::shared_ptr<Import>(std::move(finished))] {}, Qt::QueuedConnection);
    Q_EMIT filesLanded(added);
}

bool DragAndDropHandler::dropOverlays(const QMimeData* data, const Target& target)
{
    std::vector<std::unique_ptr<Overlay::Preset>> presets = MimeUtils::makeOverlayPresetList(data);
    if (presets.empty()) {
        refuse(tr("The dragged titles cannot be read."));
        return false;
    }
    const Timeline::Clip* over =
        target.clip && m_timeline->contains(target.clip) && isVisual(target.clip) ? target.clip : nullptr;
    Types::Time position = target.position;
    for (std::unique_ptr<Overlay::Preset>& preset : presets) {
        if (target.scenePoint) {
            // The drop point becomes the title's origin in the picture.
            Overlay::Preset placed;
            placed.name = preset->name;
            placed.setTag(preset->tag());
            const QTransform to = QTransform::fromTranslate(target.scenePoint->x(), target.scenePoint->y());
            for (Overlay::Item item : preset->items())
                placed.appendItem(item.setTransform(Types::Transform(item.transform().toQTransform() * to)));
            *preset = placed;
        }
        RequestPublisher::publish(
            Timeline::OverlayAddRequest(m_timeline, std::move(preset), m_timeline->titleTrack(), over, position));
        if (position >= 0)
            position += Timeline::Clip::DEFAULT_TITLE_CLIP_DURATION;
    }
    return true;
}

bool DragAndDropHandler::dropQuiz(const QMimeData* data, const Target& target)
{
    QString error;
    std::optional<std::vector<Quiz::Question>> questions =
        Quiz::Utils::readQuestions(data->data(Quiz::Preset::mimeType->toQString()), &error);
    if (!questions) {
        refuse(error);
        return false;
    }
    auto quiz = std::make_unique<Quiz::Preset>();
    quiz->name = Types::String(tr("Quiz"));
    quiz->questions = std::move(*questions);
    RequestPublisher::publish(Timeline::QuizAddRequest(m_timeline, std::move(quiz), {target.position, 0}));
    return true;
}

bool DragAndDropHandler::dropOnClip(Kind kind, const QMimeData* data, const Target& target)
{
    const Timeline::Clip before = *target.clip;
    const bool dropped = kind == Kind::Effect       ? dropEffect(data, target)
                         : kind == Kind::Transition ? dropTransition(data, target)
                                                    : dropMotion(kind, data, target);
    if (!dropped || !m_undoStack || ClipContentCommand::sameContent(before, *target.clip))
        return dropped;
    const QString text = kind == Kind::Effect       ? tr("Add effect")
                         : kind == Kind::Transition ? tr("Add transition")
                         : kind == Kind::Animation  ? tr("Add animation")
                                                    : tr("Add pan and zoom");
    m_undoStack->push(new ClipContentCommand(text, target.clip, before, *target.clip));
    return true;
}

void DragAndDropHandler::setUndoStack(QUndoStack* stack) { m_undoStack = stack; }

QUndoStack* DragAndDropHandler::undoStack() const { return m_undoStack; }

bool DragAndDropHandler::dropEffect(const QMimeData* data, const Target& target)
{
    const auto lines = twoLines(data, effectFormat());
    if (!lines) {
        refuse(tr("The dragged effect cannot be read."));
        return false;
    }
    const Effect::Object effect(lines->first.toStdString(), lines->second.toStdString());
    Model::View<Timeline::Clip> clips;
    auto edit = clips.edit(target.clip);
    // A clip has one colour filter at a time.
    if (effect.collectionId() == EditorCollection::CollectionID::FILTERS_COLOR) {
        for (const Effect::Object* old : edit->effects()) {
            if (old->collectionId() == effect.collectionId())
                edit->removeEffect(old->id());
        }
    }
    edit->replaceEffect(&effect);
    return edit.commit();
}

bool DragAndDropHandler::dropTransition(const QMimeData* data, const Target& target)
{
    const auto lines = twoLines(data, transitionFormat());
    bool number = false;
    const qlonglong duration = lines ? lines->second.toLongLong(&number) : 0;
    if (!lines || !number || duration <= 0 || duration > 600 * Types::TimeUnitsPerSecond) {
        refuse(tr("The dragged transition cannot be read."));
        return false;
    }
    RequestPublisher::publish(Timeline::TransitionAddRequest(
        m_timeline, Transition::Object(lines->first.toStdString(), Types::Time(duration)), target.clip));
    return true;
}

bool DragAndDropHandler::dropMotion(Kind kind, const QMimeData* data, const Target& target)
{
    const bool animation = kind == Kind::Animation;
    std::optional<Animation::TransformationItem> item =
        Serialize::readAnimation(data->data(animation ? animationFormat() : panAndZoomFormat()));
    if (!item) {
        refuse(animation ? tr("The dragged animation cannot be read.")
                         : tr("The dragged pan and zoom cannot be read."));
        return false;
    }
    if (!animation) {
        RequestPublisher::publish(Timeline::PanAndZoomAddRequest(m_timeline, target.clip, std::move(*item)));
        return true;
    }
    // The animation starts where it was dropped, within the clip.
    const Timeline::ClipTiming& timing = m_timeline->clipTiming(target.clip);
    const Types::Time start = std::clamp<Types::Time>(target.position - timing.position, 0, timing.length);
    RequestPublisher::publish(Timeline::AnimationAddRequest(m_timeline, target.clip, std::move(*item), start));
    return true;
}

const Timeline::Clip* DragAndDropHandler::draggedClip(const QMimeData* data) const
{
    if (!m_timeline || !data)
        return nullptr;
    const QByteArray bytes = data->data(clipFormat());
    bool number = false;
    const quintptr address = bytes.size() <= 32 ? bytes.toULongLong(&number) : 0;
    if (!number)
        return nullptr;
    // Only compared with the timeline's clips, never followed: it may name anything.
    for (const Timeline::Clip* clip : m_timeline->clips()) {
        if (quintptr(clip) == address)
            return clip;
    }
    return nullptr;
}

bool DragAndDropHandler::dropClip(const QMimeData* data, const Target& target)
{
    const Timeline::Clip* clip = draggedClip(data);
    const Timeline::Track* track = target.track ? target.track : m_timeline->clipTiming(clip).track;
    Types::Time position = target.position;
    if (position < 0) {
        // No time: after the last clip of the track.
        position = 0;
        for (const Timeline::Clip* other : m_timeline->clipsOnTrack(track)) {
            if (other != clip)
                position = std::max(position, m_timeline->clipTiming(other).end());
        }
    }
    return TimelineEdits::moveClip(m_timeline, clip, track, position, m_undoStack);
}

void DragAndDropHandler::timelineGone()
{
    m_timeline = nullptr;
    for (const std::unique_ptr<Import>& import : m_imports)
        import->abandon();
}
