#include "TimelineView.h"

#include <Util/Editor/ClipAdjustmentsProvider.h>
#include <Util/Editor/TimelineEdits.h>

#include <Util/Format.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Sticky/StickyLinksSynchronizer.h>

#include <QDragEnterEvent>
#include <QFileInfo>
#include <QGraphicsLineItem>
#include <QGraphicsRectItem>
#include <QGraphicsSimpleTextItem>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QUndoStack>

#include <algorithm>
#include <utility>

namespace Sandbox {

namespace {

constexpr int KindRole = 1;

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

} // namespace

TrackArea::TrackArea(Kind kind, int firstRow, std::vector<const Timeline::Track*> tracks, QObject* parent)
    : StickyMultiLine(parent), m_kind(kind), m_firstRow(firstRow), m_tracks(std::move(tracks))
{
    setOrigin(QPointF(TimelineView::headerWidth, TimelineView::rulerHeight + firstRow * TimelineView::trackHeight + 4));
    setLevelHeight(TimelineView::trackHeight - 8);
    setLevelSpacing(8);
    setDropsOpenLevels(false);
    setLevelCount(int(m_tracks.size()));
}

TrackArea::Kind TrackArea::kindOf(const Timeline::Track* track)
{
    if (track->kind() == Timeline::Track::Title)
        return Titles;
    return isAudioTrack(track) ? Sounds : Pictures;
}

TrackArea::Kind TrackArea::kindOf(const Timeline::Clip* clip)
{
    switch (clip->type()) {
    case Timeline::Clip::Audio:
        return Sounds;
    case Timeline::Clip::Title:
    case Timeline::Clip::Callout:
    case Timeline::Clip::Quiz:
        return Titles;
    default:
        return Pictures;
    }
}

bool TrackArea::isAcceptable(const QList<QGraphicsItem*>& items) const
{
    return std::all_of(items.begin(), items.end(),
                       [this](QGraphicsItem* item) { return item->data(KindRole).toInt() == m_kind; });
}

const Timeline::Track* TrackArea::trackOf(const QGraphicsItem* item) const
{
    const int level = itemLevel(item);
    return level >= 0 && level < int(m_tracks.size()) ? m_tracks[std::size_t(level)] : nullptr;
}

// Sound green, pictures violet, titles and callouts amber, quizzes teal, other video blue; a
// clip whose media is missing red.
QColor colourOf(const Timeline::Clip* clip)
{
    if (clip->isBroken())
        return QColor(170, 60, 60);
    switch (clip->type()) {
    case Timeline::Clip::Audio:
        return QColor(60, 140, 90);
    case Timeline::Clip::Image:
        return QColor(150, 100, 170);
    case Timeline::Clip::Title:
    case Timeline::Clip::Callout:
        return QColor(180, 120, 40);
    case Timeline::Clip::Quiz:
        return QColor(40, 140, 150);
    default:
        return QColor(70, 110, 180);
    }
}

// A clip on the timeline: a coloured bar with its name and length.
class ClipItem : public QGraphicsRectItem
{
public:
    ClipItem(const Timeline::Clip* clip, const Timeline::ClipTiming& timing)
        : QGraphicsRectItem(0, 0, TimelineView::xOf(timing.length) - TimelineView::headerWidth,
                            TimelineView::trackHeight - 8),
          clip(clip)
    {
        setData(KindRole, int(TrackArea::kindOf(clip)));
        setBrush(colourOf(clip));
        // No pen of its own: the item measures exactly its length, so edges meet exactly; the
        // outline is drawn inside by a child.
        setPen(Qt::NoPen);
        setZValue(2);
        m_frame = new QGraphicsRectItem(this);
        m_frame->setBrush(Qt::NoBrush);
        setSelectedLook(false);
        auto* label = new QGraphicsSimpleTextItem(this);
        label->setText(QStringLiteral("%1  %2").arg(clip->name().toQString(),
                                                    Format::timeMs(timing.length / Types::TimeUnitsPerMillisecond)));
        label->setBrush(Qt::white);
        label->setPos(5, 4);
        label->setFlag(QGraphicsItem::ItemStacksBehindParent, false);
        const QString extras = ClipAdjustmentsProvider::contentNames(clip).join(QStringLiteral(" \u00b7 "));
        if (!extras.isEmpty()) {
            auto* line = new QGraphicsSimpleTextItem(extras, this);
            line->setBrush(QColor(255, 225, 130));
            line->setPos(5, 20);
        }
        setFlag(QGraphicsItem::ItemClipsChildrenToShape);
    }

