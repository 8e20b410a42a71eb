#include "StickyMoveController.h"

#include <Util/Sticky/StickyLinksSynchronizer.h>

#include <QBrush>
#include <QEvent>
#include <QGraphicsObject>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QKeyEvent>
#include <QPen>

#include <glog/logging.h>

#include <algorithm>
#include <cmath>

namespace {

QGraphicsItem* defaultPlaceholder(QGraphicsItem* grabbed, const QList<QGraphicsItem*>&)
{
    auto* box = new QGraphicsRectItem(grabbed->boundingRect());
    box->setPen(Qt::NoPen);
    box->setBrush(QBrush(QColor(128, 128, 128, 96)));
    return box;
}

bool samePoint(const StickyArea::StickyPoint& a, const StickyArea::StickyPoint& b)
{
    return a.area == b.area && a.pos == b.pos && a.level == b.level && a.index == b.index;
}

// Locks the areas that are not locked yet and remembers them.
void lockAll(const QList<StickyArea*>& areas, QList<StickyArea*>& locked)
{
    for (StickyArea* area : areas) {
        if (area && !area->isLocked() && !locked.contains(area)) {
            area->lockUpdate();
            locked.append(area);
        }
    }
}

void unlockAndLayOut(const QList<StickyArea*>& locked)
{
    for (StickyArea* area : locked) {
        area->unlockUpdate();
        area->updateLayout(nullptr);
    }
}

} // namespace

StickyMoveController::StickyMoveController(QObject* parent) : QObject(parent), m_placeholderFactory(&defaultPlaceholder)
{}

StickyMoveController::~StickyMoveController()
{
    if (m_dragging)
        abortDrag();
}

void StickyMoveController::addArea(StickyArea* area)
{
    if (!area) {
        LOG(ERROR) << "StickyMoveController::addArea: the area is null";
        return;
    }
    if (m_areas.contains(area))
        return;
    m_areas.append(area);
    connect(area, &QObject::destroyed, this, &StickyMoveController::onAreaDestroyed);
}

void StickyMoveController::removeArea(StickyArea* area)
{
    if (!area || !m_areas.removeAll(area))
        return;
    disconnect(area, nullptr, this, nullptr);
    const bool involved =
        m_placeholderArea == area
        || std::any_of(m_taken.cbegin(), m_taken.cend(), [area](const Taken& t) { return t.area == area; });
    if (m_dragging && involved)
        abortDrag();
}

void StickyMoveController::setSynchronizer(StickyLinksSynchronizer* synchronizer) { m_synchronizer = synchronizer; }

void StickyMoveController::setSnapSuspendModifier(Qt::KeyboardModifiers modifier) { m_snapModifier = modifier; }

void StickyMoveController::setSnapDistance(double distance)
{
    if (!(distance >= 0.0)) {
        LOG(ERROR) << "StickyMoveController::setSnapDistance: the distance must not be negative, not " << distance;
        return;
    }
    m_snapDistance = distance;
}

void StickyMoveController::setPlaceholderFactory(PlaceholderFactory factory)
{
    if (!factory) {
        LOG(ERROR) << "StickyMoveController::setPlaceholderFactory: the factory is empty";
        return;
    }
    m_placeholderFactory = std::move(factory);
}

bool StickyMoveController::startDrag(QGraphicsItem* grabbed, const QList<QGraphicsItem*>& items,
                                     const QPointF& scenePos)
{
    if (m_dragging) {
        LOG(ERROR) << "StickyMoveController::startDrag: a drag is already in progress";
        return false;
    }
    QList<QGraphicsItem*> dragged;
    for (QGraphicsItem* e : items) {
        if (e && !dragged.contains(e))
            dragged.append(e);
    }
    if (!grabbed && !dragged.isEmpty())
        grabbed = dragged.first();
    if (!grabbed) {
        LOG(ERROR) << "StickyMoveController::startDrag: there is no item to drag";
        return false;
    }
    if (!dragged.contains(grabbed))
        dragged.prepend(grabbed);
    QList<StickyArea*> sources;
    for (QGraphicsItem* e : qAsConst(dragged)) {
        StickyArea* area = areaHolding(e);
        if (!area) {
            LOG(ERROR) << "StickyMoveController::startDrag: an item stands in none of the controller's areas";
            return false;
        }
        sources.append(area);
    }

    m_dragging = true;
    m_grabbed = grabbed;
    m_items = dragged;
    m_grabOffset = grabbed->scenePos() - scenePos;
    m_lead = grabbed->scenePos();
    m_grabbedStart = m_lead;
    m_target = StickyArea::StickyPoint();
    m_suspended = false;
    if (m_synchronizer) {
        m_synchronizer->setSuspended(true);
        for (QGraphicsItem* master : qAsConst(dragged)) {
            for (QGraphicsItem* slave : m_synchronizer->slavesOf(master)) {
                if (!dragged.contains(slave))
                    m_followers.append({slave, slave->scenePos()});
            }
        }
    }
    QList<StickyArea*> locked;
    lockAll(sources, locked);
    for (int i = 0; i < dragged.size(); ++i) {
        QGraphicsItem* e = dragged.at(i);
        Taken taken;
        taken.item = e;
        taken.area = sources.at(i);
        taken.pos = e->scenePos();
        taken.offset = e->scenePos() - grabbed->scenePos();
        taken.point = sources.at(i)->itemPoint(e);
        sources.at(i)->removeItem(e);
        m_taken.append(taken);
        if (QGraphicsObject* object = e->toGraphicsObject())
            connect(object, &QObject::destroyed, this, [this, e] { onItemDestroyed(e); });
    }
    unlockAndLayOut(locked);
    m_scene = grabbed->scene();
    if (m_scene)
        m_scene->installEventFilter(this);
    emit dragStarted();
    return true;
}

