#pragma once

#include <Util/Sticky/StickyMagneticLine.h>

#include <QSet>

#include <set>

// The magnetic line's drop search done the slow, obvious way: an ordered set of edges built
// from scratch on every query. The production line must answer exactly the same points.
class ReferenceMagneticLine : public StickyMagneticLine
{
public:
    using StickyMagneticLine::findStickyPoint;

    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const) override
    {
        StickyPoint point(this);
        if (empty()) {
            point.pos = origin();
            point.index = 0;
            return point;
        }
        std::set<double> edges;
        double x = origin().x();
        edges.insert(x);
        const StickyArea& self = *this;
        for (auto it = self.begin(); it != self.end(); ++it) {
            if (placeholders().contains(*it))
                continue;
            x += itemDuration(*it);
            edges.insert(x);
        }
        auto chosen = edges.lower_bound(pos.x());
        if (chosen == edges.end())
            chosen = std::prev(edges.end());
        else if (chosen != edges.begin() && *chosen != pos.x())
            --chosen;
        point.pos = QPointF(*chosen, origin().y());
        point.index = static_cast<int>(std::distance(edges.begin(), chosen));
        return point;
    }
};
