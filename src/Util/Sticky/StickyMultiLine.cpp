#include "StickyMultiLine.h"

#include <QGraphicsItem>
#include <QtNumeric>

#include <glog/logging.h>

#include <algorithm>
#include <cmath>

StickyMultiLine::StickyMultiLine(QObject* parent) : StickyFreeLine(parent) { m_start.append(0); }

StickyMultiLine::~StickyMultiLine() = default;

bool StickyMultiLine::contains(const QGraphicsItem* item) const
{
    return m_levelOf.contains(item) || m_floating.contains(item);
}

int StickyMultiLine::openedLevel(const StickyPoint& point) { return point.level < 0 ? -1 - point.level : -1; }

int StickyMultiLine::levelCount() const { return m_levelCount; }

namespace {

double pitchOf(double h, double s) { return h + s; }

// Distance of a scene y from the origin, measured in the area's vertical direction.
double along(const StickyArea& area, double sceneY)
{
    return area.verticalDirection() == StickyArea::Up ? area.origin().y() - sceneY : sceneY - area.origin().y();
}

} // namespace

int StickyMultiLine::levelAt(double sceneY) const
{
    const double d = along(*this, sceneY);
    const double pitch = pitchOf(m_levelHeight, m_levelSpacing);
    if (d < 0.0)
        return -1;
    const int level = static_cast<int>(std::floor(d / pitch));
    if (level >= m_levelCount || d - level * pitch >= m_levelHeight)
        return -1;
    return level;
}

double StickyMultiLine::levelY(int level) const
{
    const double offset = level * pitchOf(m_levelHeight, m_levelSpacing);
    if (verticalDirection() == Up)
        return origin().y() - offset - m_levelHeight;
    return origin().y() + offset;
}

QList<QGraphicsItem*> StickyMultiLine::levelItems(int level)
{
    if (level < 0 || level >= m_levelCount)
        return {};
    return m_items.mid(m_start[level], m_start[level + 1] - m_start[level]);
}

int StickyMultiLine::itemLevel(const QGraphicsItem* item) const { return m_levelOf.value(item, -1); }

void StickyMultiLine::setLevelCount(int count)
{
    const char* refused = nullptr;
    if (count < 0)
        refused = "the count must not be negative";
    else if (count > m_levelCount && !isEmptyLevelsAllowed())
        refused = "empty levels are not allowed";
    for (int level = count; !refused && level < m_levelCount; ++level) {
        if (m_start.at(level) != m_start.at(level + 1))
            refused = "a level to close holds items";
    }
    if (refused) {
        LOG(ERROR) << "StickyMultiLine::setLevelCount: " << refused << " (" << count << " levels asked)";
        return;
    }
    while (m_levelCount < count)
        openLevel(m_levelCount);
    while (m_levelCount > count)
        closeLevel(m_levelCount - 1);
    updateLayout(nullptr);
}

void StickyMultiLine::setDropsOpenLevels(bool open) { m_dropsOpenLevels = open; }

bool StickyMultiLine::dropsOpenLevels() const { return m_dropsOpenLevels; }

double StickyMultiLine::levelHeight() const { return m_levelHeight; }

void StickyMultiLine::setLevelHeight(double h)
{
    if (!(h > 0.0)) {
        LOG(ERROR) << "StickyMultiLine::setLevelHeight: the height must be positive, not " << h;
        return;
    }
    m_levelHeight = h;
    updateLayout(nullptr);
}

double StickyMultiLine::levelSpacing() const { return m_levelSpacing; }

void StickyMultiLine::setLevelSpacing(double s)
{
    if (!(s >= 0.0)) {
        LOG(ERROR) << "StickyMultiLine::setLevelSpacing: the spacing must not be negative, not " << s;
        return;
    }
    m_levelSpacing = s;
    updateLayout(nullptr);
}

