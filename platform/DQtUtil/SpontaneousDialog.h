#pragma once

#include <QWidget>

namespace Dravik {
namespace Util {

// Chooses the window a dialog that pops up on its own should be parented to.
class SpontaneousDialog
{
public:
    // The active modal widget, else the active window, else the window registered with
    // SetMainWindow() when it still exists, else nullptr (a top-level dialog).
    static QWidget* findParent();
    // The application's main window (held weakly).
    static void SetMainWindow(QWidget* window);
};

} // namespace Util
} // namespace Dravik
