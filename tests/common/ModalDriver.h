#pragma once

// Drives modal dialogs from inside their own event loop: each queued step waits until a
// widget of the given class is the top of the modal stack (and is not the widget the
// previous step handled), then acts on it, typically by clicking a button. Steps run in
// order; a step that never finds its widget leaves stepsDone() short, which the test
// asserts. Header-only so that any test folder can use it.

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QTimer>
#include <QWidget>

#include <deque>
#include <functional>

namespace TestSupport {

class ModalDriver
{
public:
    ModalDriver()
    {
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, [this] { poll(); });
    }

    template <class W>
    ModalDriver& then(std::function<void(W*)> step)
    {
        m_steps.push_back([step](QWidget* w) {
            W* typed = qobject_cast<W*>(w);
            if (!typed)
                return false;
            step(typed);
            return true;
        });
        m_clock.start();
        m_timer.start();
        return *this;
    }

    int stepsDone() const { return m_done; }
    bool allDone() const { return m_steps.empty(); }

private:
    void poll()
    {
        if (m_steps.empty()) {
            m_timer.stop();
            return;
        }
        // A dialog that never comes must not hang the test: give up after ten seconds.
        if (m_clock.elapsed() > 10000) {
            m_timer.stop();
            if (QWidget* w = QApplication::activeModalWidget())
                QMetaObject::invokeMethod(w, "reject", Qt::QueuedConnection);
            return;
        }
        QWidget* top = QApplication::activeModalWidget();
        if (!top || top == m_last || !top->isVisible())
            return;
        if (m_steps.front()(top)) {
            m_last = top;
            m_steps.pop_front();
            ++m_done;
            m_clock.restart();
        }
    }

    QTimer m_timer;
    QElapsedTimer m_clock;
    std::deque<std::function<bool(QWidget*)>> m_steps;
    QPointer<QWidget> m_last;
    int m_done = 0;
};

} // namespace TestSupport
