#include "ActionStatistics.h"

#include <Util/Interfaces/EditorSettings.h>

#include <glog/logging.h>

#include <QAction>
#include <QHash>
#include <QPointer>

#include <algorithm>

namespace {
const char kTagProperty[] = "statisticsTag";
}

class ActionStatistics::Private
{
public:
    QHash<QString, int> counts;
    QHash<QAction*, QMetaObject::Connection> connections;
};

ActionStatistics::ActionStatistics(QObject* parent) : QObject(parent), d(std::make_unique<Private>())
{
    const QVariantMap stored = Settings::actionUsageCounts();
    for (auto it = stored.begin(); it != stored.end(); ++it) {
        bool ok = false;
        const int count = it.value().toInt(&ok);
        if (ok && count > 0 && !it.key().isEmpty())
            d->counts.insert(it.key(), count);
        else
            LOG(ERROR) << "ActionStatistics::ActionStatistics: stored count \"" << it.value().toString().toStdString()
                       << "\" of \"" << it.key().toStdString() << "\" is invalid; it starts again from zero";
    }
}

ActionStatistics::~ActionStatistics() = default;

void ActionStatistics::tag(QAction* action, const QString& tag)
{
    if (!action) {
        LOG(ERROR) << "ActionStatistics::tag: no action to tag as \"" << tag.toStdString() << "\"";
        return;
    }
    disconnect(d->connections.take(action));
    action->setProperty(kTagProperty, tag.isEmpty() ? QVariant() : QVariant(tag));
    if (tag.isEmpty())
        return;
    QPointer<QAction> guarded(action);
    d->connections.insert(action, connect(action, &QAction::triggered, this, [this, guarded] {
                              if (guarded)
                                  record(tagOf(guarded));
                          }));
    connect(action, &QObject::destroyed, this, [this, action] { d->connections.remove(action); });
}

QString ActionStatistics::tagOf(const QAction* action)
{
    return action ? action->property(kTagProperty).toString() : QString();
}

void ActionStatistics::record(const QString& tag)
{
    if (tag.isEmpty()) {
        LOG(ERROR) << "ActionStatistics::record: empty tag; nothing counted";
        return;
    }
    const int count = ++d->counts[tag];
    QVariantMap stored;
    for (auto it = d->counts.cbegin(); it != d->counts.cend(); ++it)
        stored.insert(it.key(), it.value());
    Settings::setActionUsageCounts(stored);
    Q_EMIT recorded(tag, count);
}

int ActionStatistics::count(const QString& tag) const { return d->counts.value(tag); }

QList<QPair<QString, int>> ActionStatistics::mostUsed(int limit) const
{
    QList<QPair<QString, int>> list;
    for (auto it = d->counts.cbegin(); it != d->counts.cend(); ++it)
        list << qMakePair(it.key(), it.value());
    std::sort(list.begin(), list.end(), [](const QPair<QString, int>& a, const QPair<QString, int>& b) {
        return a.second != b.second ? a.second > b.second : a.first < b.first;
    });
    return list.mid(0, qMax(0, limit));
}

void ActionStatistics::clear()
{
    d->counts.clear();
    Settings::setActionUsageCounts(QVariantMap());
}
