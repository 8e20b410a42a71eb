#pragma once

#include <Util/EditorUtilExport.h>

#include <QGraphicsItem>

// Strict weak orders on graphics items by scene position, for sorting item lists. The keys
// are compared with plain `<` (no tolerance): items at equal keys are equivalent and keep no
// particular order after an unstable sort.

struct EDITORUTIL_EXPORT XOrder
{
    bool operator()(QGraphicsItem* a, QGraphicsItem* b) const { return a->scenePos().x() < b->scenePos().x(); }
};

struct EDITORUTIL_EXPORT YOrder
{
    bool operator()(QGraphicsItem* a, QGraphicsItem* b) const { return a->scenePos().y() < b->scenePos().y(); }
};

// Top to bottom, then left to right within equal y.
struct EDITORUTIL_EXPORT YXOrder
{
    bool operator()(QGraphicsItem* a, QGraphicsItem* b) const
    {
        const QPointF pa = a->scenePos();
        const QPointF pb = b->scenePos();
        if (pa.y() < pb.y())
            return true;
        if (pb.y() < pa.y())
            return false;
        return pa.x() < pb.x();
    }
};
