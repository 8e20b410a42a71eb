#include "StickyArea.h"

#include <QGraphicsItem>

#include <glog/logging.h>

#include <cmath>
#include <iterator>

namespace {

// Heights are compared relatively, so that a relayout that lands on the same height up to
// rounding does not signal.
bool sameHeight(double a, double b)
{
    if (std::abs(a) <= 1e-12 && std::abs(b) <= 1e-12)
        return true;
    return std::abs(a - b) * 1e12 <= std::min(std::abs(a), std::abs(b));
}

} // namespace

StickyArea::StickyArea(QObject* parent) : QObject(parent) {}

StickyArea::~StickyArea() = default;

bool StickyArea::onDirection(const QPointF& p) const { return (p.y() - m_origin.y()) * m_verticalDirection > 0; }

bool StickyArea::isAcceptable(const QList<QGraphicsItem*>&) const { return true; }

StickyArea::StickyPoint StickyArea::findStickyPoint(const QPointF& pos, QGraphicsItem* const item,
                                                    const QList<QGraphicsItem*>&)
{
    return findStickyPoint(pos, item);
}

void StickyArea::insertItems(const StickyPoint& point, QGraphicsItem* item, const QList<QGraphicsItem*>& items)
{
    if (!item) {
        LOG(ERROR) << "StickyArea::insertItems: the leading item is null";
        return;
    }
    // The item under the cursor leads; the others keep their offsets to it.
    const QPointF delta = point.pos - item->scenePos();
    for (QGraphicsItem* e : items) {
        if (!e) {
            LOG(ERROR) << "StickyArea::insertItems: skipping a null item of the group";
            continue;
        }
        const StickyPoint sp = findStickyPoint(e->scenePos() + delta, e);
        insertItemInternal(sp, e);
        emit itemsCountChanged();
    }
}

void StickyArea::moveItems(const StickyPoint& point, QGraphicsItem* item, const QList<QGraphicsItem*>& items)
{
    if (!item) {
        LOG(ERROR) << "StickyArea::moveItems: the leading item is null";
        return;
    }
    const QPointF delta = point.pos - item->scenePos();
    for (QGraphicsItem* e : items) {
        if (!e) {
            LOG(ERROR) << "StickyArea::moveItems: skipping a null item of the group";
            continue;
        }
        const StickyPoint sp = findStickyPoint(e->scenePos() + delta, e);
        moveItemInternal(sp, e);
    }
}

void StickyArea::alignItems(QGraphicsItem*, QList<QGraphicsItem*>&) const {}

double StickyArea::width() const
{
    if (empty())
        return 0.0;
    double right = 0.0;
    bool first = true;
    for (auto it = begin(); it != end(); ++it) {
        const QGraphicsItem* item = *it;
        const double r = item->mapToScene(item->boundingRect().topRight()).x();
        if (first || r > right) {
            right = r;
            first = false;
        }
    }
    return right - m_origin.x();
}

bool StickyArea::placeholderNeeded() const { return m_placeholderNeeded; }

bool StickyArea::isMovingHolded(const QRectF&) const { return false; }

void StickyArea::storeKeyState() {}

void StickyArea::resetKeyState() {}

void StickyArea::insertItem(const StickyPoint& point, QGraphicsItem* item, bool placeholder)
{
    if (!item) {
        LOG(ERROR) << "StickyArea::insertItem: the item is null";
        return;
    }
    // The layout already sees a placeholder as one while it places it.
    if (placeholder)
        m_placeholders.insert(item);
    insertItemInternal(point, item);
    emit itemsCountChanged();
}

void StickyArea::moveItem(const StickyPoint& point, QGraphicsItem* item)
{
    if (!item) {
        LOG(ERROR) << "StickyArea::moveItem: the item is null";
        return;
    }
    moveItemInternal(point, item);
}

