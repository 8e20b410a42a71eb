#pragma once

#include <Util/EditorUtilExport.h>

#include <QObject>

#include <functional>

class QEvent;
class QTimerEvent;

// Coalesces any number of requests made during one turn of the event loop into a single
// call of a bound member function in a later turn.
//
// trigger() posts an event of type QEvent::User (1000) to the object. When the event is
// delivered, a zero-interval coarse timer is started unless one is already running; when
// the timer fires it is stopped and the member is called once. Destroying the object drops
// both the pending events and the timer, so nothing is called for an owner that is gone.
class EDITORUTIL_EXPORT DeferredCall : public QObject
{
    Q_OBJECT
public:
    static constexpr int TriggerEventType = 1000;

    template <class Owner>
    DeferredCall(Owner* owner, void (Owner::*method)(), int intervalMs = 0, QObject* parent = nullptr)
        : DeferredCall(std::function<void()>([owner, method] { (owner->*method)(); }), intervalMs, parent)
    {}
    DeferredCall(std::function<void()> call, int intervalMs = 0, QObject* parent = nullptr);
    ~DeferredCall() override;

    // Asks for one call in a later turn of the event loop.
    void trigger();

    // A disabled object lets delivered triggers pass without starting its timer; a timer
    // already running still fires.
    void setEnabled(bool enabled);
    bool isEnabled() const;

    int interval() const;
    void setInterval(int intervalMs);

    // True while the timer that leads to the call is running.
    bool isTimerActive() const;

protected:
    bool event(QEvent* event) override;
    void timerEvent(QTimerEvent* event) override;

private:
    std::function<void()> m_call;
    int m_interval = 0;
    int m_timerId = 0;
    bool m_enabled = true;
};
