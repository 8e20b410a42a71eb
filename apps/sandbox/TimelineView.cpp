#include "TimelineView.h"

#include <Util/Filesystem.h>
#include <Util/Format.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Sticky/StickyFreeLine.h>

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QGraphicsLineItem>
#include <QGraphicsRectItem>
#include <QGraphicsSimpleTextItem>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>

#include <algorithm>
#include <set>
#include <utility>

namespace Sandbox {

namespace {

constexpr int AudioRole = 1;

bool isAudioTrack(const Timeline::Track* track)
{
    return track->kind() == Timeline::Track::NativeAudio || track->kind() == Timeline::Track::Audio;
}

QString trackName(const Timeline::Track* track)
{
    if (!track->name().empty())
        return track->name().toQString();
    switch (track->kind()) {
    case Timeline::Track::Video:
        return TimelineView::tr("Video");
    case Timeline::Track::Title:
        return TimelineView::tr("Titles");
    case Timeline::Track::ExtraVideo:
        return TimelineView::tr("Overlay video");
    case Timeline::Track::NativeAudio:
        return TimelineView::tr("Video sound");
    case Timeline::Track::Audio:
        return TimelineView::tr("Audio");
    }
    return QString();
}

// A track's line: it takes only clips of its kind (pictures or sound).
class TrackLine : public StickyFreeLine
{
public:
    TrackLine(bool audio, QObject* parent) : StickyFreeLine(parent), m_audio(audio) {}
    bool isAcceptable(const QList<QGraphicsItem*>& items) const override
    {
        return std::all_of(items.begin(), items.end(),
                           [this](QGraphicsItem* item) { return item->data(AudioRole).toBool() == m_audio; });
    }

private:
    bool m_audio;
};

} // namespace

// A clip on the timeline: a coloured bar with its name and length.
class ClipItem : public QGraphicsRectItem
{
public:
    ClipItem(const Timeline::Clip* clip, const Timeline::ClipTiming& timing)
        : QGraphicsRectItem(0, 0, TimelineView::xOf(timing.length) - TimelineView::headerWidth,
                            TimelineView::trackHeight - 8),
          clip(clip)
    {
        const bool audio = clip->type() == Timeline::Clip::Audio;
        setData(AudioRole, audio);
        QColor colour = audio ? QColor(60, 140, 90) : QColor(70, 110, 180);
        if (clip->type() == Timeline::Clip::Image)
            colour = QColor(150, 100, 170);
        if (clip->isBroken())
            colour = QColor(170, 60, 60);
        setBrush(colour);
        setPen(QPen(colour.darker(150), 1));
        setZValue(2);
        auto* label = new QGraphicsSimpleTextItem(this);
        label->setText(QStringLiteral("%1  %2").arg(clip->name().toQString(),
                                                    Format::timeMs(timing.length / Types::TimeUnitsPerMillisecond)));
        label->setBrush(Qt::white);
        label->setPos(5, 4);
        label->setFlag(QGraphicsItem::ItemStacksBehindParent, false);
        setFlag(QGraphicsItem::ItemClipsChildrenToShape);
    }

    void setSelectedLook(bool selected) { setPen(selected ? QPen(Qt::yellow, 3) : QPen(brush().color().darker(150))); }

