#include "ImportTestSupport.h"
#include "MediaSamples.h"
#include "TestSupport.h"
#include "TimelineChanges.h"

#include <Util/Import/DragAndDropHandler.h>
#include <Util/Import/MimeUtils.h>
#include <Util/Import/QuizUtils.h>

#include <QDir>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QUndoStack>

#include <gtest/gtest.h>

#include <sstream>

using namespace ImportTest;
using Kind = DragAndDropHandler::Kind;
using Target = DragAndDropHandler::Target;

namespace {

constexpr Types::Time second = Types::TimeUnitsPerSecond;

// One line per clip of a track, by position.
std::vector<std::string> describe(const Timeline::Object* timeline, const Timeline::Track* track)
{
    std::vector<std::string> lines;
    for (const Timeline::Clip* clip : timeline->clipsOnTrack(track)) {
        const Timeline::ClipTiming& timing = timeline->clipTiming(clip);
        std::ostringstream line;
        line << clip->name() << "@" << timing.position / second << (clip->isBroken() ? " broken" : "");
        lines.push_back(line.str());
    }
    return lines;
}

class DragAndDropHandlerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        host.setOpener(
            std::make_shared<ChoosingOpener>(std::make_shared<Media::SignatureOpener>(),
                                             QMap<QString, std::vector<int>>{{QStringLiteral("licence.mp4"), {20}}}));
        Model::installDefaultServices(host);
        timeline = host.addTimeline("Project");
        first = place("First", timeline->primaryTrack(), 0);
        second_ = place("Second", timeline->primaryTrack(), 5 * second);
        caption = place("Caption", timeline->titleTrack(), 6 * second, Timeline::Clip::Title);
        host.edit(timeline)->addLink(second_, caption, second);
    }

    const Timeline::Clip* place(const char* name, const Timeline::Track* track, Types::Time at,
                                Timeline::Clip::Type type = Timeline::Clip::Color)
    {
        const Timeline::Clip* clip = host.addClip(Timeline::Clip(type).setName(name));
        host.edit(timeline)->addClip(clip, Timeline::ClipTiming(track, at, 5 * second));
        return clip;
    }

    QString file(const QString& name, const QByteArray& content = MediaSamples::mp4())
    {
        const QString path = QDir::isAbsolutePath(name) ? name : dir.filePath(name);
        EXPECT_TRUE(MediaSamples::writeFile(path, content));
        return path;
    }

    static std::unique_ptr<QMimeData> files(const QStringList& paths)
    {
        auto data = std::make_unique<QMimeData>();
        MimeUtils::packFiles(data.get(), paths);
        return data;
    }

    QTemporaryDir dir;
    Model::Host host;
    StrategyScope dialog;
    const Timeline::Object* timeline = nullptr;
    const Timeline::Clip* first = nullptr;
    const Timeline::Clip* second_ = nullptr;
    const Timeline::Clip* caption = nullptr;
};

} // namespace

