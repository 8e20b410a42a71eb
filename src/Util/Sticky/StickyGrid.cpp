#include "StickyGrid.h"

#include <QGraphicsItem>
#include <QHash>

#include <glog/logging.h>

#include <algorithm>

StickyGrid::StickyGrid(QObject* parent) : StickyArea(parent) {}

StickyGrid::~StickyGrid() = default;

bool StickyGrid::contains(const QGraphicsItem* item) const
{
    return m_items.contains(const_cast<QGraphicsItem*>(item));
}

QList<QGraphicsItem*>::const_iterator StickyGrid::begin() const { return m_items.cbegin(); }

QList<QGraphicsItem*>::iterator StickyGrid::begin() { return m_items.begin(); }

QList<QGraphicsItem*>::const_iterator StickyGrid::end() const { return m_items.cend(); }

QList<QGraphicsItem*>::iterator StickyGrid::end() { return m_items.end(); }

StickyArea::StickyPoint StickyGrid::findStickyPoint(const QPointF& pos, QGraphicsItem* const item,
                                                    const QList<QGraphicsItem*>& items)
{
    return findStickyPoint(groupDropPosition(pos, item, items), item);
}

StickyArea::StickyPoint StickyGrid::findStickyPoint(const QPointF& pos, QGraphicsItem* const)
{
    StickyPoint point = defaultPoint();
    point.pos = origin();
    point.index = 0;
    double nearest = (point.pos - pos).manhattanLength();
    for (int i = 0; i < m_items.size(); ++i) {
        const QPointF p = m_items.at(i)->scenePos();
        const double d = (p - pos).manhattanLength();
        if (d < nearest) {
            nearest = d;
            point.pos = p;
            point.index = i;
        }
    }
    return point;
}

StickyArea::StickyPoint StickyGrid::itemPoint(QGraphicsItem* item) { return listItemPoint(m_items, item); }

QGraphicsItem* StickyGrid::itemAt(const StickyPoint& point)
{
    if (m_items.isEmpty())
        return nullptr;
    return m_items.at(qBound(0, point.index, m_items.size() - 1));
}

void StickyGrid::insertItems(const StickyPoint& point, QGraphicsItem*, const QList<QGraphicsItem*>& items)
{
    for (int j = items.size() - 1; j >= 0; --j)
        insertItem(point, items.at(j), false);
}

void StickyGrid::alignItems(QGraphicsItem* item, QList<QGraphicsItem*>& items) const
{
    if (!item || !items.contains(item))
        return;
    QHash<const QGraphicsItem*, int> gridPosition;
    gridPosition.reserve(m_items.size());
    for (int i = m_items.size() - 1; i >= 0; --i)
        gridPosition.insert(m_items.at(i), i);
    std::stable_sort(items.begin(), items.end(), [&gridPosition](QGraphicsItem* a, QGraphicsItem* b) {
        return gridPosition.value(a, -1) < gridPosition.value(b, -1);
    });
    QPointF p = item->scenePos();
    // Five units right and five up in the grabbed item's own coordinates.
    const QPointF step = item->mapToScene(QPointF(5.0, -5.0)) - p;
    int k = 0;
    for (QGraphicsItem* e : qAsConst(items)) {
        if (!e)
            continue;
        if (k < 5)
            p += step;
        e->setPos(p);
        ++k;
    }
}

double StickyGrid::width() const { return m_size.width(); }

StickyGrid::Direction StickyGrid::direction() const { return m_direction; }

void StickyGrid::setDirection(Direction d)
{
    m_direction = d;
    updateLayout(nullptr);
}

void StickyGrid::setWidth(double w)
{
    m_size.setWidth(w);
    if (m_direction == Rows)
        updateLayout(nullptr);
}

void StickyGrid::setHeight(double h)
{
    m_size.setHeight(h);
    if (m_direction == Columns)
        updateLayout(nullptr);
}

QPointF StickyGrid::spacing() const { return m_spacing; }

void StickyGrid::setSpacing(const QPointF& s)
{
    if (s == m_spacing)
        return;
    m_spacing = s;
    updateLayout(nullptr);
}

QRectF StickyGrid::rect()
{
    QRectF united;
    for (const QGraphicsItem* item : qAsConst(m_items))
        united = united.united(item->boundingRect().translated(item->pos()));
    return united;
}

QSizeF StickyGrid::size() { return rect().size(); }

void StickyGrid::sortItems(const std::function<bool(QGraphicsItem*, QGraphicsItem*)>& less)
{
    if (!less) {
        LOG(ERROR) << "StickyGrid::sortItems: the order is empty";
        return;
    }
    std::stable_sort(m_items.begin(), m_items.end(), less);
}

void StickyGrid::insertItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    if (point.index >= 0 && point.index < m_items.size())
        m_items.insert(point.index, item);
    else
        m_items.append(item);
    item->setPos(point.pos);
}

void StickyGrid::moveItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    const int from = m_items.indexOf(item);
    if (from < 0) {
        LOG(ERROR) << "StickyGrid::moveItem: the item is not in this grid";
        return;
    }
    m_items.move(from, qBound(0, point.index, m_items.size() - 1));
    item->setPos(point.pos);
}

void StickyGrid::removeItemInternal(QGraphicsItem* item) { m_items.removeAll(item); }

void StickyGrid::updateLayoutInner(QGraphicsItem*)
{
    const QPointF o = origin();
    double x = o.x();
    double y = o.y();
    double rowHeight = 0.0;
    double columnWidth = 0.0;
    for (QGraphicsItem* item : qAsConst(m_items)) {
        const QRectF r = item->boundingRect();
        // The overflow test comes before placing, also for the first item of a row.
        if (m_direction == Rows) {
            if (m_size.width() < r.width() + (x - o.x())) {
                x = o.x();
                y += rowHeight + m_spacing.y();
                rowHeight = 0.0;
            }
            item->setPos(x, y);
            x += r.width() + m_spacing.x();
        } else if (m_direction == Columns) {
            if (m_size.height() < r.height() + (y - o.y())) {
                y = o.y();
                x += columnWidth + m_spacing.x();
                columnWidth = 0.0;
            }
            item->setPos(x, y);
            y += r.height() + m_spacing.y();
        }
        rowHeight = std::max(rowHeight, r.height());
        columnWidth = std::max(columnWidth, r.width());
    }
}
