// The preview's player, the browser of effects and presets and the clip panel, driven through
// the real widgets: playback with a clip selected, the player taken by another editor, a
// preview on the stock picture, and the clip's adjustments with undo.

#include "Panels.h"
#include "SandboxFixture.h"
#include "TimelineView.h"

#include <Util/Editor/PlayerEditor.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QAction>
#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QGraphicsSimpleTextItem>
#include <QLineEdit>
#include <QListWidget>
#include <QMimeData>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

using Sandbox::SandboxWindow;

namespace {

using SandboxTest::second;

// A window with the bars (0 to 4 s) and the still picture after them on the main track.
class PanelsTest : public SandboxTest::WindowFixture
{
protected:
    void SetUp() override
    {
        Settings::setPreviewImageFolder(QStringLiteral(EDITORUTIL_TEST_SOURCE_DIR "/share/EditorUtil/preview"));
        WindowFixture::SetUp();
        import({sample(0), sample(3)});
        bars = timeline->placeFile(window->binFile(sample(0)), 0, project()->primaryTrack());
        still = timeline->placeFile(window->binFile(sample(3)), barsEnd(), project()->primaryTrack());
        ASSERT_TRUE(bars && still);
    }
    void TearDown() override
    {
        WindowFixture::TearDown();
        Settings::setPreviewImageFolder(QString());
    }

    Types::Time barsEnd() const { return project()->clipTiming(bars).end(); }
    void select(const Timeline::Clip* clip) { Scripted::click(timeline->viewport(), timeline->clipPoint(clip, 0.5)); }
    void clickItem(const QString& kind, const QString& label)
    {
        QTreeWidget* list = window->browser()->list();
        const QList<QTreeWidgetItem*> found = list->findItems(label, Qt::MatchExactly | Qt::MatchRecursive);
        for (QTreeWidgetItem* item : found) {
            if (item->parent() && item->parent()->text(0) == kind) {
                list->scrollToItem(item);
                QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(item).center());
                return;
            }
        }
        ADD_FAILURE() << "no item " << label.toStdString();
    }
    // The window's menu action with that shortcut.
    QAction* action(QKeySequence::StandardKey key) const
    {
        for (QAction* a : window->findChildren<QAction*>())
            if (a->shortcut() == QKeySequence(key))
                return a;
        ADD_FAILURE() << "no action";
        return nullptr;
    }
    QDoubleSpinBox* speedBox() const
    {
        return window->clipPanel()->findChild<QDoubleSpinBox*>(QStringLiteral("speed"));
    }
    void typeSpeed(const QString& text)
    {
        QLineEdit* edit = speedBox()->findChild<QLineEdit*>();
        edit->selectAll();
        QTest::keyClicks(edit, text);
        QTest::keyClick(edit, Qt::Key_Return);
    }

    const Timeline::Clip* bars = nullptr;
    const Timeline::Clip* still = nullptr;
};

TEST_F(PanelsTest, playWithAClipSelectedStopsExactlyOnItsEndEdgeAndThePlayerIsReleased)
{
    select(bars);
    ASSERT_EQ(timeline->selectedClip(), bars);
    EXPECT_EQ(window->player().holder(), window->sessionClient()) << "the clip's session uses the player";
    EXPECT_TRUE(window->playerEditor()->playerClient()->isInUse());

    timeline->setPlayhead(barsEnd() - second / 2);
    QSignalSpy stopped(window.get(), &SandboxWindow::playbackStopped);
    window->play();
    EXPECT_TRUE(window->playing());
    EXPECT_FALSE(window->sessionClient()->isInUse()) << "playback ends the session's hold";
    ASSERT_TRUE(Scripted::waitFor([&] { return stopped.count() == 1; }));

    EXPECT_EQ(stopped.at(0).at(0).value<Types::Time>(), barsEnd());
    EXPECT_EQ(timeline->playhead(), barsEnd());
    EXPECT_EQ(window->host().playback()->state()->position, barsEnd());
    EXPECT_EQ(window->host().playback()->state()->code, Playback::State::Stopped);
    EXPECT_FALSE(window->playing());
    EXPECT_TRUE(window->player().isFree());
    EXPECT_FALSE(window->playerEditor()->playerClient()->isInUse());
    EXPECT_EQ(timeline->selectedClip(), bars);
}