TEST_F(DragAndDropHandlerTest, DroppedFilesLandInNaturalOrderWithOneQuestionAndOneEdit)
{
    for (bool remove : {false, true}) {
        SCOPED_TRACE(remove ? "remove failed files" : "keep failed files");
        dialog->remove = remove;
        dialog->questions.clear();
        const QString folder = dir.filePath(remove ? QStringLiteral("b") : QStringLiteral("a"));
        file(folder + QStringLiteral("/clip10.mp4"));
        file(folder + QStringLiteral("/clip2.mp4"));
        file(folder + QStringLiteral("/.hidden.mp4"));
        file(folder + QStringLiteral("/inner/clip1.png"), MediaSamples::png(8, 8));
        file(folder + QStringLiteral("/licence.mp4"));
        const QString broken = file(folder + QStringLiteral("-cut.mp4"), QByteArray("not a movie"));

        Timeline::Object before = *timeline;
        DragAndDropHandler handler(timeline);
        TimelineChanges edits(timeline);
        QSignalSpy landed(&handler, &DragAndDropHandler::filesLanded);
        ASSERT_TRUE(
            handler.drop(files({broken, folder}).get(), Target::onTimeline(timeline->primaryTrack(), 5 * second)));
        EXPECT_EQ(handler.pendingImports(), 1);
        EXPECT_EQ(timeline->clips(), before.clips()) << "nothing lands before the question is answered";

        ASSERT_TRUE(spinUntil([&] { return landed.count() > 0; }));
        spinTurns();
        ASSERT_EQ(dialog->questions.size(), 1u);
        EXPECT_TRUE(dialog->questions[0].allowKeep);
        EXPECT_TRUE(dialog->questions[0].message.contains(QStringLiteral("codec licenses"))) << "grouped by cause";
        EXPECT_EQ(edits.count, 1) << "the drop lands in one edit";
        EXPECT_EQ(landed.count(), 1);
        EXPECT_EQ(handler.pendingImports(), 0);
        const std::vector<std::string> keep{"First@0",      "clip2.mp4@5",           "clip10.mp4@10",
                                            "clip1.png@15", "licence.mp4@20 broken", "a-cut.mp4@25 broken",
                                            "Second@30"};
        const std::vector<std::string> removed{"First@0", "clip2.mp4@5", "clip10.mp4@10", "clip1.png@15", "Second@30"};
        EXPECT_EQ(describe(timeline, timeline->primaryTrack()), remove ? removed : keep);
        EXPECT_EQ(landed.at(0).at(0).toInt(), remove ? 3 : 5);
        EXPECT_EQ(describe(timeline, timeline->titleTrack()), std::vector<std::string>{"Caption@31"})
            << "a clip linked to a moved clip moves with it";

        // Undo the drop for the next round.
        auto edit = host.edit(timeline);
        *edit = before;
    }
}

