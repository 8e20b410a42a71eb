#include "Scripted.h"

#include "BinView.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDragEnterEvent>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMimeData>
#include <QMouseEvent>
#include <QWidget>

#include <memory>

namespace Scripted {

namespace {

void send(QWidget* target, QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons buttons,
          Qt::KeyboardModifiers modifiers)
{
    QMouseEvent event(type, at, target->mapToGlobal(at), button, buttons, modifiers);
    QApplication::sendEvent(target, &event);
}

} // namespace

bool waitFor(const std::function<bool()>& done, int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > milliseconds)
            return false;
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    }
    return true;
}

void drag(QWidget* viewport, QPoint from, QPoint to, Qt::KeyboardModifiers modifiers, bool abort, QWidget* keyTarget)
{
    send(viewport, QEvent::MouseButtonPress, from, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    constexpr int steps = 6;
    for (int i = 1; i <= steps; ++i)
        send(viewport, QEvent::MouseMove, from + (to - from) * i / steps, Qt::NoButton, Qt::LeftButton, modifiers);
    if (abort) {
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QApplication::sendEvent(keyTarget ? keyTarget : viewport, &escape);
    }
    send(viewport, QEvent::MouseButtonRelease, to, Qt::LeftButton, Qt::NoButton, modifiers);
}

void click(QWidget* viewport, QPoint at)
{
    send(viewport, QEvent::MouseButtonPress, at, Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    send(viewport, QEvent::MouseButtonRelease, at, Qt::LeftButton, Qt::NoButton, Qt::NoModifier);
}

bool drop(QWidget* viewport, const QMimeData* data, QPoint at)
{
    if (!data)
        return false;
    QDragEnterEvent enter(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &enter);
    if (!enter.isAccepted())
        return false;
    QDragMoveEvent move(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &move);
    QDropEvent dropped(at, Qt::CopyAction, data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(viewport, &dropped);
    return dropped.isAccepted();
}

bool dropFiles(QWidget* viewport, const QStringList& paths, QPoint at)
{
    std::unique_ptr<QMimeData> data(Sandbox::BinView::mimeDataFor(paths));
    return drop(viewport, data.get(), at);
}

bool ScriptedStrategy::alertModifiedProject(bool& save)
{
    save = false;
    return true;
}

void ScriptedStrategy::showWarning(const QString& title, const QString& text) { warnings.push_back({title, text}); }

bool ScriptedStrategy::showHasFailedFiles(bool allowKeep, const QString& message)
{
    failedFilesQuestions.push_back({allowKeep, message});
    // As a person at the dialog, it takes a moment to answer: the event loop runs meanwhile.
    waitFor([] { return false; }, 30);
    return removeFailed;
}

void ScriptedStrategy::showCriticalError(const QApplication&, const QString& details)
{
    warnings.push_back({QStringLiteral("critical"), details});
}

void ScriptedStrategy::showMessageAlert(const QString& title, const QString& text, const QString&)
{
    warnings.push_back({title, text});
}

} // namespace Scripted