void StickyArea::removeItem(QGraphicsItem* item)
{
    if (item)
        removeItemInternal(item);
    if (!m_placeholders.isEmpty())
        m_placeholders.remove(item);
    emit itemsCountChanged();
}

void StickyArea::clear()
{
    QList<QGraphicsItem*> snapshot;
    QSet<QGraphicsItem*> seen;
    for (auto it = begin(); it != end(); ++it) {
        if (!seen.contains(*it)) {
            seen.insert(*it);
            snapshot.append(*it);
        }
    }
    for (QGraphicsItem* item : qAsConst(snapshot))
        removeItem(item);
}

std::uint64_t StickyArea::count() const { return static_cast<std::uint64_t>(std::distance(begin(), end())); }

bool StickyArea::empty() const { return begin() == end(); }

void StickyArea::updateLayout(QGraphicsItem* item)
{
    if (m_locked)
        return;
    updateLayoutInner(item);
    updateHeight();
}

void StickyArea::lockUpdate() { m_locked = true; }

void StickyArea::unlockUpdate() { m_locked = false; }

bool StickyArea::isLocked() const { return m_locked; }

QPointF StickyArea::origin() const { return m_origin; }

void StickyArea::setOrigin(const QPointF& p)
{
    if (p == m_origin)
        return;
    m_origin = p;
    if (m_locked)
        return;
    updateLayoutInner(nullptr);
    updateHeight();
}

StickyArea::VerticalDirection StickyArea::verticalDirection() const { return m_verticalDirection; }

void StickyArea::setVerticalDirection(VerticalDirection d)
{
    if (d == m_verticalDirection)
        return;
    m_verticalDirection = d;
    if (m_locked)
        return;
    updateLayoutInner(nullptr);
    updateHeight();
}

double StickyArea::itemExtent(const QGraphicsItem* item) const
{
    const QRectF r = item->boundingRect();
    if (m_verticalDirection == Down)
        return item->mapToScene(r.bottomLeft()).y() - m_origin.y();
    return m_origin.y() - item->mapToScene(r.topLeft()).y();
}

double StickyArea::height() const { return heightInner(); }

double StickyArea::heightInner() const
{
    if (empty())
        return 0.0;
    double kept = 0.0;
    bool first = true;
    for (auto it = begin(); it != end(); ++it) {
        const double e = itemExtent(*it);
        if (first || std::abs(e) > std::abs(kept)) {
            kept = e;
            first = false;
        }
    }
    return kept;
}

void StickyArea::enableHeightTracking(bool enabled) { m_heightTracking = enabled; }

bool StickyArea::heightTracking() const { return m_heightTracking; }

void StickyArea::setPlaceholderNeeded(bool needed) { m_placeholderNeeded = needed; }

void StickyArea::setAllowEmptyLevels(bool allow) { m_allowEmptyLevels = allow; }

bool StickyArea::isEmptyLevelsAllowed() const { return m_allowEmptyLevels; }

const QSet<QGraphicsItem*>& StickyArea::placeholders() const { return m_placeholders; }

QPointF StickyArea::groupDropPosition(const QPointF& pos, QGraphicsItem* item, const QList<QGraphicsItem*>& items)
{
    if (items.isEmpty() || !item)
        return pos;
    QRectF group;
    for (const QGraphicsItem* e : items) {
        if (e)
            group = group.united(e->sceneBoundingRect());
    }
    return pos + group.topLeft() - item->scenePos();
}

StickyArea::StickyPoint StickyArea::listItemPoint(const QList<QGraphicsItem*>& items, QGraphicsItem* item)
{
    StickyPoint point = defaultPoint();
    point.index = items.indexOf(item);
    if (item)
        point.pos = item->scenePos();
    return point;
}

void StickyArea::updateHeight()
{
    if (!m_heightTracking)
        return;
    const double h = height();
    if (sameHeight(h, m_trackedHeight))
        return;
    m_trackedHeight = h;
    emit heightChanged(h);
}
