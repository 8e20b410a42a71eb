#include "ValidationInputDialog.h"

#include <QDialogButtonBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>

namespace Dialog {

ValidationInputDialog::ValidationInputDialog(const QString& title, const QString& label, const QString& text,
                                             Validator validator, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint), m_validator(std::move(validator))
{
    setObjectName(QStringLiteral("ValidationInputDialog"));
    setWindowTitle(title);
    setModal(true);

    auto* content = new QFrame(this);
    content->setObjectName(QStringLiteral("contentFrame"));
    m_label = new QLabel(label.isEmpty() ? tr("Input string:") : label, content);
    m_label->setObjectName(QStringLiteral("label"));
    m_lineEdit = new QLineEdit(text, content);
    m_lineEdit->setObjectName(QStringLiteral("lineEdit"));
    m_label->setBuddy(m_lineEdit);
    m_errorLabel = new QLabel(content);
    m_errorLabel->setObjectName(QStringLiteral("errorLabel"));
    m_errorLabel->setWordWrap(true);
    m_buttonBox = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, content);
    m_buttonBox->setObjectName(QStringLiteral("buttonBox"));

    auto* contentLayout = new QVBoxLayout(content);
    contentLayout->addWidget(m_label);
    contentLayout->addWidget(m_lineEdit);
    contentLayout->addWidget(m_errorLabel);
    contentLayout->addWidget(m_buttonBox);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(content);

    connect(m_buttonBox, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttonBox, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(m_lineEdit, &QLineEdit::textChanged, this, &ValidationInputDialog::validate);
    validate();
}

QString ValidationInputDialog::inputText() const { return m_lineEdit->text(); }

void ValidationInputDialog::validate()
{
    QString error;
    m_valid = !m_validator || m_validator(m_lineEdit->text(), error);
    if (m_valid)
        error.clear();
    m_lineEdit->setProperty("state", m_valid ? QStringLiteral("normal") : QStringLiteral("error"));
    // Dynamic properties are read when the style sheet is applied: re-apply it.
    m_lineEdit->style()->unpolish(m_lineEdit);
    m_lineEdit->style()->polish(m_lineEdit);
    m_errorLabel->setText(error);
    m_buttonBox->button(QDialogButtonBox::Ok)->setEnabled(m_valid);
}

} // namespace Dialog