    const Timeline::Clip* clip;
};

TimelineView::TimelineView(Model::Host& host, QWidget* parent) : QGraphicsView(parent), m_host(host)
{
    qRegisterMetaType<const Timeline::Clip*>();
    qRegisterMetaType<const Timeline::Track*>();
    setScene(new QGraphicsScene(this));
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setBackgroundBrush(QColor(38, 38, 42));
    setMinimumHeight(int(rulerHeight + 5 * trackHeight + 8));
}

TimelineView::~TimelineView() { clearItems(); }

void TimelineView::setTimeline(const Timeline::Object* timeline)
{
    if (m_timeline == timeline)
        return;
    if (m_timeline)
        forget(m_timeline);
    m_timeline = timeline;
    m_selected = nullptr;
    if (m_timeline)
        observe(m_timeline);
    rebuild();
    emit selectionChanged(nullptr);
}

const Timeline::Track* TimelineView::trackAt(int row) const
{
    return row >= 0 && row < int(m_lanes.size()) ? m_lanes[std::size_t(row)].track : nullptr;
}

int TimelineView::rowOf(const Timeline::Track* track) const
{
    for (std::size_t i = 0; i < m_lanes.size(); ++i)
        if (m_lanes[i].track == track)
            return int(i);
    return -1;
}

QPoint TimelineView::clipPoint(const Timeline::Clip* clip, double fraction) const
{
    const auto it = m_items.find(clip);
    if (it == m_items.end())
        return QPoint(-1, -1);
    const QRectF rect = it->second->sceneBoundingRect();
    return viewportPoint(QPointF(rect.left() + rect.width() * fraction, rect.center().y()));
}

void TimelineView::setPlayhead(Types::Time time)
{
    time = std::max<Types::Time>(0, time);
    if (time == m_playhead)
        return;
    m_playhead = time;
    if (m_playheadLine)
        m_playheadLine->setX(xOf(time));
    emit playheadMoved(time);
}

void TimelineView::selectClip(const Timeline::Clip* clip)
{
    if (clip && !m_items.count(clip))
        clip = nullptr;
    if (clip == m_selected)
        return;
    if (m_items.count(m_selected))
        m_items[m_selected]->setSelectedLook(false);
    m_selected = clip;
    if (clip)
        m_items[clip]->setSelectedLook(true);
    emit selectionChanged(clip);
}

const Timeline::Clip* TimelineView::placeFile(const Media::File* file, Types::Time position,
                                              const Timeline::Track* track)
{
    if (!m_timeline || !file || !file->isOpened() || !track)
        return nullptr;
    const Media::Video* video = file->mainVideo();
    const Media::Audio* audio = file->mainAudio();
    if (!video && !audio)
        return nullptr;
    // Pictures go to a picture track, sound to a sound track.
    if (video && isAudioTrack(track))
        track = m_timeline->primaryTrack();
    if (!video && !isAudioTrack(track)) {
        const std::vector<const Timeline::Track*> tracks = m_timeline->tracks();
        const auto it = std::find_if(tracks.begin(), tracks.end(),
                                     [](const Timeline::Track* t) { return t->kind() == Timeline::Track::Audio; });
        track = it != tracks.end() ? *it : m_timeline->nativeAudioTrack();
    }
    const QString name = QFileInfo(file->path().toQString()).fileName();
    const bool still = video && video->stillImage;
    const Types::Time length = still || file->duration() <= 0 ? FileAdder::DefaultClipLength : file->duration();
    const Timeline::Clip::Type type =
        video ? (still ? Timeline::Clip::Image : Timeline::Clip::Video) : Timeline::Clip::Audio;
    const Timeline::Clip* clip =
        m_host.addClip(Timeline::Clip(type, file, video ? video->index : audio->index).setName(name));
    position = std::max<Types::Time>(0, position);
    auto edit = m_host.edit(m_timeline);
    edit->addClip(clip, Timeline::ClipTiming(track, position, length));
    if (video && audio) {
        const Timeline::Clip* sound =
            m_host.addClip(Timeline::Clip(Timeline::Clip::Audio, file, audio->index).setName(name));
        edit->addClip(sound, Timeline::ClipTiming(m_timeline->nativeAudioTrack(), position, length));
        edit->addLink(clip, sound, 0);
    }
    return clip;
}

void TimelineView::recordChanged(const Timeline::Object*, const Timeline::Object*)
{
    if (m_drag.item)
        finishDrag(false);
    rebuild();
    emit timelineChanged();
}

void TimelineView::clearItems()
{
    m_composite.clear();
    for (const Lane& lane : m_lanes) {
        m_composite.removeStickySlot(lane.line);
        delete lane.line;
    }
    m_lanes.clear();
    m_laneOfSlot.clear();
    m_items.clear();
    m_playheadLine = nullptr;
    if (scene())
        scene()->clear();
}

void TimelineView::rebuild()
{
    clearItems();
    QGraphicsScene* s = scene();
    if (!m_timeline) {
        s->setSceneRect(0, 0, 800, rulerHeight);
        return;
    }
    const double width = std::max(xOf(m_timeline->duration()) + 400, 1200.0);
    // The ruler: a mark every second, its time every second second.
    for (int second = 0; xOf(Types::Time(second) * Types::TimeUnitsPerSecond) < width; ++second) {
        const double x = xOf(Types::Time(second) * Types::TimeUnitsPerSecond);
        s->addLine(x, rulerHeight - (second % 2 ? 5 : 10), x, rulerHeight, QPen(QColor(150, 150, 150)));
        if (second % 2 == 0) {
            QGraphicsSimpleTextItem* label = s->addSimpleText(Format::time(second));
            label->setBrush(QColor(190, 190, 190));
            label->setPos(x + 2, 2);
        }
    }
    const std::vector<const Timeline::Track*> tracks = m_timeline->tracks();
    for (std::size_t row = 0; row < tracks.size(); ++row) {
        const double top = rulerHeight + double(row) * trackHeight;
        QGraphicsRectItem* background =
            s->addRect(0, top, width, trackHeight - 1, Qt::NoPen, row % 2 ? QColor(50, 50, 56) : QColor(56, 56, 62));
        QGraphicsSimpleTextItem* name = s->addSimpleText(trackName(tracks[row]));
        name->setBrush(QColor(200, 200, 200));
        name->setPos(6, top + trackHeight / 2 - 8);
        auto* line = new TrackLine(isAudioTrack(tracks[row]), this);
        line->setOrigin(QPointF(headerWidth, top + 4));
        m_composite.addStickySlot(line, background);
        m_laneOfSlot[int(row)] = row;
        m_lanes.push_back(Lane{tracks[row], line, background});
    }
    for (const Timeline::Clip* clip : m_timeline->clips()) {
        const Timeline::ClipTiming& timing = m_timeline->clipTiming(clip);
        const int row = rowOf(timing.track);
        if (row < 0)
            continue;
        auto* item = new ClipItem(clip, timing);
        s->addItem(item);
        StickyArea* line = m_lanes[std::size_t(row)].line;
        const QPointF at(xOf(timing.position), line->origin().y());
        m_composite.insertItem(m_composite.findStickyPoint(at, item), item, false);
        m_items[clip] = item;
    }
    m_playheadLine =
        s->addLine(0, 0, 0, rulerHeight + double(tracks.size()) * trackHeight, QPen(QColor(255, 80, 60), 2));
    m_playheadLine->setZValue(10);
    m_playheadLine->setX(xOf(m_playhead));
    s->setSceneRect(0, 0, width, rulerHeight + double(tracks.size()) * trackHeight);
    if (m_items.count(m_selected))
        m_items[m_selected]->setSelectedLook(true);
    else if (m_selected) {
        m_selected = nullptr;
        emit selectionChanged(nullptr);
    }
}

ClipItem* TimelineView::clipItemAt(const QPoint& viewportPos) const
{
    for (QGraphicsItem* item : items(viewportPos)) {
        for (QGraphicsItem* i = item; i; i = i->parentItem())
            if (auto* clip = dynamic_cast<ClipItem*>(i))
                return clip;
    }
    return nullptr;
}

void TimelineView::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !m_timeline)
        return QGraphicsView::mousePressEvent(event);
    setFocus();
    ClipItem* item = clipItemAt(event->pos());
    if (!item) {
        selectClip(nullptr);
        setPlayhead(timeOf(std::max(headerWidth, mapToScene(event->pos()).x())));
        return;
    }
    selectClip(item->clip);
    m_drag = Drag();
    m_drag.item = item;
    m_drag.pressScene = mapToScene(event->pos());
    m_drag.startPos = item->pos();
    // The clip's master and every clip tied to it move together.
    const Timeline::Clip* master = m_timeline->isSlave(item->clip) ? m_timeline->masterOf(item->clip) : item->clip;
    std::set<const Timeline::Clip*> group = m_timeline->findSlaves(master);
    group.insert(master);
    for (const Timeline::Clip* clip : group)
        if (clip != item->clip && m_items.count(clip))
            m_drag.followers.emplace_back(m_items[clip], m_items[clip]->pos());
}

