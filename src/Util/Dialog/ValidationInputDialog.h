#pragma once

#include <Util/EditorUtilExport.h>

#include <QDialog>

#include <functional>

class QDialogButtonBox;
class QLabel;
class QLineEdit;

namespace Dialog {

// A one-line input box whose text is checked as it is typed. The validator returns whether
// the text is acceptable and fills the message shown under the line. While the text is not
// acceptable the line edit's dynamic property "state" is "error" (else "normal"), so a style
// sheet can mark it, and OK is disabled: an invalid text cannot be accepted.
class EDITORUTIL_EXPORT ValidationInputDialog : public QDialog
{
    Q_OBJECT
public:
    using Validator = std::function<bool(const QString& text, QString& error)>;

    // An empty `label` keeps the default "Input string:"; an empty validator accepts anything.
    ValidationInputDialog(const QString& title, const QString& label, const QString& text, Validator validator,
                          QWidget* parent = nullptr);

    QString inputText() const;
    bool isInputValid() const { return m_valid; }

private:
    void validate();

    Validator m_validator;
    QLabel* m_label;
    QLineEdit* m_lineEdit;
    QLabel* m_errorLabel;
    QDialogButtonBox* m_buttonBox;
    bool m_valid = true;
};

} // namespace Dialog
