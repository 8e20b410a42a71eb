#include "AlertBox.h"

#include <QAbstractButton>
#include <QPushButton>
#include <QVariant>

#include <glog/logging.h>

namespace Dravik {
namespace Util {

namespace {
QMessageBox::Icon iconOf(int level)
{
    switch (level) {
    case AlertBox::LevelInformation:
        return QMessageBox::Information;
    case AlertBox::LevelQuestion:
        return QMessageBox::Question;
    default:
        return QMessageBox::Warning;
    }
}
} // namespace

AlertBox::AlertBox(int level, const QString& title, const QString& text, QMessageBox::StandardButtons buttons,
                   QWidget* parent, Qt::WindowFlags flags)
    : QMessageBox(iconOf(level), title, text, buttons, parent, flags), m_level(level)
{
    if (level < LevelInformation || level > LevelQuestion) {
        LOG(ERROR) << "AlertBox: unknown level " << level << ", shown as a warning";
        m_level = LevelWarning;
    }
    setWindowModality(Qt::ApplicationModal);
    // QMessageBox adds hints of its own and setWindowModality() resets them: keep exactly
    // the flags asked for.
    setWindowFlags(flags);
    setObjectName(QStringLiteral("AlertBox"));
    setProperty("level", m_level);
}

QAbstractButton* AlertBox::AddButton(const QString& text, QMessageBox::ButtonRole role)
{
    return addButton(text, role);
}

void AlertBox::SetButtonText(QMessageBox::StandardButton which, const QString& text)
{
    if (text.isEmpty())
        return;
    if (QAbstractButton* b = button(which))
        b->setText(text);
}

void AlertBox::SetRichText(bool rich) { setTextFormat(rich ? Qt::RichText : Qt::AutoText); }

QMessageBox::StandardButton AlertBox::Exec()
{
    exec();
    QAbstractButton* clicked = clickedButton();
    return clicked ? standardButton(clicked) : QMessageBox::NoButton;
}

} // namespace Util
} // namespace Dravik