void TimelineView::mouseMoveEvent(QMouseEvent* event)
{
    if (!m_drag.item || !(event->buttons() & Qt::LeftButton))
        return QGraphicsView::mouseMoveEvent(event);
    moveDrag(mapToScene(event->pos()), !(event->modifiers() & Qt::AltModifier));
}

void TimelineView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!m_drag.item || event->button() != Qt::LeftButton)
        return QGraphicsView::mouseReleaseEvent(event);
    finishDrag(true);
}

void TimelineView::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && m_drag.item) {
        finishDrag(false);
        return;
    }
    QGraphicsView::keyPressEvent(event);
}

double TimelineView::snapX(double x, double width, bool& snapped) const
{
    std::vector<double> edges{xOf(0), xOf(m_playhead)};
    for (const auto& entry : m_items) {
        ClipItem* item = entry.second;
        const bool inGroup = item == m_drag.item
                             || std::any_of(m_drag.followers.begin(), m_drag.followers.end(),
                                            [item](const auto& follower) { return follower.first == item; });
        if (!inGroup) {
            edges.push_back(item->x());
            edges.push_back(item->x() + item->rect().width());
        }
    }
    double best = snapDistance + 1;
    double result = x;
    for (double edge : edges) {
        for (double offset : {0.0, width}) {
            const double distance = std::abs(x + offset - edge);
            if (distance <= snapDistance && distance < best) {
                best = distance;
                result = edge - offset;
            }
        }
    }
    snapped = best <= snapDistance;
    return result;
}

