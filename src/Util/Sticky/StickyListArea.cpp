#include "StickyListArea.h"

StickyListArea::StickyListArea(QObject* parent) : StickyArea(parent) {}

StickyListArea::~StickyListArea() = default;

bool StickyListArea::contains(const QGraphicsItem* item) const
{
    return m_items.contains(const_cast<QGraphicsItem*>(item));
}

QList<QGraphicsItem*>::const_iterator StickyListArea::begin() const { return m_items.cbegin(); }

QList<QGraphicsItem*>::iterator StickyListArea::begin() { return m_items.begin(); }

QList<QGraphicsItem*>::const_iterator StickyListArea::end() const { return m_items.cend(); }

QList<QGraphicsItem*>::iterator StickyListArea::end() { return m_items.end(); }
