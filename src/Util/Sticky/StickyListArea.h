#pragma once

#include <Util/Sticky/StickyArea.h>

// The item container every layout shares: one ordered list of the items the area holds, and
// the membership test and iterators over it. Each layout decides the order.
class EDITORUTIL_EXPORT StickyListArea : public StickyArea
{
    Q_OBJECT

public:
    explicit StickyListArea(QObject* parent = nullptr);
    ~StickyListArea() override;

    bool contains(const QGraphicsItem* item) const override;
    QList<QGraphicsItem*>::const_iterator begin() const override;
    QList<QGraphicsItem*>::iterator begin() override;
    QList<QGraphicsItem*>::const_iterator end() const override;
    QList<QGraphicsItem*>::iterator end() override;

protected:
    QList<QGraphicsItem*> m_items;
};