void TimelineView::moveDrag(const QPointF& scenePos, bool snapping)
{
    const QPointF delta = scenePos - m_drag.pressScene;
    if (!m_drag.moved && std::abs(delta.x()) < 3 && std::abs(delta.y()) < 3)
        return;
    m_drag.moved = true;
    double x = m_drag.startPos.x() + delta.x();
    m_drag.snapped = false;
    if (snapping)
        x = snapX(x, m_drag.item->rect().width(), m_drag.snapped);
    // Nothing of the group goes before the start.
    double groupLeft = m_drag.startPos.x();
    for (const auto& follower : m_drag.followers)
        groupLeft = std::min(groupLeft, follower.second.x());
    x = std::max(x, m_drag.startPos.x() - (groupLeft - headerWidth));
    const StickyArea::StickyPoint point =
        m_composite.findStickyPoint(QPointF(x, scenePos.y() - (TimelineView::trackHeight - 8) / 2), m_drag.item);
    if (m_laneOfSlot.count(point.index))
        m_composite.moveItem(point, m_drag.item);
    const double dx = m_drag.item->x() - m_drag.startPos.x();
    for (const auto& follower : m_drag.followers)
        follower.first->setX(follower.second.x() + dx);
}

void TimelineView::finishDrag(bool commit)
{
    Drag drag = std::exchange(m_drag, Drag());
    if (!drag.item)
        return;
    const Timeline::Clip* clip = drag.item->clip;
    if (!drag.moved)
        return; // a click
    const bool moved = commit && drag.item->pos() != drag.startPos;
    if (!moved) {
        // Nothing reached the model: the picture is drawn from it again.
        rebuild();
        emit dragEnded(clip, false, false);
        return;
    }
    const Types::Time delta = timeOf(drag.item->x()) - timeOf(drag.startPos.x());
    const Timeline::Track* track = m_timeline->clipTiming(clip).track;
    for (const Lane& lane : m_lanes)
        if (lane.line->contains(drag.item))
            track = lane.track;
    {
        auto edit = m_host.edit(m_timeline);
        Timeline::ClipTiming timing = m_timeline->clipTiming(clip);
        timing.position = timeOf(drag.item->x());
        timing.track = track;
        edit->moveClip(clip, timing);
        for (const auto& follower : drag.followers) {
            Timeline::ClipTiming followerTiming = m_timeline->clipTiming(follower.first->clip);
            followerTiming.position = std::max<Types::Time>(0, followerTiming.position + delta);
            edit->moveClip(follower.first->clip, followerTiming);
        }
    }
    emit dragEnded(clip, true, drag.snapped);
}

bool TimelineView::acceptsDrop(const QMimeData* data) const { return m_timeline && MimeUtils::hasUrls(data); }

void TimelineView::dragEnterEvent(QDragEnterEvent* event)
{
    if (acceptsDrop(event->mimeData()))
        event->acceptProposedAction();
}

void TimelineView::dragMoveEvent(QDragMoveEvent* event)
{
    if (acceptsDrop(event->mimeData()))
        event->acceptProposedAction();
}

void TimelineView::dropEvent(QDropEvent* event)
{
    if (!acceptsDrop(event->mimeData()))
        return;
    const QStringList extensions = Filesystem::supportedClipFileExtensions();
    const QStringList paths =
        MimeUtils::extractFiles(event->mimeData(), QSet<QString>(extensions.begin(), extensions.end()));
    if (paths.isEmpty())
        return;
    const QPointF at = mapToScene(event->pos());
    const int row = std::clamp(int((at.y() - rulerHeight) / trackHeight), 0, int(m_lanes.size()) - 1);
    event->acceptProposedAction();
    emit filesDropped(paths, timeOf(std::max(headerWidth, at.x())), trackAt(row));
}

} // namespace Sandbox
