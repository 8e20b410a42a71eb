#include "StickyGrid.h"

#include <QGraphicsItem>
#include <QHash>

#include <glog/logging.h>

#include <algorithm>
#include <cmath>

StickyGrid::StickyGrid(QObject* parent) : StickyListArea(parent) {}

StickyGrid::~StickyGrid() = default;

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
    int best = -1; // the origin, ahead of every item
    const auto distance = [&pos](double x, double y) { return (QPointF(x, y) - pos).manhattanLength(); };
    const auto consider = [&](double d, int index) {
        if (d < nearest || (d == nearest && best >= 0 && index < best)) {
            nearest = d;
            best = index;
        }
    };
    if (isLocked()) {
        for (int i = 0; i < m_items.size(); ++i) {
            const QPointF p = m_items.at(i)->scenePos();
            consider(distance(p.x(), p.y()), i);
        }
    } else {
        if (!m_rowsValid)
            buildRows();
        // In a row the distance grows with |x - pos.x|: walk out both ways from pos.x while
        // a place can still be as near (equal distances keep the earlier item).
        const auto searchRow = [&](const Row& row) {
            const auto right = std::lower_bound(row.places.cbegin(), row.places.cend(), pos.x(),
                                                [](const Place& p, double x) { return p.x < x; });
            for (auto it = right; it != row.places.cend(); ++it) {
                const double d = distance(it->x, row.y);
                if (d > nearest)
                    break;
                consider(d, it->index);
            }
            for (auto it = right; it != row.places.cbegin();) {
                --it;
                const double d = distance(it->x, row.y);
                if (d > nearest)
                    break;
                consider(d, it->index);
            }
        };
        const auto below =
            std::lower_bound(m_rows.cbegin(), m_rows.cend(), pos.y(), [](const Row& r, double y) { return r.y < y; });
        for (auto it = below; it != m_rows.cend() && std::abs(it->y - pos.y()) <= nearest; ++it)
            searchRow(*it);
        for (auto it = below; it != m_rows.cbegin();) {
            --it;
            if (std::abs(it->y - pos.y()) > nearest)
                break;
            searchRow(*it);
        }
    }
    if (best >= 0) {
        point.pos = m_items.at(best)->scenePos();
        point.index = best;
    }
    return point;
}

// Items grouped by equal y, each row by x with the first item at each x. After a layout of a
// row-filling grid the list is already in that order, and no sort is needed.
void StickyGrid::buildRows()
{
    struct Key
    {
        double y;
        double x;
        int index;
        bool operator<(const Key& o) const
        {
            return y < o.y || (!(o.y < y) && (x < o.x || (!(o.x < x) && index < o.index)));
        }
    };
    std::vector<Key> keys;
    keys.reserve(static_cast<size_t>(m_items.size()));
    for (int i = 0; i < m_items.size(); ++i) {
        const QPointF p = m_items.at(i)->scenePos();
        keys.push_back({p.y(), p.x(), i});
    }
    if (!std::is_sorted(keys.cbegin(), keys.cend()))
        std::sort(keys.begin(), keys.end());
    m_rows.clear();
    for (const Key& k : keys) {
        if (m_rows.empty() || m_rows.back().y != k.y)
            m_rows.push_back({k.y, {}});
        std::vector<Place>& places = m_rows.back().places;
        if (places.empty() || places.back().x != k.x)
            places.push_back({k.x, k.index});
    }
    m_rowsValid = true;
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
    m_rowsValid = false;
}

void StickyGrid::insertItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    m_rowsValid = false;
    if (point.index >= 0 && point.index < m_items.size())
        m_items.insert(point.index, item);
    else
        m_items.append(item);
    item->setPos(point.pos);
}

void StickyGrid::moveItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    m_rowsValid = false;
    const int from = m_items.indexOf(item);
    if (from < 0) {
        LOG(ERROR) << "StickyGrid::moveItem: the item is not in this grid";
        return;
    }
    m_items.move(from, qBound(0, point.index, m_items.size() - 1));
    item->setPos(point.pos);
}

void StickyGrid::removeItemInternal(QGraphicsItem* item)
{
    m_items.removeAll(item);
    m_rowsValid = false;
}

void StickyGrid::updateLayoutInner(QGraphicsItem*)
{
    m_rowsValid = false;
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
