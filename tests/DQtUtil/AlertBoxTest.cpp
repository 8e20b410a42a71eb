#include <DQtUtil/AlertBox.h>
#include <DQtUtil/SpontaneousDialog.h>

#include "ModalDriver.h"
#include "TestSupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMainWindow>
#include <QPushButton>

#include <gtest/gtest.h>

using Dravik::Util::AlertBox;
using TestSupport::ModalDriver;

TEST(AlertBox, ExecReturnsTheStandardButtonThatClosedIt)
{
    ModalDriver driver;
    driver.then<QMessageBox>([](QMessageBox* box) {
        EXPECT_EQ(box->objectName(), QStringLiteral("AlertBox"));
        EXPECT_EQ(box->windowTitle(), QStringLiteral("Title"));
        EXPECT_EQ(box->text(), QStringLiteral("Text"));
        EXPECT_EQ(box->button(QMessageBox::No)->text(), QStringLiteral("Never"));
        box->button(QMessageBox::No)->click();
    });
    AlertBox box(AlertBox::LevelQuestion, QStringLiteral("Title"), QStringLiteral("Text"),
                 QMessageBox::Yes | QMessageBox::No);
    box.SetButtonText(QMessageBox::No, QStringLiteral("Never"));
    box.SetButtonText(QMessageBox::Yes, QString()); // keeps Qt's caption
    EXPECT_FALSE(box.button(QMessageBox::Yes)->text().isEmpty());
    EXPECT_EQ(box.Exec(), QMessageBox::No);
    EXPECT_EQ(driver.stepsDone(), 1);
}

TEST(AlertBox, CustomButtonsAreToldApartByClickedButton)
{
    AlertBox box(AlertBox::LevelWarning, QStringLiteral("T"), QStringLiteral("X"));
    QAbstractButton* keep = box.AddButton(QStringLiteral("Keep"), QMessageBox::RejectRole);
    QAbstractButton* drop = box.AddButton(QStringLiteral("Drop"), QMessageBox::AcceptRole);
    ModalDriver driver;
    driver.then<QMessageBox>([&](QMessageBox*) { drop->click(); });
    EXPECT_EQ(box.Exec(), QMessageBox::NoButton);
    EXPECT_EQ(box.ClickedButton(), drop);
    EXPECT_NE(box.ClickedButton(), keep);
}

TEST(AlertBox, LevelsChooseTheIconAndUnknownLevelsAreLogged)
{
    EXPECT_EQ(AlertBox(0, {}, {}).icon(), QMessageBox::Information);
    EXPECT_EQ(AlertBox(1, {}, {}).icon(), QMessageBox::Warning);
    EXPECT_EQ(AlertBox(2, {}, {}).icon(), QMessageBox::Question);
    TestSupport::LogCapture log;
    AlertBox odd(7, {}, {});
    EXPECT_EQ(odd.GetLevel(), AlertBox::LevelWarning);
    EXPECT_EQ(odd.property("level").toInt(), 1);
    EXPECT_TRUE(log.containsError("unknown level 7"));
}

TEST(SpontaneousDialog, PrefersTheModalWidgetThenTheMainWindow)
{
    QMainWindow main;
    Dravik::Util::SpontaneousDialog::SetMainWindow(&main);
    ASSERT_EQ(QApplication::activeWindow(), nullptr); // nothing shown yet
    EXPECT_EQ(Dravik::Util::SpontaneousDialog::findParent(), &main);

    QWidget* seen = nullptr;
    ModalDriver driver;
    driver.then<QMessageBox>([&](QMessageBox* box) {
        seen = Dravik::Util::SpontaneousDialog::findParent();
        box->button(QMessageBox::Ok)->click();
    });
    AlertBox box(0, {}, {}, QMessageBox::Ok, &main);
    box.Exec();
    EXPECT_EQ(seen, &box);
    Dravik::Util::SpontaneousDialog::SetMainWindow(nullptr);
}
