#include <Util/Dialog/ValidationInputDialog.h>

#include <QDialogButtonBox>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include <gtest/gtest.h>

#include "TestSupport.h"

namespace {

using TestSupport::S;

// Names of 1 to 8 letters.
bool validName(const QString& text, QString& error)
{
    if (text.isEmpty()) {
        error = S("The name is empty");
        return false;
    }
    if (text.size() > 8) {
        error = S("At most 8 characters");
        return false;
    }
    return true;
}

} // namespace

class ValidationInput : public testing::Test
{
protected:
    Dialog::ValidationInputDialog dialog{S("Rename"), S("Name:"), S("clip"), validName};
    QLineEdit* edit = dialog.findChild<QLineEdit*>(S("lineEdit"));
    QLabel* error = dialog.findChild<QLabel*>(S("errorLabel"));
    QPushButton* ok = dialog.findChild<QDialogButtonBox*>(S("buttonBox"))->button(QDialogButtonBox::Ok);
};

TEST_F(ValidationInput, MarksTheLineAsItIsTyped)
{
    EXPECT_EQ(dialog.objectName(), S("ValidationInputDialog"));
    EXPECT_NE(dialog.findChild<QFrame*>(S("contentFrame")), nullptr);
    EXPECT_EQ(dialog.findChild<QLabel*>(S("label"))->text(), S("Name:"));
    EXPECT_EQ(dialog.windowTitle(), S("Rename"));
    EXPECT_EQ(dialog.inputText(), S("clip"));
    ASSERT_NE(edit, nullptr);
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(edit->property("state").toString(), S("normal"));
    EXPECT_TRUE(ok->isEnabled());

    edit->clear();
    EXPECT_EQ(edit->property("state").toString(), S("error"));
    EXPECT_EQ(error->text(), S("The name is empty"));
    EXPECT_FALSE(ok->isEnabled());
    EXPECT_FALSE(dialog.isInputValid());

    QTest::keyClicks(edit, S("sunset"));
    EXPECT_EQ(edit->property("state").toString(), S("normal"));
    EXPECT_EQ(error->text(), QString());
    EXPECT_TRUE(ok->isEnabled());
    EXPECT_EQ(dialog.inputText(), S("sunset"));

    QTest::keyClicks(edit, S("-and-more"));
    EXPECT_EQ(edit->property("state").toString(), S("error"));
    EXPECT_EQ(error->text(), S("At most 8 characters"));
}

TEST_F(ValidationInput, TheStyleSheetSeesTheState)
{
    dialog.setStyleSheet(S("QLineEdit[state=\"error\"] { color: rgb(255, 0, 0); }"
                           "QLineEdit[state=\"normal\"] { color: rgb(0, 0, 255); }"));
    dialog.ensurePolished();
    edit->ensurePolished();
    EXPECT_EQ(edit->palette().color(QPalette::Text), QColor(0, 0, 255));
    edit->setText(S("far too long a name"));
    EXPECT_EQ(edit->palette().color(QPalette::Text), QColor(255, 0, 0));
}

TEST(ValidationInputDefaults, EmptyLabelAndValidator)
{
    Dialog::ValidationInputDialog dialog(S("T"), QString(), QString(), {});
    EXPECT_EQ(dialog.findChild<QLabel*>(S("label"))->text(), S("Input string:"));
    EXPECT_TRUE(dialog.isInputValid());
}