TEST_F(DragAndDropHandlerTest, AcceptanceIsAnsweredExactlyWithAReason)
{
    const QString movie = file(QStringLiteral("movie.mp4"));
    const QString project = file(QStringLiteral("work.dscproj"), "project");
    Overlay::Preset title;
    title.appendItem(Overlay::Item().setText("Hello"));
    Quiz::Preset quiz;
    quiz.questions = Quiz::Utils::defaultQuizzes().front()->questions;
    const Timeline::Object* other = host.addTimeline("Other");
    const Timeline::Clip* stranger = host.addClip(Timeline::Clip(Timeline::Clip::Color));
    host.edit(other)->addClip(stranger, Timeline::ClipTiming(other->primaryTrack(), 0, second));

    auto make = [](std::function<void(QMimeData&)> fill) {
        auto data = std::make_unique<QMimeData>();
        fill(*data);
        return data;
    };
    const Target onPrimary = Target::onTimeline(timeline->primaryTrack(), 0);
    const Target onTitle = Target::onTimeline(timeline->titleTrack(), 0);
    const Target onFirst = Target::onTimeline(timeline->primaryTrack(), 0, first);
    struct Row
    {
        const char* name;
        std::unique_ptr<QMimeData> data;
        Target target;
        Kind kind;
        QString reason; // empty: accepted
    };
    Row rows[] = {
        {"nothing", make([](QMimeData&) {}), onPrimary, Kind::None, QStringLiteral("Nothing is dragged.")},
        {"another program's data", make([](QMimeData& d) { d.setText(QStringLiteral("hi")); }), onPrimary, Kind::None,
         QStringLiteral("The editor cannot use what is dragged.")},
        {"web address", make([](QMimeData& d) { d.setUrls({QUrl(QStringLiteral("https://example.org/a.mp4"))}); }),
         onPrimary, Kind::None, QStringLiteral("Only files on this computer can be dropped.")},
        {"media on the video track", files({movie}), onPrimary, Kind::Files, {}},
        {"media on the title track", files({movie}), onTitle, Kind::Files,
         QStringLiteral("Media cannot go on this track.")},
        {"media on the scene", files({movie}), Target::onScene({10, 10}, 0), Kind::Files, {}},
        {"project anywhere", files({movie, project}), onTitle, Kind::Project, {}},
        {"title on the video track", make([&](QMimeData& d) { MimeUtils::packOverlayPresets(&d, {&title}); }),
         onPrimary, Kind::Overlay, QStringLiteral("Titles go on the title track or the picture.")},
        {"quiz on the title track",
         make([&](QMimeData& d) { DragAndDropHandler::packQuiz(&d, quiz); }),
         onTitle,
         Kind::Quiz,
         {}},
        {"effect beside any clip",
         make([](QMimeData& d) { DragAndDropHandler::packEffect(&d, Effect::Object("filters.color", "noir")); }),
         onPrimary, Kind::Effect, QStringLiteral("Drop the effect on a video or picture clip.")},
        {"effect on a clip",
         make([](QMimeData& d) { DragAndDropHandler::packEffect(&d, Effect::Object("filters.color", "noir")); }),
         onFirst,
         Kind::Effect,
         {}},
        {"animation beside any clip",
         make([](QMimeData& d) { DragAndDropHandler::packAnimation(&d, Animation::TransformationItem()); }), onPrimary,
         Kind::Animation, QStringLiteral("Drop the animation on a video or picture clip.")},
        {"pan and zoom on a title",
         make([](QMimeData& d) { DragAndDropHandler::packPanAndZoom(&d, Animation::TransformationItem()); }),
         Target::onTimeline(timeline->titleTrack(), 0, caption), Kind::PanAndZoom,
         QStringLiteral("Drop the pan and zoom on a video or picture clip.")},
        {"clip of another timeline", make([&](QMimeData& d) { DragAndDropHandler::packClip(&d, stranger); }), onPrimary,
         Kind::Clip, QStringLiteral("The dragged clip is not on this timeline.")},
        {"title clip onto the video track", make([&](QMimeData& d) { DragAndDropHandler::packClip(&d, caption); }),
         onPrimary, Kind::Clip, QStringLiteral("This clip cannot go on this track.")},
    };

    DragAndDropHandler handler(timeline);
    int shown = 0;
    int hidden = 0;
    handler.showLanding = [&](const Target&, Kind) { ++shown; };
    handler.hideLanding = [&] { ++hidden; };
    QSignalSpy status(&handler, &DragAndDropHandler::statusChanged);
    for (Row& row : rows) {
        SCOPED_TRACE(row.name);
        const DragAndDropHandler::Assessment a = handler.assess(row.data.get(), row.target);
        EXPECT_EQ(a.kind, row.kind);
        EXPECT_EQ(a.accepted, row.reason.isEmpty());
        EXPECT_EQ(a.reason, row.reason);

        // The same answer through the drag events, the landing shown only where it can land.
        shown = hidden = 0;
        QDragEnterEvent enter(QPoint(1, 1), Qt::CopyAction, row.data.get(), Qt::LeftButton, Qt::NoModifier);
        handler.dragEnterEvent(&enter, row.target);
        EXPECT_EQ(enter.isAccepted(), a.accepted);
        EXPECT_EQ(handler.status(), row.reason);
        EXPECT_EQ(shown, a.accepted ? 1 : 0);
        QDragLeaveEvent leave;
        handler.dragLeaveEvent(&leave);
        EXPECT_EQ(hidden, a.accepted ? 1 : 2) << "leaving always hides the landing place";
        EXPECT_TRUE(handler.status().isEmpty());
    }
    EXPECT_GT(status.count(), 0);
}

