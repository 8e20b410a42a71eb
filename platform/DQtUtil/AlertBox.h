#pragma once

#include <QMessageBox>

namespace Dravik {
namespace Util {

// The editor's modal alert: a message box with an importance level (0 information,
// 1 warning, 2 question), standard and custom buttons. Object name "AlertBox"; the level is
// also the dynamic property "level" so that style sheets can tell the kinds apart.
class AlertBox : public QMessageBox
{
    Q_OBJECT
public:
    enum Level
    {
        LevelInformation = 0,
        LevelWarning = 1,
        LevelQuestion = 2
    };

    // A level outside 0..2 is logged and shown as a warning.
    AlertBox(int level, const QString& title, const QString& text,
             QMessageBox::StandardButtons buttons = QMessageBox::NoButton, QWidget* parent = nullptr,
             Qt::WindowFlags flags = Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint);

    int GetLevel() const { return m_level; }

    // Adds a button of the box's own with the given role; the box owns it.
    QAbstractButton* AddButton(const QString& text, QMessageBox::ButtonRole role);
    // Replaces the caption of a standard button; an empty text keeps Qt's caption.
    void SetButtonText(QMessageBox::StandardButton which, const QString& text);
    void SetRichText(bool rich);

    // Runs the box modally. Returns the standard button that closed it, or NoButton when a
    // custom button closed it or it was closed otherwise (ClickedButton() tells which).
    QMessageBox::StandardButton Exec();
    QAbstractButton* ClickedButton() const { return clickedButton(); }

private:
    int m_level;
};

} // namespace Util
} // namespace Dravik
