#include <DQtUtil/AlertBox.h>
#include <DQtUtil/SpontaneousDialog.h>

#include "ModalDriver.h"
#include "TestSupport.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMainWindow>

#include <gtest/gtest.h>

using Dravik::Util::AlertBox;
using TestSupport::ModalDriver;

// Exec, button captions and custom buttons: the library's dialog tests.
TEST(AlertBox, LevelsChooseTheIconUnknownLevelsAreLoggedAndEmptyCaptionsKeepQts)
{
    EXPECT_EQ(AlertBox(0, {}, {}).icon(), QMessageBox::Information);
    EXPECT_EQ(AlertBox(1, {}, {}).icon(), QMessageBox::Warning);
    EXPECT_EQ(AlertBox(2, {}, {}).icon(), QMessageBox::Question);
    TestSupport::LogCapture log;
    AlertBox odd(7, {}, {});
    EXPECT_EQ(odd.GetLevel(), AlertBox::LevelWarning);
    EXPECT_EQ(odd.property("level").toInt(), 1);
    EXPECT_TRUE(log.containsError("unknown level 7"));

    AlertBox box(AlertBox::LevelQuestion, {}, {}, QMessageBox::Yes | QMessageBox::No);
    box.SetButtonText(QMessageBox::Yes, QString()); // keeps Qt's caption
    EXPECT_FALSE(box.button(QMessageBox::Yes)->text().isEmpty());
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
