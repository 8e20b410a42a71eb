#include "StickyMagneticLine.h"

#include <QGraphicsItem>

#include <glog/logging.h>

#include <algorithm>

StickyMagneticLine::StickyMagneticLine(QObject* parent) : StickyListArea(parent) {}

StickyMagneticLine::~StickyMagneticLine() = default;

StickyArea::StickyPoint StickyMagneticLine::findStickyPoint(const QPointF& pos, QGraphicsItem* const item,
                                                            const QList<QGraphicsItem*>& items)
{
    return findStickyPoint(groupDropPosition(pos, item, items), item);
}

StickyArea::StickyPoint StickyMagneticLine::findStickyPoint(const QPointF& pos, QGraphicsItem* const)
{
    StickyPoint point = defaultPoint();
    if (m_items.isEmpty()) {
        point.pos = origin();
        point.index = 0;
        return point;
    }
    const std::vector<double>& e = edges();
    // The greatest edge <= pos.x, or the first edge when pos.x lies left of all of them.
    auto it = std::lower_bound(e.cbegin(), e.cend(), pos.x());
    if (it == e.cend())
        --it;
    else if (it != e.cbegin() && *it != pos.x())
        --it;
    point.pos = QPointF(*it, origin().y());
    point.index = static_cast<int>(it - e.cbegin());
    return point;
}

StickyArea::StickyPoint StickyMagneticLine::itemPoint(QGraphicsItem* item) { return listItemPoint(m_items, item); }

QGraphicsItem* StickyMagneticLine::itemAt(const StickyPoint& point)
{
    if (m_items.isEmpty())
        return nullptr;
    return m_items.at(qBound(0, point.index, m_items.size() - 1));
}

void StickyMagneticLine::insertItems(const StickyPoint& point, QGraphicsItem*, const QList<QGraphicsItem*>& items)
{
    StickyArea* area = point.area ? point.area : this;
    double offset = 0.0;
    for (QGraphicsItem* e : items) {
        if (!e) {
            LOG(ERROR) << "StickyMagneticLine::insertItems: skipping a null item of the group";
            continue;
        }
        const StickyPoint sp = area->findStickyPoint(QPointF(point.pos.x() + offset, point.pos.y()), e);
        area->insertItem(sp, e, false);
        offset += e->boundingRect().right();
    }
}

void StickyMagneticLine::alignItems(QGraphicsItem* item, QList<QGraphicsItem*>& items) const
{
    const int at = item ? items.indexOf(item) : -1;
    if (at < 0)
        return;
    QPointF p = item->scenePos();
    for (int j = at - 1; j >= 0; --j) {
        QGraphicsItem* e = items.at(j);
        if (!e)
            continue;
        p.rx() -= itemDuration(e);
        e->setPos(p);
    }
    p = item->scenePos();
    p.rx() += itemDuration(item);
    for (int j = at + 1; j < items.size(); ++j) {
        QGraphicsItem* e = items.at(j);
        if (!e)
            continue;
        e->setPos(p);
        p.rx() += itemDuration(e);
    }
}

double StickyMagneticLine::width() const
{
    if (m_items.isEmpty())
        return 0.0;
    double x = origin().x();
    for (QGraphicsItem* item : m_items)
        x += itemDuration(item);
    return x;
}

void StickyMagneticLine::insertItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    if (point.index < 0 || point.index >= m_items.size())
        m_items.append(item);
    else
        m_items.insert(point.index, item);
    m_edgesValid = false;
}

void StickyMagneticLine::moveItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    const int from = m_items.indexOf(item);
    if (from < 0) {
        LOG(ERROR) << "StickyMagneticLine::moveItem: the item is not on this line";
        return;
    }
    const int to = qBound(0, point.index, m_items.size() - 1);
    m_items.move(from, to);
    m_edgesValid = false;
}

void StickyMagneticLine::removeItemInternal(QGraphicsItem* item)
{
    if (m_items.removeAll(item) > 0)
        m_edgesValid = false;
}

void StickyMagneticLine::updateLayoutInner(QGraphicsItem*)
{
    const double y = origin().y();
    double x = origin().x();
    for (QGraphicsItem* item : qAsConst(m_items)) {
        item->setPos(x, y);
        x += itemDuration(item);
    }
    m_edgesValid = false;
}

double StickyMagneticLine::itemDuration(QGraphicsItem* item) const { return item->boundingRect().width(); }

// The running right ends of the non-placeholder items, after the origin, sorted and with
// equal values collapsed.
const std::vector<double>& StickyMagneticLine::edges()
{
    const double originX = origin().x();
    // Inside a locked batch callers resize and reorder items without a layout in between, so
    // the edges are measured afresh; outside one every change ends with updateLayout.
    if (m_edgesValid && m_edgesOriginX == originX && !isLocked())
        return m_edges;
    const QSet<QGraphicsItem*>& skipped = placeholders();
    m_edges.clear();
    m_edges.reserve(static_cast<size_t>(m_items.size()) + 1);
    m_edges.push_back(originX);
    double x = originX;
    bool ascending = true;
    for (QGraphicsItem* item : qAsConst(m_items)) {
        if (!skipped.isEmpty() && skipped.contains(item))
            continue;
        x += itemDuration(item);
        ascending = ascending && !(x < m_edges.back());
        m_edges.push_back(x);
    }
    // Negative durations (a subclass may define them) break the running order.
    if (!ascending)
        std::sort(m_edges.begin(), m_edges.end());
    m_edges.erase(std::unique(m_edges.begin(), m_edges.end(), [](double a, double b) { return !(a < b) && !(b < a); }),
                  m_edges.end());
    m_edgesOriginX = originX;
    m_edgesValid = true;
    return m_edges;
}