TEST_F(PanelsTest, aSecondEditorTakingThePlayerStopsTheFirst)
{
    // The timeline plays; the browser takes the player and playback stops where it was.
    timeline->setPlayhead(0);
    QSignalSpy stopped(window.get(), &SandboxWindow::playbackStopped);
    window->play();
    ASSERT_EQ(window->player().holder(), window->timelineClient());
    clickItem(QStringLiteral("Effects"), QStringLiteral("Mirror"));
    EXPECT_EQ(window->player().holder(), window->browser()->client());
    EXPECT_FALSE(window->playing());
    ASSERT_EQ(stopped.count(), 1);
    EXPECT_LT(timeline->playhead(), project()->duration());
    EXPECT_EQ(window->host().playback()->state()->code, Playback::State::Stopped);

    // The clip's session takes it from the browser; the browser takes it back, and the
    // session's player editor lets go with it.
    select(bars);
    EXPECT_EQ(window->player().holder(), window->sessionClient());
    EXPECT_FALSE(window->preview()->showsPicture());
    QSignalSpy released(window->playerEditor()->playerClient(), &ExclusiveClient::released);
    clickItem(QStringLiteral("Transitions"), QStringLiteral("Wipe"));
    EXPECT_EQ(window->player().holder(), window->browser()->client());
    EXPECT_EQ(released.count(), 1);
    EXPECT_FALSE(window->sessionClient()->isInUse());
}

TEST_F(PanelsTest, choosingAnEffectShowsItsPreviewOnTheStockPictureUntilTheTimelineIsClicked)
{
    const QPoint sky(240, 20); // blue in the stock picture
    clickItem(QStringLiteral("Colour filters"), QStringLiteral("Sepia"));
    ASSERT_TRUE(window->preview()->showsPicture());
    const QPixmap shown = window->preview()->picture();
    ASSERT_FALSE(shown.isNull());
    EXPECT_EQ(shown.size(), QSize(Sandbox::PreviewPanel::frameWidth, Sandbox::PreviewPanel::frameHeight));
    const QColor sepia = shown.toImage().pixelColor(sky);
    EXPECT_GT(sepia.red(), sepia.blue()) << "the blue sky turned brown";

    clickItem(QStringLiteral("Colour filters"), QStringLiteral("Cool"));
    const QColor cool = window->preview()->picture().toImage().pixelColor(sky);
    EXPECT_GT(cool.blue(), cool.red());

    // A click on the timeline gives the player back to it: the frame under the playhead shows.
    Scripted::click(timeline->viewport(),
                    timeline->viewportPoint(QPointF(Sandbox::TimelineView::xOf(second),
                                                    timeline->rowCenter(timeline->rowOf(project()->titleTrack())))));
    EXPECT_FALSE(window->preview()->showsPicture());
    EXPECT_EQ(window->player().holder(), window->timelineClient());
    EXPECT_EQ(window->preview()->shownClip(), bars);
    EXPECT_TRUE(window->browser()->list()->selectedItems().isEmpty());
}

