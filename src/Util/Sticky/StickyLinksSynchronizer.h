#pragma once

#include <Util/Sticky/StickyArea.h>

#include <QHash>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QSet>

#include <functional>

class QGraphicsItem;
class QGraphicsScene;

// Keeps slave items beside their master: a slave stands at the master's x plus the link's
// offset, on its own level or in its own area. The synchronizer owns no items and no areas.
//
// Masters move through moveItem (or the caller calls synchronize after moving one itself):
// the master and all its slaves move inside one lockUpdate batch, and each area touched is
// laid out once. A master inserted into a watched area pulls its slaves beside it; a master
// that leaves every watched area ends its links (linkBroken) and its slaves stay where they
// stand. While a slave stands away from where its link wants it (a packed line could not
// honour the offset, or the links were suspended), an indicator item is shown at the slave's
// top-left corner; the indicator factory decides its look.
//
// Items are keyed by identity. An item that is a QGraphicsObject is forgotten when it is
// destroyed; a plain item must leave its area before it is deleted (as every area asks), and
// its links end then.
class EDITORUTIL_EXPORT StickyLinksSynchronizer : public QObject
{
    Q_OBJECT

public:
    using IndicatorFactory = std::function<QGraphicsItem*(QGraphicsItem* slave)>;

    explicit StickyLinksSynchronizer(QObject* parent = nullptr);
    // Deletes the indicators it shows.
    ~StickyLinksSynchronizer() override;

    // Areas whose items may be masters or slaves; an area that is destroyed is unwatched.
    void watch(StickyArea* area);
    void unwatch(StickyArea* area);
    // offset = slave x − master x. Refused with a log line: a null item, a self link, a slave
    // that already has a master, a master that is itself a slave, a slave with slaves.
    // Places the slave at once when both stand in watched areas.
    bool link(QGraphicsItem* master, QGraphicsItem* slave, double offset = 0.0);
    void unlink(QGraphicsItem* slave);
    QGraphicsItem* masterOf(const QGraphicsItem* slave) const;
    QList<QGraphicsItem*> slavesOf(const QGraphicsItem* master) const;
    // The watched area holding the item, nullptr if none.
    StickyArea* areaOf(const QGraphicsItem* item) const;

    // Moves `item` to point (in point.area) and, if it is a master, its slaves, in one batch.
    void moveItem(const StickyArea::StickyPoint& point, QGraphicsItem* item);
    // Places the slaves of `master` (nullptr: of every master) beside it, in one batch.
    void synchronize(QGraphicsItem* master = nullptr);
    void synchronize(const QList<QGraphicsItem*>& masters);
    // Actual minus wanted x of a slave; 0.0 when in line or not linked.
    double drift(const QGraphicsItem* slave) const;
    // The indicator shown for the slave, nullptr while it stands in line.
    QGraphicsItem* indicator(const QGraphicsItem* slave) const;
    // Called with the slave; the item it returns is put in the slave's scene. The default is
    // a small red square.
    void setIndicatorFactory(IndicatorFactory factory);

    // While suspended (a drag in progress), membership changes end no link and nothing moves;
    // resuming checks every master again.
    void setSuspended(bool suspended);
    bool isSuspended() const;

signals:
    void linkBroken(QGraphicsItem* slave, QGraphicsItem* master);

private:
    struct Link
    {
        QGraphicsItem* master = nullptr;
        double offset = 0.0;
        QGraphicsItem* indicator = nullptr;
        bool shown = false;             // the indicator was put in a scene,
        QPointer<QGraphicsScene> scene; // which deletes it when it goes first
    };

    void onItemsCountChanged(StickyArea* area);
    void checkMembership();
    void place(QGraphicsItem* master, QList<StickyArea*>& touched);
    void relayout(const QList<StickyArea*>& wereLocked);
    void updateIndicator(QGraphicsItem* slave, Link& link);
    static void dropIndicator(Link& link);
    void endLinksOf(QGraphicsItem* master);
    void forget(QGraphicsItem* item);
    void watchDestruction(QGraphicsItem* item);

    QList<QPointer<StickyArea>> m_areas;
    QHash<QGraphicsItem*, Link> m_links;                   // by slave
    QHash<QGraphicsItem*, QList<QGraphicsItem*>> m_slaves; // by master
    QHash<const QGraphicsItem*, StickyArea*> m_masterArea; // where each master stands
    QSet<const QGraphicsItem*> m_destructionWatched;
    IndicatorFactory m_indicatorFactory;
    bool m_suspended = false;
};