void StickyMoveController::dragProcess(const QPointF& scenePos, Qt::KeyboardModifiers modifiers)
{
    if (!m_dragging) {
        LOG(ERROR) << "StickyMoveController::dragProcess: no drag is in progress";
        return;
    }
    m_suspended = m_snapModifier != Qt::NoModifier && (modifiers & m_snapModifier) == m_snapModifier;
    m_lead = scenePos + m_grabOffset;
    m_snapped = false;
    if (!m_suspended)
        m_lead = snapped(m_lead);
    const StickyArea::StickyPoint target = findTarget(m_lead, m_suspended);
    if (!samePoint(target, m_target)) {
        m_target = target;
        showPlaceholder();
        emit targetChanged();
    }
    // Sticking, the group stands at the target; suspended, it follows the cursor on that line.
    const QPointF at = m_target.area ? m_target.pos : m_lead;
    for (const Taken& t : qAsConst(m_taken)) {
        if (t.item)
            t.item->setPos(at + t.offset);
    }
    const double dx = at.x() - m_grabbedStart.x();
    for (const Follower& f : qAsConst(m_followers))
        f.item->setPos(f.pos.x() + dx, f.pos.y());
}

bool StickyMoveController::finishDrag()
{
    if (!m_dragging) {
        LOG(ERROR) << "StickyMoveController::finishDrag: no drag is in progress";
        return false;
    }
    StickyArea* area = m_target.area;
    if (!area) {
        abortDrag();
        return false;
    }
    QList<StickyArea*> locked;
    lockAll({area}, locked);
    removePlaceholder();
    // Left to right, so each item finds its place among the ones already dropped.
    QList<Taken> order = m_taken;
    std::stable_sort(order.begin(), order.end(),
                     [](const Taken& a, const Taken& b) { return a.offset.x() < b.offset.x(); });
    bool first = true;
    for (const Taken& t : qAsConst(order)) {
        StickyArea::StickyPoint point = m_target;
        if (!(first && t.item == m_grabbed)) {
            point = area->findStickyPoint(m_target.pos + t.offset, t.item);
            if (m_suspended)
                point.pos.setX(m_target.pos.x() + t.offset.x());
        }
        first = false;
        area->insertItem(point, t.item, false);
    }
    unlockAndLayOut(locked);
    const QList<QGraphicsItem*> items = m_items;
    // Slaves were only shown moving; their areas still hold them where they stood.
    for (const Follower& f : qAsConst(m_followers))
        f.item->setPos(f.pos);
    if (m_synchronizer) {
        m_synchronizer->setSuspended(false);
        m_synchronizer->synchronize(items);
    }
    end();
    emit dragFinished(items);
    return true;
}

void StickyMoveController::abortDrag()
{
    if (!m_dragging) {
        LOG(ERROR) << "StickyMoveController::abortDrag: no drag is in progress";
        return;
    }
    restore();
    if (m_synchronizer)
        m_synchronizer->setSuspended(false);
    end();
}

bool StickyMoveController::isDragging() const { return m_dragging; }

StickyArea::StickyPoint StickyMoveController::target() const { return m_target; }

bool StickyMoveController::isSnapSuspended() const { return m_suspended; }

bool StickyMoveController::isSnapped() const { return m_snapped; }

bool StickyMoveController::eventFilter(QObject* watched, QEvent* event)
{
    if (m_dragging && watched == m_scene && event->type() == QEvent::KeyPress
        && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape) {
        abortDrag();
        return true;
    }
    return QObject::eventFilter(watched, event);
}

StickyArea* StickyMoveController::areaHolding(const QGraphicsItem* item) const
{
    for (StickyArea* area : m_areas) {
        if (area && area->contains(item))
            return area;
    }
    return nullptr;
}

StickyArea::StickyPoint StickyMoveController::findTarget(const QPointF& lead, bool free) const
{
    StickyArea::StickyPoint best;
    double nearest = 0.0;
    for (StickyArea* area : m_areas) {
        if (!area || !area->isAcceptable(m_items))
            continue;
        StickyArea::StickyPoint p = area->findStickyPoint(lead, m_grabbed, m_items);
        const QPointF d = p.pos - lead;
        const double distance = QPointF::dotProduct(d, d);
        if (!best.area || distance < nearest) {
            best = p;
            best.area = area;
            nearest = distance;
        }
    }
    if (free && best.area)
        best.pos.setX(lead.x());
    return best;
}