TEST_F(DragAndDropHandlerTest, LibraryDragsBecomeTheirRequestsAndHostilePayloadsChangeNothing)
{
    TestSupport::LogCapture log;
    DragAndDropHandler handler(timeline);
    QSignalSpy refused(&handler, &DragAndDropHandler::dropRefused);
    QSignalSpy projects(&handler, &DragAndDropHandler::projectDropped);

    // A title dropped on the picture lands at the time, its items moved to the drop point.
    Overlay::Preset title;
    title.appendItem(Overlay::Item().setText("Hello"));
    QMimeData titleData;
    MimeUtils::packOverlayPresets(&titleData, {&title});
    ASSERT_TRUE(handler.drop(&titleData, Target::onScene({40, 30}, 20 * second)));
    const Timeline::Clip* titleClip = timeline->clipsOnTrack(timeline->titleTrack()).back();
    ASSERT_NE(titleClip->overlay(), nullptr);
    EXPECT_EQ(timeline->clipTiming(titleClip).position, 20 * second);
    EXPECT_EQ(titleClip->overlay()->items().at(0).transform().toQTransform(), QTransform::fromTranslate(40, 30));

    // A quiz lands on the title track at the drop time, with its questions.
    Quiz::Preset quiz;
    quiz.questions = Quiz::Utils::defaultQuizzes().at(1)->questions;
    QMimeData quizData;
    DragAndDropHandler::packQuiz(&quizData, quiz);
    ASSERT_TRUE(handler.drop(&quizData, Target::onTimeline(timeline->titleTrack(), 30 * second)));
    const std::set<const Timeline::Clip*> quizzes = timeline->clipsByType(Timeline::Clip::Quiz);
    ASSERT_EQ(quizzes.size(), 1u);
    EXPECT_EQ(timeline->clipTiming(*quizzes.begin()).position, 30 * second);
    EXPECT_EQ((*quizzes.begin())->quiz()->questions.at(0).answers.size(), 2u);

    // An effect and a transition on a clip; a second colour filter replaces the first, and the
    // same filter again changes nothing.
    QUndoStack undo;
    handler.setUndoStack(&undo);
    for (const char* id : {"sepia", "noir", "noir"}) {
        QMimeData effect;
        DragAndDropHandler::packEffect(&effect, Effect::Object("filters.color", id));
        ASSERT_TRUE(handler.drop(&effect, Target::onTimeline(timeline->primaryTrack(), 0, first)));
    }
    QMimeData transition;
    DragAndDropHandler::packTransition(&transition, Transition::Object("fade", second));
    ASSERT_TRUE(handler.drop(&transition, Target::onTimeline(timeline->primaryTrack(), 0, first)));
    std::vector<std::string> effects;
    for (const Effect::Object* effect : first->effects())
        effects.push_back(effect->collectionId() + "/" + effect->id());
    EXPECT_EQ(effects, (std::vector<std::string>{"filters.color/noir", "transitions/fade"}));

    // An animation starts where it is dropped within the clip; a pan and zoom then replaces it.
    struct Starts : PubSub::Subscriber<Timeline::AnimationAddRequest>
    {
        Starts() { subscribeAll(typeid(Timeline::AnimationAddRequest)); }
        void notify(const Timeline::AnimationAddRequest& r) override { at.push_back(r.position); }
        std::vector<Types::Time> at;
    } starts;
    Animation::TransformationItem motion;
    motion.name = "Grow";
    motion.setKey(second, Transformation::Object().setMatrix(Types::Transform(QTransform::fromScale(2, 2))));
    QMimeData animation;
    DragAndDropHandler::packAnimation(&animation, motion);
    for (Types::Time at : {7 * second, 3 * second, 60 * second})
        ASSERT_TRUE(handler.drop(&animation, Target::onTimeline(timeline->primaryTrack(), at, second_)));
    EXPECT_EQ(starts.at, (std::vector<Types::Time>{2 * second, 0, 5 * second})) << "within the clip's five seconds";
    ASSERT_NE(second_->animation(), nullptr);
    EXPECT_EQ(second_->animation()->keys().at(0).value, motion.keys().at(0).value);
    motion.name = "Close-up";
    QMimeData panAndZoom;
    DragAndDropHandler::packPanAndZoom(&panAndZoom, motion);
    ASSERT_TRUE(handler.drop(&panAndZoom, Target::onTimeline(timeline->primaryTrack(), 0, second_)));
    EXPECT_EQ(second_->animation()->name, Types::String("Close-up"));

    // Each drop that changed a clip is one command; undone, the clip has what it had before.
    ASSERT_EQ(undo.count(), 7);
    EXPECT_EQ(undo.text(6), QStringLiteral("Add pan and zoom"));
    undo.setIndex(3);
    EXPECT_EQ(second_->animation(), nullptr);
    undo.setIndex(2);
    EXPECT_EQ(first->effects().size(), 1u);
    undo.setIndex(7);
    EXPECT_EQ(second_->animation()->name, Types::String("Close-up"));
    EXPECT_EQ(first->effects().size(), 2u);

    // A clip moved within the timeline takes its linked title along, and back on undo.
    const Timeline::ClipTiming captionWas = timeline->clipTiming(caption);
    QMimeData move;
    DragAndDropHandler::packClip(&move, second_);
    ASSERT_TRUE(handler.drop(&move, Target::onTimeline(timeline->primaryTrack(), 12 * second)));
    EXPECT_EQ(timeline->clipTiming(second_).position, 12 * second);
    EXPECT_EQ(timeline->clipTiming(caption).position, 13 * second);
    undo.undo();
    EXPECT_EQ(timeline->clipTiming(caption), captionWas);
    undo.redo();
    EXPECT_EQ(timeline->clipTiming(caption).position, 13 * second);

    // Hostile or broken payloads: refused with a reason, nothing added.
    const size_t clips = timeline->clips().size();
    QMimeData badQuiz;
    badQuiz.setData(Quiz::Preset::mimeType->toQString(), "{\"questions\": [\"a\"");
    QMimeData badEffect;
    badEffect.setData(DragAndDropHandler::effectFormat(), QByteArray(100000, 'x'));
    QMimeData badTransition;
    badTransition.setData(DragAndDropHandler::transitionFormat(), "fade\n-5");
    QMimeData bogusClip;
    bogusClip.setData(DragAndDropHandler::clipFormat(), "12345678");
    QMimeData badTitle;
    badTitle.setData(Overlay::Preset::mimeType->toQString(), "\x01\x02garbage");
    QMimeData badMotion;
    badMotion.setData(DragAndDropHandler::panAndZoomFormat(), R"({"format":"animation","version":1,"keys":[]})");
    const Target onFirst = Target::onTimeline(timeline->primaryTrack(), 0, first);
    for (QMimeData* data : {&badQuiz, &badEffect, &badTransition, &bogusClip, &badTitle, &badMotion})
        EXPECT_FALSE(handler.drop(data, data == &badQuiz || data == &badTitle ? Target() : onFirst));
    EXPECT_EQ(refused.count(), 6);
    EXPECT_EQ(refused.at(5).at(0).toString(), QStringLiteral("The dragged pan and zoom cannot be read."));
    EXPECT_EQ(first->animation(), nullptr);
    EXPECT_TRUE(refused.at(0).at(0).toString().startsWith(QStringLiteral("The quiz description is not valid JSON")));
    EXPECT_EQ(refused.at(3).at(0).toString(), QStringLiteral("The dragged clip is not on this timeline."));
    EXPECT_EQ(timeline->clips().size(), clips);
    EXPECT_EQ(undo.count(), 8) << "nothing to undo for a refused drop";

    // A project file among media opens the project and adds nothing.
    const QString project = file(QStringLiteral("work.dscproj"), "project");
    ASSERT_TRUE(handler.drop(files({file(QStringLiteral("m.mp4")), project}).get(), Target()));
    ASSERT_EQ(projects.count(), 1);
    EXPECT_EQ(projects.at(0).at(0).toString(), project);
    EXPECT_EQ(handler.pendingImports(), 0);
}

