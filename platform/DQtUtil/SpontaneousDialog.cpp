#include "SpontaneousDialog.h"

#include <QApplication>
#include <QPointer>

namespace Dravik {
namespace Util {

namespace {
QPointer<QWidget>& mainWindow()
{
    static QPointer<QWidget> window;
    return window;
}
} // namespace

QWidget* SpontaneousDialog::findParent()
{
    if (QWidget* modal = QApplication::activeModalWidget())
        return modal;
    if (QWidget* active = QApplication::activeWindow())
        return active;
    return mainWindow().data();
}

void SpontaneousDialog::SetMainWindow(QWidget* window) { mainWindow() = window; }

} // namespace Util
} // namespace Dravik