    void setSelectedLook(bool selected)
    {
        const double width = selected ? 3 : 1;
        m_frame->setPen(selected ? QPen(Qt::yellow, width) : QPen(brush().color().darker(150), width));
        m_frame->setRect(rect().adjusted(width / 2, width / 2, -width / 2, -width / 2));
    }

    const Timeline::Clip* clip;

private:
    QGraphicsRectItem* m_frame;
};

class TimelineView::ClipWatch : public Model::View<Timeline::Clip>
{
public:
    explicit ClipWatch(TimelineView& view) : m_view(view) {}

private:
    void recordChanged(const Timeline::Clip*, const Timeline::Clip*) override
    {
        m_view.recordChanged(m_view.m_timeline, m_view.m_timeline);
    }

    TimelineView& m_view;
};

TimelineView::TimelineView(Model::Host& host, QWidget* parent)
    : QGraphicsView(parent), m_host(host), m_clipWatch(std::make_unique<ClipWatch>(*this))
{
    qRegisterMetaType<const Timeline::Clip*>();
    viewport()->setMouseTracking(true); // the cursor shows where an edge can be trimmed
    qRegisterMetaType<const Timeline::Track*>();
    setScene(new QGraphicsScene(this));
    setAlignment(Qt::AlignLeft | Qt::AlignTop);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setBackgroundBrush(QColor(38, 38, 42));
    setMinimumHeight(int(rulerHeight + 5 * trackHeight + 8));
    // The view is not zoomed: a scene unit is a pixel.
    m_controller.setSnapDistance(snapDistance);
    m_controller.snapLines = [this] { return QList<double>{xOf(0), xOf(m_playhead)}; };
}

TimelineView::~TimelineView()
{
    if (m_controller.isDragging())
        m_controller.abortDrag();
    clearItems();
}

bool TimelineView::removeSelected()
{
    return m_timeline && m_timeline->contains(m_selected) && TimelineEdits::removeClip(m_timeline, m_selected, m_undo);
}

const Timeline::Clip* TimelineView::splitSelected()
{
    return m_timeline && m_timeline->contains(m_selected)
               ? TimelineEdits::splitClip(m_timeline, m_selected, m_playhead, m_undo)
               : nullptr;
}

void TimelineView::setUndoStack(QUndoStack* undo)
{
    m_undo = undo;
    if (m_drops)
        m_drops->setUndoStack(undo);
}

void TimelineView::setTimeline(const Timeline::Object* timeline)
{
    if (m_timeline == timeline)
        return;
    if (m_timeline)
        forget(m_timeline);
    m_timeline = timeline;
    m_selected = nullptr;
    m_drops.reset();
    if (m_timeline) {
        observe(m_timeline);
        m_drops = std::make_unique<DragAndDropHandler>(m_timeline);
        m_drops->setUndoStack(m_undo);
        connect(m_drops.get(), &DragAndDropHandler::filesLanded, this, &TimelineView::filesLanded);
        connect(m_drops.get(), &DragAndDropHandler::projectDropped, this, &TimelineView::projectDropped);
        connect(m_drops.get(), &DragAndDropHandler::statusChanged, this, &TimelineView::dropStatus);
        connect(m_drops.get(), &DragAndDropHandler::dropRefused, this, &TimelineView::dropRefused);
    }
    rebuild();
    emit selectionChanged(nullptr);
}

const Timeline::Track* TimelineView::trackAt(int row) const
{
    return row >= 0 && row < int(m_tracks.size()) ? m_tracks[std::size_t(row)] : nullptr;
}

int TimelineView::rowOf(const Timeline::Track* track) const
{
    const auto it = std::find(m_tracks.begin(), m_tracks.end(), track);
    return it == m_tracks.end() ? -1 : int(it - m_tracks.begin());
}

const TrackArea* TimelineView::areaOf(const Timeline::Track* track) const
{
    for (const TrackArea* area : m_areas)
        if (std::find(area->tracks().begin(), area->tracks().end(), track) != area->tracks().end())
            return area;
    return nullptr;
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
    if (m_controller.isDragging()) {
        m_controller.abortDrag();
        endAborted();
    }
    rebuild();
    emit timelineChanged();
}

void TimelineView::clearItems()
{
    m_press = Press();
    // The synchronizer deletes the indicators it shows: it goes before the scene's items.
    delete m_links;
    m_links = nullptr;
    for (TrackArea* area : m_areas) {
        m_controller.removeArea(area);
        delete area;
    }
    m_areas.clear();
    m_tracks.clear();
    m_items.clear();
    m_playheadLine = nullptr;
    m_trimGuide = nullptr;
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
    m_tracks = m_timeline->tracks();
    for (std::size_t row = 0; row < m_tracks.size(); ++row) {
        const double top = rulerHeight + double(row) * trackHeight;
        s->addRect(0, top, width, trackHeight - 1, Qt::NoPen, row % 2 ? QColor(50, 50, 56) : QColor(56, 56, 62));
        QGraphicsSimpleTextItem* name = s->addSimpleText(trackName(m_tracks[row]));
        name->setBrush(QColor(200, 200, 200));
        name->setPos(6, top + trackHeight / 2 - 8);
    }
    // Neighbouring tracks of one kind make one multi-line, a level per track.
    for (std::size_t row = 0; row < m_tracks.size();) {
        const TrackArea::Kind kind = TrackArea::kindOf(m_tracks[row]);
        std::size_t next = row;
        while (next < m_tracks.size() && TrackArea::kindOf(m_tracks[next]) == kind)
            ++next;
        auto* area = new TrackArea(kind, int(row), {m_tracks.begin() + long(row), m_tracks.begin() + long(next)}, this);
        m_areas.push_back(area);
        m_controller.addArea(area);
        row = next;
    }
    for (const Timeline::Clip* clip : m_timeline->clips()) {
        const Timeline::ClipTiming& timing = m_timeline->clipTiming(clip);
        const TrackArea* held = areaOf(timing.track);
        if (!held)
            continue;
        auto* area = const_cast<TrackArea*>(held);
        m_clipWatch->observe(clip);
        auto* item = new ClipItem(clip, timing);
        s->addItem(item);
        const int level = rowOf(timing.track) - area->firstRow();
        area->insertItem(StickyArea::StickyPoint(area, QPointF(xOf(timing.position), area->levelY(level)), level), item,
                         false);
        m_items[clip] = item;
    }
    for (TrackArea* area : m_areas)
        area->updateLayout(nullptr);
    // A clip's linked clips (its sound) stand beside it and follow its drags.
    m_links = new StickyLinksSynchronizer(this);
    for (TrackArea* area : m_areas)
        m_links->watch(area);
    for (const auto& [clip, item] : m_items) {
        const Timeline::Clip* master = m_timeline->isSlave(clip) ? m_timeline->masterOf(clip) : nullptr;
        if (master && m_items.count(master))
            m_links->link(m_items[master], item, item->x() - m_items[master]->x());
    }
    m_controller.setSynchronizer(m_links);
    m_playheadLine =
        s->addLine(0, 0, 0, rulerHeight + double(m_tracks.size()) * trackHeight, QPen(QColor(255, 80, 60), 2));
    m_playheadLine->setZValue(10);
    m_playheadLine->setX(xOf(m_playhead));
    s->setSceneRect(0, 0, width, rulerHeight + double(m_tracks.size()) * trackHeight);
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
    // The right button chooses the clip its menu (the view's actions) is about.
    if (event->button() == Qt::RightButton && m_timeline && !m_controller.isDragging()) {
        ClipItem* item = clipItemAt(event->pos());
        selectClip(item ? item->clip : nullptr);
        return;
    }
    if (event->button() != Qt::LeftButton || !m_timeline || m_controller.isDragging())
        return QGraphicsView::mousePressEvent(event);
    setFocus();
    ClipItem* item = clipItemAt(event->pos());
    if (!item) {
        selectClip(nullptr);
        setPlayhead(timeOf(std::max(headerWidth, mapToScene(event->pos()).x())));
        return;
    }
    selectClip(item->clip);
    m_press = Press();
    m_press.item = item;
    m_press.scene = mapToScene(event->pos());
    m_press.trim = edgeAt(item, m_press.scene.x());
}

std::optional<TimelineEdits::Edge> TimelineView::edgeAt(const ClipItem* item, double sceneX)
{
    constexpr double grip = 5; // pixels either side of an edge
    const QRectF bar = item->sceneBoundingRect();
    if (bar.width() < 4 * grip)
        return std::nullopt; // too short to tell its edges from its middle
    if (std::abs(sceneX - bar.left()) <= grip)
        return TimelineEdits::Edge::Start;
    if (std::abs(sceneX - bar.right()) <= grip)
        return TimelineEdits::Edge::End;
    return std::nullopt;
}

// A sound tied to a video moves it: the drag takes the master, whose slaves follow.
void TimelineView::startDrag()
{
    QGraphicsItem* master = m_links->masterOf(m_press.item);
    m_press.dragged = master ? static_cast<ClipItem*>(master) : m_press.item;
    if (!m_controller.startDrag(m_press.dragged, {m_press.dragged}, m_press.scene)) {
        m_press = Press();
        return;
    }
    m_press.dragged->setZValue(5);
}

void TimelineView::mouseMoveEvent(QMouseEvent* event)
{
    if (!(event->buttons() & Qt::LeftButton)) {
        const ClipItem* over = m_controller.isDragging() ? nullptr : clipItemAt(event->pos());
        const bool onEdge = over && edgeAt(over, mapToScene(event->pos()).x());
        viewport()->setCursor(onEdge ? Qt::SizeHorCursor : Qt::ArrowCursor);
    }
    if (!m_press.item || !(event->buttons() & Qt::LeftButton))
        return QGraphicsView::mouseMoveEvent(event);
    QPointF at = mapToScene(event->pos());
    if (m_press.trim) {
        const double x = std::max(headerWidth, at.x());
        const double top = m_press.item->sceneBoundingRect().top();
        if (!m_trimGuide) {
            m_trimGuide = scene()->addLine(QLineF(), QPen(Qt::yellow, 2));
            m_trimGuide->setZValue(11);
        }
        m_trimGuide->setLine(x, top - 4, x, top + trackHeight - 4);
        return;
    }
    if (!m_press.dragged) {
        const QPointF delta = at - m_press.scene;
        if (std::abs(delta.x()) < 3 && std::abs(delta.y()) < 3)
            return;
        startDrag();
        if (!m_press.dragged)
            return;
    }
    if (!m_controller.isDragging())
        return; // aborted; the rest of this press is ignored
    // Through a tied sound, the video keeps its track and only moves in time.
    if (m_press.dragged != m_press.item)
        at.setY(m_press.scene.y());
    m_controller.dragProcess(at, event->modifiers());
    m_press.snapped = m_controller.isSnapped();
}

void TimelineView::mouseReleaseEvent(QMouseEvent* event)
{
    if (!m_press.item || event->button() != Qt::LeftButton)
        return QGraphicsView::mouseReleaseEvent(event);
    const Press press = std::exchange(m_press, Press());
    if (press.trim) {
        delete std::exchange(m_trimGuide, nullptr);
        const double x = std::max(headerWidth, mapToScene(event->pos()).x());
        if (std::abs(x - press.scene.x()) >= 3)
            TimelineEdits::trimClip(m_timeline, press.item->clip, *press.trim, timeOf(x), m_undo);
        return;
    }
    if (!press.dragged || !m_controller.isDragging())
        return; // a click, or a drag already aborted
    if (!m_controller.finishDrag()) {
        m_press = press;
        endAborted();
        return;
    }
    commitDrag(press);
}

void TimelineView::keyPressEvent(QKeyEvent* event)
{
    const bool wasDragging = m_controller.isDragging();
    // The scene hands Escape to the controller, which puts every item back.
    QGraphicsView::keyPressEvent(event);
    if (wasDragging && event->key() == Qt::Key_Escape) {
        if (m_controller.isDragging())
            m_controller.abortDrag();
        endAborted();
    }
}

void TimelineView::endAborted()
{
    const Press press = std::exchange(m_press, Press());
    if (!press.dragged)
        return;
    press.dragged->setZValue(2);
    emit dragEnded(press.item->clip, false, false);
}

void TimelineView::commitDrag(const Press& press)
{
    // The edit rebuilds the picture: no item is used after it.
    const Timeline::Clip* clip = press.dragged->clip;
    const Timeline::Clip* grabbed = press.item->clip;
    press.dragged->setZValue(2);
    const Timeline::Track* track = nullptr;
    for (const TrackArea* area : m_areas)
        if (!track)
            track = area->trackOf(press.dragged);
    const Timeline::ClipTiming& timing = m_timeline->clipTiming(clip);
    const Types::Time position = timeOf(press.dragged->x());
    if (!track || (position == timing.position && track == timing.track)) {
        emit dragEnded(grabbed, false, false);
        return;
    }
    TimelineEdits::moveClip(m_timeline, clip, track, position, m_undo);
    emit dragEnded(grabbed, true, press.snapped);
}

DragAndDropHandler::Target TimelineView::dropTarget(const QPoint& viewportPos) const
{
    const QPointF at = mapToScene(viewportPos);
    const int row = std::clamp(int((at.y() - rulerHeight) / trackHeight), 0, std::max(0, int(m_tracks.size()) - 1));
    ClipItem* under = clipItemAt(viewportPos);
    return DragAndDropHandler::Target::onTimeline(trackAt(row), timeOf(std::max(headerWidth, at.x())),
                                                  under ? under->clip : nullptr);
}

void TimelineView::dragEnterEvent(QDragEnterEvent* event)
{
    if (!m_drops)
        return event->ignore();
    m_drops->dragEnterEvent(event, dropTarget(event->pos()));
}

void TimelineView::dragMoveEvent(QDragMoveEvent* event)
{
    if (!m_drops)
        return event->ignore();
    m_drops->dragMoveEvent(event, dropTarget(event->pos()));
}

void TimelineView::dragLeaveEvent(QDragLeaveEvent* event)
{
    if (m_drops)
        m_drops->dragLeaveEvent(event);
}

void TimelineView::dropEvent(QDropEvent* event)
{
    if (!m_drops)
        return event->ignore();
    const DragAndDropHandler::Target target = dropTarget(event->pos());
    const QMimeData* data = event->mimeData();
    if (MimeUtils::mimeDragAsrc(data) != QLatin1String("bin"))
        return m_drops->dropEvent(event, target);
    // The bin's files are open already: placed at once, each with its sound.
    const DragAndDropHandler::Assessment assessment = m_drops->assess(data, target);
    m_drops->dragLeaveEvent(nullptr);
    if (!assessment.accepted || assessment.kind != DragAndDropHandler::Kind::Files) {
        event->ignore();
        emit dropRefused(assessment.reason);
        return;
    }
    QStringList paths;
    for (const QUrl& url : data->urls())
        if (url.isLocalFile())
            paths << url.toLocalFile();
    event->acceptProposedAction();
    emit filesDropped(paths, target.position, target.track);
}

} // namespace Sandbox
