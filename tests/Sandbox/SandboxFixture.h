#pragma once

// What every sandbox window test starts from: the sample media (written once per test program),
// fresh settings, a dialog strategy that answers by script and a shown window.

#include "SampleMedia.h"
#include "SandboxWindow.h"
#include "Scripted.h"
#include "TempSettings.h"
#include "TimelineView.h"

#include <Util/Interfaces/EditorSettings.h>

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <memory>

namespace SandboxTest {

constexpr Types::Time second = Types::TimeUnitsPerSecond;

// Bars with a clock and a tone, a moving shape, a tone, a still picture and a broken file.
inline const QStringList& samples()
{
    static QTemporaryDir folder;
    static QString error;
    static const QStringList files = SampleMedia::ensure(folder.filePath(QStringLiteral("samples")), &error);
    EXPECT_EQ(files.size(), 5) << error.toStdString();
    return files;
}

class WindowFixture : public testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(samples().size(), 5);
        Dialog::setStrategy(dialogs);
        Settings::setProjectPath(settings.folder() + QStringLiteral("/Projects"));
        window = std::make_unique<Sandbox::SandboxWindow>();
        window->show();
        timeline = window->timeline();
        viewport = timeline->viewport();
    }
    void TearDown() override
    {
        window.reset();
        Dialog::initialize(false);
    }

    static QString sample(int index) { return samples().at(index); }
    const Timeline::Object* project() const { return window->projectTimeline(); }
    QPoint pointAt(Types::Time time, const Timeline::Track* track) const
    {
        return timeline->viewportPoint(
            QPointF(Sandbox::TimelineView::xOf(time), timeline->rowCenter(timeline->rowOf(track))));
    }
    // Imports into the bin and waits until the import is done.
    void import(const QStringList& paths)
    {
        QSignalSpy finished(window.get(), &Sandbox::SandboxWindow::importFinished);
        window->importFiles(paths);
        ASSERT_TRUE(Scripted::waitFor([&] { return finished.count() == 1; }));
    }

    TestSupport::TempSettings settings;
    std::shared_ptr<Scripted::ScriptedStrategy> dialogs = std::make_shared<Scripted::ScriptedStrategy>();
    std::unique_ptr<Sandbox::SandboxWindow> window;
    Sandbox::TimelineView* timeline = nullptr;
    QWidget* viewport = nullptr;
};

} // namespace SandboxTest