TEST(DragAndDropOrderTest, NamesSortNaturallyAndFoldersExpandWithoutHiddenEntries)
{
    const char* sorted[] = {"a", "B", "clip1", "clip01b", "clip2", "clip10", "clip10a", "Clip11", "z"};
    for (size_t i = 0; i + 1 < std::size(sorted); ++i) {
        SCOPED_TRACE(sorted[i]);
        EXPECT_TRUE(DragAndDropHandler::naturalLess(QString::fromUtf8(sorted[i]), QString::fromUtf8(sorted[i + 1])));
        EXPECT_FALSE(DragAndDropHandler::naturalLess(QString::fromUtf8(sorted[i + 1]), QString::fromUtf8(sorted[i])));
    }
    QTemporaryDir dir;
    for (const char* name : {"v/b10.mp4", "v/b9.mp4", "v/.git/x.mp4", "v/c/a.mp4", "a.mp4"}) {
        const QString path = dir.filePath(QString::fromUtf8(name));
        MediaSamples::writeFile(path, "x");
    }
    const auto files = DragAndDropHandler::expandDroppedPaths({dir.filePath(QStringLiteral("v")),
                                                               dir.filePath(QStringLiteral("a.mp4")),
                                                               dir.filePath(QStringLiteral("v/b9.mp4"))});
    ASSERT_TRUE(files);
    QStringList names;
    for (const QString& path : *files)
        names << QDir(dir.path()).relativeFilePath(path);
    EXPECT_EQ(names, (QStringList{"a.mp4", "v/b9.mp4", "v/b10.mp4", "v/c/a.mp4"}));
}