StickyMultiLine::Target StickyMultiLine::targetAt(double sceneY) const
{
    const bool open = isEmptyLevelsAllowed() && m_dropsOpenLevels;
    if (m_levelCount == 0)
        return {0, true};
    const double d = along(*this, sceneY);
    if (d < 0.0)
        return {0, open};
    const double pitch = pitchOf(m_levelHeight, m_levelSpacing);
    const int level = static_cast<int>(std::floor(d / pitch));
    const double into = d - level * pitch;
    if (level < m_levelCount && into < m_levelHeight)
        return {level, false};
    if (level + 1 >= m_levelCount)
        return open ? Target{m_levelCount, true} : Target{m_levelCount - 1, false};
    if (open)
        return {level + 1, true};
    // In the spacing: the nearer band, the lower level on a tie.
    return {into - m_levelHeight <= pitch - into ? level : level + 1, false};
}

StickyArea::StickyPoint StickyMultiLine::findStickyPoint(const QPointF& pos, QGraphicsItem* const)
{
    StickyPoint point = defaultPoint();
    const Target t = targetAt(pos.y());
    point.level = t.opens ? -1 - t.level : t.level;
    point.index = t.opens ? levelStart(t.level) - placeholdersBefore(t.level, -qInf())
                          : lowerBoundX(t.level, pos.x()) - placeholdersBefore(t.level, pos.x());
    point.pos = QPointF(pos.x(), levelY(t.level));
    return point;
}

StickyArea::StickyPoint StickyMultiLine::itemPoint(QGraphicsItem* item)
{
    StickyPoint point = StickyFreeLine::itemPoint(item);
    const int level = itemLevel(item);
    if (level < 0)
        return point;
    const bool alone = m_start.at(level + 1) - m_start.at(level) == 1;
    point.level = alone && !isEmptyLevelsAllowed() ? -1 - level : level;
    return point;
}

int StickyMultiLine::targetLevel(const StickyPoint& point)
{
    const int opened = openedLevel(point);
    if (opened >= 0 || m_levelCount == 0) {
        const int level = qBound(0, opened, m_levelCount);
        openLevel(level);
        return level;
    }
    if (point.level < m_levelCount)
        return point.level;
    if (!isEmptyLevelsAllowed())
        return m_levelCount - 1;
    openLevel(m_levelCount);
    return m_levelCount - 1;
}

void StickyMultiLine::insertItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    if (contains(item)) {
        LOG(ERROR) << "StickyMultiLine::insertItem: the item is already in this area";
        return;
    }
    const int opened = openedLevel(point);
    if (opened >= 0 && m_levelCount > 0 && placeholders().contains(item)) {
        const int level = qMin(opened, m_levelCount);
        m_floating.insert(item, level);
        const double toOrigin = verticalDirection() == Up ? -m_levelSpacing / 2 : m_levelSpacing / 2;
        item->setPos(std::max(origin().x(), point.pos.x()), levelY(level) - toOrigin);
        return;
    }
    m_levelOf.insert(item, targetLevel(point));
    place(item, point.pos.x());
    insertSorted(item);
}

void StickyMultiLine::moveItemInternal(const StickyPoint& point, QGraphicsItem* item)
{
    if (!contains(item)) {
        LOG(ERROR) << "StickyMultiLine::moveItem: the item is not in this area";
        return;
    }
    int from = m_levelOf.value(item, -1);
    const int levelsBefore = m_levelCount;
    takeOut(item);
    insertItemInternal(point, item);
    if (from < 0)
        return;
    // A level opened at or before the one the item left pushed that one outward.
    if (m_levelCount > levelsBefore && m_levelOf.value(item, -1) <= from)
        ++from;
    leaveLevel(from);
}

void StickyMultiLine::removeItemInternal(QGraphicsItem* item)
{
    const int level = m_levelOf.value(item, -1);
    takeOut(item);
    if (level >= 0)
        leaveLevel(level);
}

