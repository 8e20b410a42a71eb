#include "DeferredCall.h"

#include <QCoreApplication>
#include <QEvent>
#include <QTimerEvent>

#include <glog/logging.h>

DeferredCall::DeferredCall(std::function<void()> call, int intervalMs, QObject* parent)
    : QObject(parent), m_call(std::move(call)), m_interval(intervalMs < 0 ? 0 : intervalMs)
{
    if (intervalMs < 0)
        LOG(ERROR) << "DeferredCall: negative interval " << intervalMs << " replaced by 0";
}

DeferredCall::~DeferredCall() = default;

void DeferredCall::trigger()
{
    QCoreApplication::postEvent(this, new QEvent(static_cast<QEvent::Type>(TriggerEventType)), 0);
}

void DeferredCall::setEnabled(bool enabled) { m_enabled = enabled; }

bool DeferredCall::isEnabled() const { return m_enabled; }

int DeferredCall::interval() const { return m_interval; }

void DeferredCall::setInterval(int intervalMs)
{
    if (intervalMs < 0) {
        LOG(ERROR) << "DeferredCall::setInterval: negative interval " << intervalMs << " ignored";
        return;
    }
    m_interval = intervalMs;
}

bool DeferredCall::isTimerActive() const { return m_timerId != 0; }

bool DeferredCall::event(QEvent* event)
{
    if (event->type() != static_cast<QEvent::Type>(TriggerEventType))
        return QObject::event(event);
    if (m_timerId == 0 && m_enabled)
        m_timerId = startTimer(m_interval, Qt::CoarseTimer);
    return true;
}

void DeferredCall::timerEvent(QTimerEvent* event)
{
    if (event->timerId() != m_timerId) {
        QObject::timerEvent(event);
        return;
    }
    killTimer(m_timerId);
    m_timerId = 0;
    if (m_call)
        m_call();
}