TEST_F(PanelsTest, everyItemOfTheBrowserDragsOntoTheTimelineAndTheClipShowsWhatItWasGiven)
{
    QTreeWidget* list = window->browser()->list();
    QAbstractItemModel* items = list->model();
    const QPoint onTitles = timeline->viewportPoint(
        QPointF(Sandbox::TimelineView::xOf(0), timeline->rowCenter(timeline->rowOf(project()->titleTrack()))));
    const QStringList titleKinds{QStringLiteral("Titles"), QStringLiteral("Callouts"), QStringLiteral("Quizzes")};
    for (int k = 0; k < items->rowCount(); ++k) {
        const QModelIndex kind = items->index(k, 0);
        for (int i = 0; i < items->rowCount(kind); ++i) {
            SCOPED_TRACE(items->index(i, 0, kind).data().toString().toStdString());
            std::unique_ptr<QMimeData> data(items->mimeData({items->index(i, 0, kind)})); // what a drag carries
            const bool title = titleKinds.contains(kind.data().toString());
            EXPECT_TRUE(Scripted::drop(timeline->viewport(), data.get(), title ? onTitles : timeline->clipPoint(bars)));
        }
    }
    EXPECT_EQ(project()->clipsOnTrack(project()->titleTrack()).size(), 6u);
    // The bars keep every effect, the last colour filter and transition, and the last motion.
    QStringList shown;
    for (QGraphicsItem* item : timeline->scene()->items())
        if (auto* text = dynamic_cast<QGraphicsSimpleTextItem*>(item))
            shown << text->text();
    EXPECT_TRUE(shown.contains(QStringLiteral("Blur \u00b7 Mirror \u00b7 Pixelate \u00b7 Vignette \u00b7 Invert "
                                              "\u00b7 Dip \u00b7 Grow")))
        << shown.join(QLatin1Char('|')).toStdString();

    // The clip panel lists the same; Remove takes one off, and Undo puts it back, as it takes
    // the drops off one by one.
    select(bars);
    auto* given = window->clipPanel()->findChild<QListWidget*>(QStringLiteral("given"));
    ASSERT_EQ(given->count(), 7);
    given->setCurrentRow(6);
    window->clipPanel()->findChild<QPushButton*>(QStringLiteral("remove"))->click();
    EXPECT_EQ(bars->animation(), nullptr);
    EXPECT_EQ(given->count(), 6);
    action(QKeySequence::Undo)->trigger();
    EXPECT_EQ(ClipAdjustmentsProvider::contentNames(bars).last(), QStringLiteral("Grow"));
    while (window->undoStack().canUndo())
        action(QKeySequence::Undo)->trigger();
    EXPECT_EQ(given->count(), 0);
}

TEST_F(PanelsTest, aSpeedTypedInTheClipPanelIsOneUndoableEditAndBackwardsReversesTheClip)
{
    select(bars);
    const Timeline::ClipTiming before = project()->clipTiming(bars);

    typeSpeed(QStringLiteral("2"));
    EXPECT_EQ(project()->clipTiming(bars).speed, 2.0);
    EXPECT_NEAR(double(project()->clipTiming(bars).length), before.length / 2.0, 1.0);
    EXPECT_EQ(window->undoStack().count(), 1);
    EXPECT_TRUE(window->isModified());

    action(QKeySequence::Undo)->trigger();
    EXPECT_EQ(project()->clipTiming(bars), before);
    EXPECT_EQ(speedBox()->value(), 1.0) << "the panel shows the clip as it is again";
    action(QKeySequence::Redo)->trigger();
    EXPECT_EQ(project()->clipTiming(bars).speed, 2.0);

    auto* backwards = window->clipPanel()->findChild<QCheckBox*>();
    ASSERT_NE(backwards, nullptr);
    backwards->click();
    EXPECT_TRUE(project()->clipTiming(bars).reversed);
    // Nothing selected: nothing to change.
    timeline->selectClip(nullptr);
    EXPECT_FALSE(speedBox()->isEnabled());
    EXPECT_FALSE(backwards->isEnabled());
}

TEST_F(PanelsTest, aRefusedValueLeavesTheClipAsItWasAndSaysWhy)
{
    select(bars);
    const Timeline::ClipTiming before = project()->clipTiming(bars);
    struct Row
    {
        const char* name;
        QString typed;
    };
    const Row rows[] = {{"zero", QStringLiteral("0")}, {"too fast", QStringLiteral("15")}};
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        typeSpeed(row.typed);
        EXPECT_EQ(project()->clipTiming(bars), before);
        EXPECT_EQ(speedBox()->value(), 1.0);
        EXPECT_EQ(window->clipPanel()->message(), QStringLiteral("The speed must lie from 0.1x to 10x."));
        EXPECT_EQ(window->undoStack().count(), 0);
    }

    // A still picture has no speed at all: the entry is off, with the reason.
    select(still);
    EXPECT_FALSE(speedBox()->isEnabled());
    EXPECT_EQ(speedBox()->toolTip(), QStringLiteral("A still picture does not play over time."));
    EXPECT_TRUE(window->clipPanel()->message().isEmpty());
}

} // namespace