void StickyMultiLine::updateLayoutInner(QGraphicsItem* item)
{
    if (item) {
        const auto found = m_levelOf.constFind(item);
        if (found == m_levelOf.constEnd())
            return;
        moveItemInternal(StickyPoint(this, item->scenePos(), found.value()), item);
        return;
    }
    if (!isEmptyLevelsAllowed()) {
        for (int level = m_levelCount - 1; level >= 0; --level) {
            if (m_start.at(level) == m_start.at(level + 1))
                closeLevel(level);
        }
    }
    const double pitch = pitchOf(m_levelHeight, m_levelSpacing);
    if (origin() == m_placedOrigin && verticalDirection() == m_placedDirection && pitch == m_placedPitch)
        return;
    const double dx = origin().x() - m_placedOrigin.x();
    m_placedOrigin = origin();
    m_placedDirection = verticalDirection();
    m_placedPitch = pitch;
    for (QGraphicsItem* e : qAsConst(m_items))
        e->setPos(e->scenePos().x() + dx, levelY(m_levelOf.value(e)));
}

double StickyMultiLine::heightInner() const
{
    if (m_levelCount == 0)
        return 0.0;
    return m_levelCount * m_levelHeight + (m_levelCount - 1) * m_levelSpacing;
}

void StickyMultiLine::openLevel(int level)
{
    m_start.insert(level, m_start.at(level));
    ++m_levelCount;
    shiftLevels(level + 1, +1);
    emit levelCountChanged(m_levelCount);
}

void StickyMultiLine::closeLevel(int level)
{
    m_start.removeAt(level);
    --m_levelCount;
    shiftLevels(level, -1);
    emit levelCountChanged(m_levelCount);
}

// Items of the levels from `from` on take their new level numbers and stand on them.
void StickyMultiLine::shiftLevels(int from, int by)
{
    for (int i = m_start.at(from); i < m_items.size(); ++i) {
        QGraphicsItem* e = m_items.at(i);
        int& level = m_levelOf[e];
        level += by;
        e->setPos(e->scenePos().x(), levelY(level));
    }
}

// Out of the list and the level cache; no level closes here.
void StickyMultiLine::takeOut(QGraphicsItem* item)
{
    if (m_floating.remove(item))
        return;
    const auto found = m_levelOf.constFind(item);
    if (found == m_levelOf.constEnd())
        return;
    const int level = found.value();
    m_items.removeAt(m_items.indexOf(item, m_start.at(level)));
    for (int k = level + 1; k < m_start.size(); ++k)
        --m_start[k];
    m_levelOf.remove(item);
}

// A level that has just lost an item closes when it is empty and empty levels are not allowed.
void StickyMultiLine::leaveLevel(int level)
{
    if (!isEmptyLevelsAllowed() && level < m_levelCount && m_start.at(level) == m_start.at(level + 1))
        closeLevel(level);
}

// Placeholders in the list before the first item of `level` at or right of x.
int StickyMultiLine::placeholdersBefore(int level, double x) const
{
    int n = 0;
    for (QGraphicsItem* p : placeholders()) {
        const int at = m_levelOf.value(p, -1);
        if (at >= 0 && (at < level || (at == level && p->scenePos().x() < x)))
            ++n;
    }
    return n;
}

void StickyMultiLine::place(QGraphicsItem* item, double x)
{
    item->setPos(std::max(origin().x(), x), levelY(m_levelOf.value(item)));
}

// After the items of its level with an x not greater than its own.
void StickyMultiLine::insertSorted(QGraphicsItem* item)
{
    const int level = m_levelOf.value(item);
    const double x = item->scenePos().x();
    int lo = m_start.at(level);
    int hi = m_start.at(level + 1);
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (x < m_items.at(mid)->scenePos().x())
            hi = mid;
        else
            lo = mid + 1;
    }
    m_items.insert(lo, item);
    for (int k = level + 1; k < m_start.size(); ++k)
        ++m_start[k];
}

int StickyMultiLine::levelStart(int level) const { return m_start.at(qBound(0, level, m_levelCount)); }

// List place of the first item of the level whose x is not less than x.
int StickyMultiLine::lowerBoundX(int level, double x) const
{
    int lo = m_start.at(level);
    int hi = m_start.at(level + 1);
    while (lo < hi) {
        const int mid = lo + (hi - lo) / 2;
        if (m_items.at(mid)->scenePos().x() < x)
            lo = mid + 1;
        else
            hi = mid;
    }
    return lo;
}
