#include "StickyCompositeArea.h"

#include <QGraphicsItem>

#include <glog/logging.h>

StickyCompositeArea::StickyCompositeArea(QObject* parent) : StickyListArea(parent) {}

StickyCompositeArea::~StickyCompositeArea() = default;

bool StickyCompositeArea::isAcceptable(const QList<QGraphicsItem*>& items) const
{
    if (m_slots.isEmpty() || items.size() != 1)
        return false;
    for (const StickyArea* area : m_slots) {
        if (area->isAcceptable(items))
            return true;
    }
    return false;
}

StickyArea::StickyPoint StickyCompositeArea::findStickyPoint(const QPointF& pos, QGraphicsItem* const item)
{
    StickyPoint point = defaultPoint();
    bool answered = false;
    double nearest = 0.0;
    const QList<QGraphicsItem*> dragged{item};
    for (auto it = m_slots.cbegin(); it != m_slots.cend(); ++it) {
        StickyArea* area = it.value();
        if (item && !area->isAcceptable(dragged))
            continue;
        const QPointF p = area->findStickyPoint(pos, item).pos;
        const QPointF d = p - pos;
        const double distance = QPointF::dotProduct(d, d);
        if (!answered || distance < nearest) {
            answered = true;
            nearest = distance;
            point.pos = p;
            point.index = it.key();
        }
    }
    return point;
}

StickyArea::StickyPoint StickyCompositeArea::itemPoint(QGraphicsItem* item)
{
    StickyPoint point = defaultPoint();
    if (item)
        point.pos = item->scenePos();
    point.index = m_slotOf.value(itemSlot(item), 0);
    return point;
}

QGraphicsItem* StickyCompositeArea::itemAt(const StickyPoint& point)
{
    StickyArea* area = m_slots.value(point.index, nullptr);
    if (!area)
        return nullptr;
    return area->itemAt(area->findStickyPoint(point.pos, nullptr));
}

void StickyCompositeArea::addStickySlot(StickyArea* area, QGraphicsItem* root)
{
    if (!area) {
        LOG(ERROR) << "StickyCompositeArea::addStickySlot: the area is null";
        return;
    }
    if (reaches(area, this)) {
        LOG(ERROR) << "StickyCompositeArea::addStickySlot: the area holds this composite, it would hold itself";
        return;
    }
    const int n = m_slots.isEmpty() ? 0 : m_slots.lastKey() + 1;
    m_slots.insert(n, area);
    m_slotOf.insert(area, n);
    m_roots.insert(n, root);
    connect(area, &QObject::destroyed, this, &StickyCompositeArea::forgetArea, Qt::UniqueConnection);
}

void StickyCompositeArea::removeStickySlot(StickyArea* area)
{
    const auto found = m_slotOf.find(area);
    if (found == m_slotOf.end())
        return;
    const int n = found.value();
    m_slotOf.erase(found);
    m_slots.remove(n);
    m_roots.remove(n);
}

QGraphicsItem* StickyCompositeArea::rootOf(QGraphicsItem* item)
{
    const StickyArea* area = itemSlot(item);
    if (!area)
        return nullptr;
    return m_roots.value(m_slotOf.value(const_cast<StickyArea*>(area)), nullptr);
}

void StickyCompositeArea::insertItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    StickyArea* area = m_slots.value(point.index, nullptr);
    if (!area)
        return;
    area->insertItem(area->findStickyPoint(point.pos, item), item, false);
    m_items.insert(qMin(point.index, m_items.size()), item);
}

void StickyCompositeArea::moveItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    removeItemInternal(item);
    insertItemInternal(point, item);
}

void StickyCompositeArea::removeItemInternal(QGraphicsItem* item)
{
    m_items.removeAll(item);
    if (StickyArea* area = itemSlot(item))
        area->removeItem(item);
}

void StickyCompositeArea::updateLayoutInner(QGraphicsItem*)
{
    if (m_items.isEmpty())
        return;
    for (StickyArea* area : qAsConst(m_slots))
        area->updateLayout(nullptr);
}

StickyArea* StickyCompositeArea::itemSlot(QGraphicsItem* item) const
{
    for (StickyArea* area : m_slots) {
        if (area->contains(item))
            return area;
    }
    return nullptr;
}

bool StickyCompositeArea::reaches(const StickyArea* area, const StickyCompositeArea* composite)
{
    if (area == composite)
        return true;
    const auto* nested = qobject_cast<const StickyCompositeArea*>(area);
    if (!nested)
        return false;
    for (const StickyArea* sub : nested->m_slots) {
        if (reaches(sub, composite))
            return true;
    }
    return false;
}

// Only the pointer is used: the area is already half destroyed.
void StickyCompositeArea::forgetArea(QObject* area)
{
    for (auto it = m_slots.begin(); it != m_slots.end();) {
        if (static_cast<QObject*>(it.value()) == area) {
            m_roots.remove(it.key());
            it = m_slots.erase(it);
        } else {
            ++it;
        }
    }
    for (auto it = m_slotOf.begin(); it != m_slotOf.end();) {
        if (static_cast<QObject*>(it.key()) == area)
            it = m_slotOf.erase(it);
        else
            ++it;
    }
}
