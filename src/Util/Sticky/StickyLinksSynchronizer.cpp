#include "StickyLinksSynchronizer.h"

#include <QBrush>
#include <QGraphicsObject>
#include <QGraphicsRectItem>
#include <QGraphicsScene>
#include <QPen>

#include <glog/logging.h>

#include <cmath>

namespace {

QGraphicsItem* defaultIndicator(QGraphicsItem*)
{
    auto* mark = new QGraphicsRectItem(0.0, 0.0, 6.0, 6.0);
    mark->setPen(Qt::NoPen);
    mark->setBrush(QBrush(Qt::red));
    mark->setZValue(1000.0);
    return mark;
}

} // namespace

StickyLinksSynchronizer::StickyLinksSynchronizer(QObject* parent)
    : QObject(parent), m_indicatorFactory(&defaultIndicator)
{}

StickyLinksSynchronizer::~StickyLinksSynchronizer()
{
    for (Link& link : m_links)
        dropIndicator(link);
}

void StickyLinksSynchronizer::watch(StickyArea* area)
{
    if (!area) {
        LOG(ERROR) << "StickyLinksSynchronizer::watch: the area is null";
        return;
    }
    if (m_areas.contains(area))
        return;
    m_areas.append(area);
    connect(area, &StickyArea::itemsCountChanged, this, [this, area] { onItemsCountChanged(area); });
    connect(area, &QObject::destroyed, this, [this] { m_areas.removeAll(QPointer<StickyArea>()); });
    for (auto it = m_slaves.cbegin(); it != m_slaves.cend(); ++it) {
        if (!m_masterArea.value(it.key()) && area->contains(it.key()))
            m_masterArea.insert(it.key(), area);
    }
}

void StickyLinksSynchronizer::unwatch(StickyArea* area)
{
    if (!area || !m_areas.removeAll(area))
        return;
    disconnect(area, nullptr, this, nullptr);
    for (auto it = m_masterArea.begin(); it != m_masterArea.end(); ++it) {
        if (it.value() == area)
            it.value() = areaOf(it.key());
    }
}

bool StickyLinksSynchronizer::link(QGraphicsItem* master, QGraphicsItem* slave, double offset)
{
    const char* refused = nullptr;
    if (!master || !slave)
        refused = "an item is null";
    else if (master == slave)
        refused = "an item cannot be its own slave";
    else if (m_links.contains(slave))
        refused = "the slave already has a master";
    else if (m_links.contains(master))
        refused = "the master is itself a slave";
    else if (m_slaves.contains(slave))
        refused = "the slave has slaves of its own";
    if (refused) {
        LOG(ERROR) << "StickyLinksSynchronizer::link: " << refused;
        return false;
    }
    Link link;
    link.master = master;
    link.offset = offset;
    m_links.insert(slave, link);
    m_slaves[master].append(slave);
    m_masterArea.insert(master, areaOf(master));
    watchDestruction(master);
    watchDestruction(slave);
    if (!m_suspended && m_masterArea.value(master))
        synchronize(master);
    else
        updateIndicator(slave, m_links[slave]);
    return true;
}

void StickyLinksSynchronizer::unlink(QGraphicsItem* slave)
{
    const auto found = m_links.find(slave);
    if (found == m_links.end())
        return;
    QGraphicsItem* master = found->master;
    dropIndicator(*found);
    m_links.erase(found);
    QList<QGraphicsItem*>& slaves = m_slaves[master];
    slaves.removeAll(slave);
    if (slaves.isEmpty()) {
        m_slaves.remove(master);
        m_masterArea.remove(master);
    }
}

QGraphicsItem* StickyLinksSynchronizer::masterOf(const QGraphicsItem* slave) const
{
    return m_links.value(const_cast<QGraphicsItem*>(slave)).master;
}

QList<QGraphicsItem*> StickyLinksSynchronizer::slavesOf(const QGraphicsItem* master) const
{
    return m_slaves.value(const_cast<QGraphicsItem*>(master));
}

StickyArea* StickyLinksSynchronizer::areaOf(const QGraphicsItem* item) const
{
    for (StickyArea* area : m_areas) {
        if (area && area->contains(item))
            return area;
    }
    return nullptr;
}

void StickyLinksSynchronizer::moveItem(const StickyArea::StickyPoint& point, QGraphicsItem* item)
{
    if (!point.area || !item) {
        LOG(ERROR) << "StickyLinksSynchronizer::moveItem: " << (item ? "the point has no area" : "the item is null");
        return;
    }
    QList<StickyArea*> touched{point.area};
    QList<StickyArea*> locked;
    if (!point.area->isLocked()) {
        point.area->lockUpdate();
        locked.append(point.area);
    }
    point.area->moveItem(point, item);
    const double x = item->scenePos().x();
    if (m_slaves.contains(item))
        place(item, touched);
    for (StickyArea* area : qAsConst(touched)) {
        if (!area->isLocked()) {
            area->lockUpdate();
            locked.append(area);
        }
    }
    relayout(locked);
    // A packed line places the master only when it lays out: its slaves follow it there.
    if (m_slaves.contains(item) && item->scenePos().x() != x)
        synchronize(item);
}

void StickyLinksSynchronizer::synchronize(QGraphicsItem* master)
{
    synchronize(master ? QList<QGraphicsItem*>{master} : m_slaves.keys());
}

