#include "StickyFreeLine.h"

#include <Util/Sticky/StickyOrder.h>

#include <QGraphicsItem>

#include <glog/logging.h>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

double sceneX(const QGraphicsItem* item) { return item->scenePos().x(); }

} // namespace

StickyFreeLine::StickyFreeLine(QObject* parent) : StickyListArea(parent) {}

StickyFreeLine::~StickyFreeLine() = default;

StickyArea::StickyPoint StickyFreeLine::findStickyPoint(const QPointF& pos, QGraphicsItem* const)
{
    StickyPoint point = defaultPoint();
    // The list is in x order after every insert, move and layout: the leading items left of
    // pos.x are found by bisection.
    const auto first = std::partition_point(m_items.cbegin(), m_items.cend(),
                                            [&pos](const QGraphicsItem* i) { return sceneX(i) < pos.x(); });
    point.index = static_cast<int>(first - m_items.cbegin());
    point.pos = QPointF(pos.x(), origin().y());
    return point;
}

StickyArea::StickyPoint StickyFreeLine::itemPoint(QGraphicsItem* item) { return listItemPoint(m_items, item); }

QGraphicsItem* StickyFreeLine::itemAt(const StickyPoint& point)
{
    if (point.index < 0 || point.index >= m_items.size())
        return nullptr;
    return m_items.at(point.index);
}

void StickyFreeLine::insertItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    const int at = (point.index >= 0 && point.index <= m_items.size()) ? point.index : m_items.size();
    m_items.insert(at, item);
    placeItem(point, item);
    sortAfterMoveOf(item);
}

void StickyFreeLine::moveItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    if (!m_items.contains(item)) {
        LOG(ERROR) << "StickyFreeLine::moveItem: the item is not on this line";
        return;
    }
    placeItem(point, item);
    sortAfterMoveOf(item);
}

void StickyFreeLine::removeItemInternal(QGraphicsItem* item) { m_items.removeAll(item); }

void StickyFreeLine::updateLayoutInner(QGraphicsItem*)
{
    const QPointF delta = origin() - m_appliedOrigin;
    m_appliedOrigin = origin();
    sortItems();
    for (QGraphicsItem* item : qAsConst(m_items))
        item->setPos(item->scenePos() + delta);
}

void StickyFreeLine::placeItem(const StickyPoint& point, QGraphicsItem* item) const
{
    // Never left of the line's start.
    item->setPos(std::max(origin().x(), point.pos.x()), point.pos.y());
}

// Only `item` has moved since the last sort in the usual case: then one binary insertion
// restores the order. If anything else is out of order (items moved by hand, the item held
// twice), the whole list is sorted.
void StickyFreeLine::sortAfterMoveOf(QGraphicsItem* item)
{
    const int at = m_items.indexOf(item);
    bool restSorted = true;
    bool havePrevious = false;
    double previous = 0.0;
    for (int j = 0; j < m_items.size() && restSorted; ++j) {
        if (j == at)
            continue;
        const double x = sceneX(m_items.at(j));
        restSorted = !(havePrevious && x < previous);
        previous = x;
        havePrevious = true;
    }
    if (!restSorted || at < 0) {
        sortItems();
        return;
    }
    m_items.removeAt(at);
    const double x = sceneX(item);
    int lo = 0;
    int hi = m_items.size();
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (x < sceneX(m_items.at(mid)))
            hi = mid;
        else
            lo = mid + 1;
    }
    m_items.insert(lo, item);
}

void StickyFreeLine::sortItems()
{
    if (std::is_sorted(m_items.cbegin(), m_items.cend(), XOrder()))
        return;
    // Each key is read once instead of twice per comparison.
    std::vector<std::pair<double, QGraphicsItem*>> keyed;
    keyed.reserve(static_cast<size_t>(m_items.size()));
    for (QGraphicsItem* item : qAsConst(m_items))
        keyed.emplace_back(sceneX(item), item);
    std::sort(keyed.begin(), keyed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (int i = 0; i < m_items.size(); ++i)
        m_items[i] = keyed[static_cast<size_t>(i)].second;
}
