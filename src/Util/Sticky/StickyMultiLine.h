#pragma once

#include <Util/Sticky/StickyFreeLine.h>

#include <QHash>
#include <QVector>

// Free lines stacked in the area's vertical direction: items stand on numbered levels
// (tracks), level 0 at the origin, each level `levelHeight` tall with `levelSpacing` between
// two levels. On its level an item behaves as on a free line: it keeps the x it was dropped at
// (never left of the origin) and its neighbours do not move. Overlaps are kept as dropped:
// an item dropped over another stands beside it on the same level, nothing is pushed, cut or
// sent to another level (the scene's stacking order decides which is drawn on top).
//
// The item list is kept in (level, x) order, so a point's `index` is a place in that one list
// and the inherited itemAt answers the item there. A level cache (where each level starts in
// the list) answers levelItems and index queries without walking the items; levelAt is
// arithmetic.
//
// Drops: a y inside a level's band lands on that level. A y in the spacing between two
// levels, before level 0 or past the last level opens a new level there, but only when empty
// levels are allowed; otherwise the drop lands on the nearest level (the lower one on a tie).
// A point that opens level n carries level -1 - n (see openedLevel); inserting it pushes
// level n and every later level one band outward. An empty area opens level 0 in both modes.
//
// Placeholders open no level: a placeholder dropped where a level would open stands half a
// spacing before that level, outside every level, so a hovering drag leaves no phantom level
// and the levels a drag shows are those its drop finds. Placeholders are not counted in the
// `index` of a point, so the placeholder of a drag does not shift the point it marks.
//
// Levels close: with empty levels allowed, a level stays when its last item leaves. Without,
// it closes as soon as its last item leaves; then itemPoint of an item alone on its level
// answers the opening point, so removing the item and inserting it at that point restores the
// area exactly.
//
// Fixed levels (tracks): setLevelCount opens empty levels or closes empty last ones, and with
// setDropsOpenLevels(false) a drop never opens a level but lands on the nearest one, as it
// does without empty levels; inserting an explicit opening point still opens one.
//
// Height: the extent of the levels (count × levelHeight plus the spacings between them),
// signalled through the area's height tracking on the next updateLayout.
class EDITORUTIL_EXPORT StickyMultiLine : public StickyFreeLine
{
    Q_OBJECT

public:
    explicit StickyMultiLine(QObject* parent = nullptr);
    ~StickyMultiLine() override;

    // A hash lookup instead of the list walk; placeholders outside the levels count too.
    bool contains(const QGraphicsItem* item) const override;
    using StickyArea::findStickyPoint;
    StickyPoint findStickyPoint(const QPointF& pos, QGraphicsItem* const item) override;
    // level = the item's level, or the opening point described above; index = list place.
    StickyPoint itemPoint(QGraphicsItem* item) override;

    // The level an opening point opens; -1 for a point on an existing level.
    static int openedLevel(const StickyPoint& point);

    int levelCount() const;
    // The level whose band holds the scene y; -1 in a spacing, before level 0 or past the last.
    int levelAt(double sceneY) const;
    // Scene y of the top of level n's band (where its items stand); n may be levelCount.
    double levelY(int level) const;
    QList<QGraphicsItem*> levelItems(int level);
    // -1 for an item the area does not hold.
    int itemLevel(const QGraphicsItem* item) const;

    // Opens empty levels after the last, or closes empty last levels, until there are `count`.
    // Refused (with a log line) for a negative count, for a level to close that holds items, and
    // for opening levels while empty levels are not allowed (the next layout would close them).
    void setLevelCount(int count);
    // Whether a drop may open a level (true by default).
    void setDropsOpenLevels(bool open);
    bool dropsOpenLevels() const;

    double levelHeight() const;
    // Refused (with a log line) unless h > 0. Lays out.
    void setLevelHeight(double h);
    double levelSpacing() const;
    // Refused (with a log line) when s < 0. Lays out.
    void setLevelSpacing(double s);

signals:
    void levelCountChanged(int count);

protected:
    void insertItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void moveItemInternal(const StickyPoint& point, QGraphicsItem* item) override;
    void removeItemInternal(QGraphicsItem* item) override;
    // With an item: re-reads that item's x. With nullptr: re-places every item only when the
    // origin, direction or level geometry changed since the last layout.
    void updateLayoutInner(QGraphicsItem* item) override;
    double heightInner() const override;

private:
    struct Target
    {
        int level = 0;
        bool opens = false;
    };
    Target targetAt(double sceneY) const;
    int targetLevel(const StickyPoint& point);
    void openLevel(int level);
    void closeLevel(int level);
    void leaveLevel(int level);
    int placeholdersBefore(int level, double x) const;
    void takeOut(QGraphicsItem* item);
    void place(QGraphicsItem* item, double x);
    void insertSorted(QGraphicsItem* item);
    int levelStart(int level) const;
    int lowerBoundX(int level, double x) const;
    void shiftLevels(int from, int by);

    QHash<const QGraphicsItem*, int> m_levelOf;
    QHash<const QGraphicsItem*, int> m_floating; // placeholders outside the levels -> level they would open
    QVector<int> m_start;                        // level cache: list place of each level's first item, then the count
    int m_levelCount = 0;
    double m_levelHeight = 40.0;
    double m_levelSpacing = 8.0;
    bool m_dropsOpenLevels = true;
    QPointF m_placedOrigin;
    VerticalDirection m_placedDirection = Down;
    double m_placedPitch = 48.0;
};