void StickyLinksSynchronizer::synchronize(const QList<QGraphicsItem*>& masters)
{
    QList<StickyArea*> touched;
    for (QGraphicsItem* m : masters) {
        if (m_slaves.contains(m))
            place(m, touched);
    }
    if (touched.isEmpty())
        return;
    QList<StickyArea*> locked;
    for (StickyArea* area : qAsConst(touched)) {
        if (!area->isLocked()) {
            area->lockUpdate();
            locked.append(area);
        }
    }
    relayout(locked);
}

double StickyLinksSynchronizer::drift(const QGraphicsItem* slave) const
{
    const auto found = m_links.constFind(const_cast<QGraphicsItem*>(slave));
    if (found == m_links.constEnd())
        return 0.0;
    return slave->scenePos().x() - (found->master->scenePos().x() + found->offset);
}

QGraphicsItem* StickyLinksSynchronizer::indicator(const QGraphicsItem* slave) const
{
    return m_links.value(const_cast<QGraphicsItem*>(slave)).indicator;
}

void StickyLinksSynchronizer::setIndicatorFactory(IndicatorFactory factory)
{
    if (!factory) {
        LOG(ERROR) << "StickyLinksSynchronizer::setIndicatorFactory: the factory is empty";
        return;
    }
    m_indicatorFactory = std::move(factory);
}

void StickyLinksSynchronizer::setSuspended(bool suspended)
{
    if (suspended == m_suspended)
        return;
    m_suspended = suspended;
    if (!suspended)
        checkMembership();
}

bool StickyLinksSynchronizer::isSuspended() const { return m_suspended; }

void StickyLinksSynchronizer::onItemsCountChanged(StickyArea* area)
{
    if (m_suspended)
        return;
    const QList<QGraphicsItem*> masters = m_slaves.keys();
    for (QGraphicsItem* master : masters) {
        StickyArea* known = m_masterArea.value(master);
        if (known == area && !area->contains(master)) {
            StickyArea* now = areaOf(master);
            m_masterArea.insert(master, now);
            if (!now)
                endLinksOf(master);
        } else if (!known && area->contains(master)) {
            m_masterArea.insert(master, area);
            synchronize(master);
        }
    }
}

void StickyLinksSynchronizer::checkMembership()
{
    const QList<QGraphicsItem*> masters = m_slaves.keys();
    for (QGraphicsItem* master : masters) {
        StickyArea* area = areaOf(master);
        m_masterArea.insert(master, area);
        if (!area)
            endLinksOf(master);
    }
}

// Moves the slaves of one master to the master's x plus their offsets, each in its own area;
// every area met is added to `touched`. Nothing is laid out here.
void StickyLinksSynchronizer::place(QGraphicsItem* master, QList<StickyArea*>& touched)
{
    const double x = master->scenePos().x();
    for (QGraphicsItem* slave : m_slaves.value(master)) {
        StickyArea* area = areaOf(slave);
        if (!area)
            continue;
        if (!touched.contains(area))
            touched.append(area);
        const Link& link = m_links[slave];
        const double wanted = x + link.offset;
        if (slave->scenePos().x() == wanted)
            continue;
        area->moveItem(area->findStickyPoint(QPointF(wanted, slave->scenePos().y()), slave), slave);
    }
}

// Unlocks the areas this pass locked and lays each of them out once; areas the caller had
// locked are left to the caller.
void StickyLinksSynchronizer::relayout(const QList<StickyArea*>& wereLocked)
{
    for (StickyArea* area : wereLocked) {
        area->unlockUpdate();
        area->updateLayout(nullptr);
    }
    for (auto it = m_links.begin(); it != m_links.end(); ++it)
        updateIndicator(it.key(), it.value());
}

void StickyLinksSynchronizer::updateIndicator(QGraphicsItem* slave, Link& link)
{
    const bool inLine = std::abs(drift(slave)) < 1e-9 && !m_suspended;
    if (inLine) {
        dropIndicator(link);
        return;
    }
    if (!link.indicator)
        link.indicator = m_indicatorFactory(slave);
    if (!link.indicator)
        return;
    if (!link.shown && slave->scene()) {
        if (!link.indicator->scene())
            slave->scene()->addItem(link.indicator);
        link.shown = true;
        link.scene = link.indicator->scene();
    }
    link.indicator->setPos(slave->scenePos());
}

void StickyLinksSynchronizer::dropIndicator(Link& link)
{
    if (!link.shown || link.scene)
        delete link.indicator;
    link.indicator = nullptr;
    link.shown = false;
}

void StickyLinksSynchronizer::endLinksOf(QGraphicsItem* master)
{
    const QList<QGraphicsItem*> slaves = m_slaves.value(master);
    for (QGraphicsItem* slave : slaves) {
        unlink(slave);
        emit linkBroken(slave, master);
    }
}

void StickyLinksSynchronizer::forget(QGraphicsItem* item)
{
    unlink(item);
    const QList<QGraphicsItem*> slaves = m_slaves.value(item);
    for (QGraphicsItem* slave : slaves)
        unlink(slave);
}

void StickyLinksSynchronizer::watchDestruction(QGraphicsItem* item)
{
    QGraphicsObject* object = item->toGraphicsObject();
    if (!object || m_destructionWatched.contains(item))
        return;
    m_destructionWatched.insert(item);
    connect(object, &QObject::destroyed, this, [this, item] {
        m_destructionWatched.remove(item);
        forget(item);
    });
}