// The lead moved so that the grabbed item's nearer edge meets the nearest edge in reach.
QPointF StickyMoveController::snapped(const QPointF& lead)
{
    m_snapped = false;
    if (m_snapDistance <= 0.0 || !m_grabbed)
        return lead;
    QList<double> edges = snapLines ? snapLines() : QList<double>();
    for (StickyArea* area : qAsConst(m_areas)) {
        if (!area)
            continue;
        for (QGraphicsItem* e : qAsConst(*area)) {
            const bool follower =
                std::any_of(m_followers.cbegin(), m_followers.cend(), [e](const Follower& f) { return f.item == e; });
            if (e == m_placeholder || follower)
                continue;
            const QRectF r = e->sceneBoundingRect();
            edges << r.left() << r.right();
        }
    }
    const QRectF own = m_grabbed->boundingRect();
    const double mine[] = {lead.x() + own.left(), lead.x() + own.right()};
    double shift = 0.0;
    for (double edge : qAsConst(edges)) {
        for (double x : mine) {
            const double d = edge - x;
            if (std::abs(d) <= m_snapDistance && (!m_snapped || std::abs(d) < std::abs(shift))) {
                shift = d;
                m_snapped = true;
            }
        }
    }
    return QPointF(lead.x() + shift, lead.y());
}

void StickyMoveController::showPlaceholder()
{
    StickyArea* area = m_target.area;
    const bool needed = area && area->placeholderNeeded();
    if (m_placeholderArea && (m_placeholderArea != area || !needed))
        removePlaceholder();
    if (!needed)
        return;
    if (!m_placeholder) {
        m_placeholder = m_placeholderFactory(m_grabbed, m_items);
        if (!m_placeholder)
            return;
        if (m_scene && !m_placeholder->scene())
            m_scene->addItem(m_placeholder);
    }
    if (m_placeholderArea == area) {
        area->moveItem(m_target, m_placeholder);
    } else {
        area->insertItem(m_target, m_placeholder, true);
        m_placeholderArea = area;
    }
    area->updateLayout(m_placeholder);
}

void StickyMoveController::removePlaceholder()
{
    if (m_placeholderArea && m_placeholder) {
        StickyArea* area = m_placeholderArea;
        m_placeholderArea = nullptr;
        area->removeItem(m_placeholder);
        area->updateLayout(nullptr);
    }
}

// Back in the reverse order of taking out, so each item finds its area as it left it.
void StickyMoveController::restore()
{
    removePlaceholder();
    QList<StickyArea*> areas;
    for (const Taken& t : qAsConst(m_taken))
        areas.append(t.area);
    QList<StickyArea*> locked;
    lockAll(areas, locked);
    for (int i = m_taken.size() - 1; i >= 0; --i) {
        const Taken& t = m_taken.at(i);
        if (t.item && t.area)
            t.area->insertItem(t.point, t.item, false);
    }
    locked.removeAll(nullptr);
    unlockAndLayOut(locked);
    for (const Taken& t : qAsConst(m_taken)) {
        if (t.item)
            t.item->setPos(t.pos);
    }
    for (const Follower& f : qAsConst(m_followers))
        f.item->setPos(f.pos);
}

void StickyMoveController::end()
{
    for (const Taken& t : qAsConst(m_taken)) {
        if (t.item) {
            if (QGraphicsObject* object = t.item->toGraphicsObject())
                disconnect(object, &QObject::destroyed, this, nullptr);
        }
    }
    if (m_scene)
        m_scene->removeEventFilter(this);
    delete m_placeholder;
    m_placeholder = nullptr;
    m_placeholderArea = nullptr;
    m_dragging = false;
    m_grabbed = nullptr;
    m_items.clear();
    m_taken.clear();
    m_followers.clear();
    m_target = StickyArea::StickyPoint();
    m_suspended = false;
    m_snapped = false;
    m_scene = nullptr;
}

void StickyMoveController::onAreaDestroyed(QObject*)
{
    m_areas.removeAll(QPointer<StickyArea>());
    if (!m_dragging)
        return;
    LOG(ERROR) << "StickyMoveController: an area was destroyed during a drag; the drag is aborted";
    abortDrag();
}

void StickyMoveController::onItemDestroyed(QGraphicsItem* item)
{
    if (!m_dragging)
        return;
    LOG(ERROR) << "StickyMoveController: a dragged item was destroyed during the drag; the drag is aborted";
    for (Taken& t : m_taken) {
        if (t.item == item)
            t.item = nullptr;
    }
    m_items.removeAll(item);
    if (m_grabbed == item)
        m_grabbed = nullptr;
    abortDrag();
}
