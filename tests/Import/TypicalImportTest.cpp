// A typical import from start to end, on real files: a shadow change of a scene timeline adds a
// mix of good and failing files, the handler counts them and asks once about the failures, the
// clips of failed files end broken or removed in one edit, shadowReady comes once, and the
// shadow replaces the scene where the project shows it as a nested clip.

#include "ImportTestSupport.h"
#include "MediaSamples.h"

#include <Util/Import/TimelineFileOpenHandler.h>
#include <Util/Import/TimelineShadowChange.h>

#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sstream>

using namespace ImportTest;

namespace {

// One line per clip, in the timeline's order: what a user of the timeline observes.
std::vector<std::string> describe(const Timeline::Object* timeline)
{
    std::vector<std::string> lines;
    for (const Timeline::Clip* clip : timeline->clips()) {
        const Timeline::ClipTiming& timing = timeline->clipTiming(clip);
        std::ostringstream line;
        line << clip->name() << " type=" << clip->type() << " at=" << timing.position << " len=" << timing.length
             << " track=" << (timing.track ? int(timing.track->kind()) : -1) << (clip->isBroken() ? " broken" : "");
        if (const Timeline::Link* link = timeline->linkOf(clip))
            line << " linked-to=" << link->master->name() << "+" << link->offset;
        lines.push_back(line.str());
    }
    return lines;
}

class CountingHandler : public TimelineFileOpenHandler
{
public:
    using TimelineFileOpenHandler::files;
    using TimelineFileOpenHandler::finishedCount;
    using TimelineFileOpenHandler::TimelineFileOpenHandler;
};

constexpr Types::Time second = Types::TimeUnitsPerSecond;

struct TypicalImportCase
{
    const char* name;
    bool remove;
};

void PrintTo(const TypicalImportCase& c, std::ostream* os) { *os << c.name; }

class TypicalImportTest : public ::testing::TestWithParam<TypicalImportCase>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(dir.isValid());
        auto honest = std::make_shared<Media::SignatureOpener>();
        host.setOpener(std::make_shared<ChoosingOpener>(
            honest, QMap<QString, std::vector<int>>{{QStringLiteral("licence.mp4"), {5, 20}}}));
        Model::installDefaultServices(host);

        using namespace MediaSamples;
        ASSERT_TRUE(writeFile(path("good.mp4"), mp4()));
        ASSERT_TRUE(writeFile(path("still.png"), png(32, 18)));
        ASSERT_TRUE(writeFile(path("sound.wav"), wave()));
        ASSERT_TRUE(writeFile(path("licence.mp4"), mp4()));
        ASSERT_TRUE(writeFile(path("cut.mp4"), mp4(256).left(200)));
        ASSERT_TRUE(writeFile(path("empty.mov"), QByteArray()));
        ASSERT_TRUE(writeFile(path("notes.mp4"), QByteArray("not a movie at all\n")));

        // The scene the user sees: a clip with a title over it.
        scene = host.addTimeline("Scene");
        const Timeline::Clip* opening = host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("Opening"));
        const Timeline::Clip* caption = host.addClip(Timeline::Clip(Timeline::Clip::Title).setName("Caption"));
        {
            auto edit = host.edit(scene);
            edit->addClip(opening, {scene->primaryTrack(), 0, 3 * second});
            edit->addClip(caption, {scene->titleTrack(), second, 2 * second});
            edit->addLink(opening, caption, second);
        }

        // The project shows the scene as a nested clip with a title and its native audio.
        project = host.addTimeline("Project");
        const Timeline::Clip* before = host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("Before"));
        nestedClip = host.addClip(Timeline::Clip(Timeline::Clip::Nested).setNestedTimeline(scene).setName("Scene 1"));
        const Timeline::Clip* sound =
            host.addClip(Timeline::Clip(Timeline::Clip::Audio).setNestedTimeline(scene).setName("Scene 1 audio"));
        const Timeline::Clip* label = host.addClip(Timeline::Clip(Timeline::Clip::Title).setName("Label"));
        const Timeline::Clip* after = host.addClip(Timeline::Clip(Timeline::Clip::Color).setName("After"));
        auto edit = host.edit(project);
        edit->addClip(before, {project->primaryTrack(), 0, 2 * second});
        edit->addClip(nestedClip, {project->primaryTrack(), 2 * second, 3 * second});
        edit->addClip(sound, {project->nativeAudioTrack(), 2 * second, 3 * second});
        edit->addClip(label, {project->titleTrack(), 3 * second, second});
        edit->addClip(after, {project->primaryTrack(), 5 * second, 2 * second});
        edit->addLink(nestedClip, sound, 0);
        edit->addLink(nestedClip, label, second);
    }

    QString path(const char* name) const { return dir.filePath(QString::fromUtf8(name)); }

    QTemporaryDir dir;
    Model::Host host;
    StrategyScope dialog;
    const Timeline::Object* scene = nullptr;
    const Timeline::Object* project = nullptr;
    const Timeline::Clip* nestedClip = nullptr;
};

} // namespace

TEST_P(TypicalImportTest, ShadowAddsFilesSettlesFailuresAndMergesBack)
{
    dialog->remove = GetParam().remove;
    const std::vector<std::string> sceneBefore = describe(scene);

    TimelineShadowChange change(scene, Timeline::Object::Nested);
    CountingHandler handler(change.shadowTimeline());
    QSignalSpy ready(&change, &TimelineShadowChange::shadowReady);
    size_t questionsAtReady = 0;
    QObject::connect(&change, &TimelineShadowChange::shadowReady, [&] { questionsAtReady = dialog->questions.size(); });

    const QStringList files{path("good.mp4"),  path("still.png"), path("licence.mp4"), path("cut.mp4"),
                            path("sound.wav"), path("empty.mov"), path("missing.mp4"), path("notes.mp4")};
    change.addFiles(files, FileAdder::DragAndDrop);
    EXPECT_TRUE(change.filesPending());
    EXPECT_EQ(handler.files().size(), 8u) << "every added file is watched";
    EXPECT_EQ(describe(scene), sceneBefore) << "the source is never touched";

    ASSERT_TRUE(spinUntil([&] { return ready.count() > 0; }));
    spinTurns();
    EXPECT_EQ(ready.count(), 1);
    EXPECT_EQ(questionsAtReady, 1u) << "failures are settled before the shadow reports ready";
    EXPECT_TRUE(handler.files().empty());
    EXPECT_EQ(handler.finishedCount(), 0);

    // One question, offering to keep (clips of the failed files are on the shadow), with the
    // licence text because one file failed with code 20.
    ASSERT_EQ(dialog->questions.size(), 1u);
    EXPECT_TRUE(dialog->questions[0].allowKeep);
    EXPECT_EQ(
        dialog->questions[0].message,
        QStringLiteral("Some of the files could not been opened because the codec licenses have not been activated."));

    const Timeline::Object* shadow = change.shadowTimeline();
    const std::vector<std::string> kept{
        "Opening type=9 at=0 len=30000000 track=0",
        "Caption type=4 at=10000000 len=20000000 track=1 linked-to=Opening+10000000",
        "good.mp4 type=1 at=30000000 len=50000000 track=0",
        "still.png type=3 at=80000000 len=50000000 track=0",
        "licence.mp4 type=1 at=130000000 len=50000000 track=0 broken",
        "cut.mp4 type=1 at=180000000 len=50000000 track=0 broken",
        "sound.wav type=2 at=0 len=50000000 track=4",
        "empty.mov type=1 at=230000000 len=50000000 track=0 broken",
        "missing.mp4 type=1 at=280000000 len=50000000 track=0 broken",
        "notes.mp4 type=1 at=330000000 len=50000000 track=0 broken",
    };
    if (GetParam().remove) {
        EXPECT_EQ(describe(shadow), (std::vector<std::string>{kept[0], kept[1], kept[2], kept[3], kept[6]}));
    } else {
        EXPECT_EQ(describe(shadow), kept);
    }
    EXPECT_EQ(describe(scene), sceneBefore) << "the source is never touched";

    // Merge: the project's nested clip of the scene now shows a copy of the shadow.
    ASSERT_EQ(replaceNestedTimeline(project, scene, shadow), 1);
    const std::vector<std::string> merged = describe(project);
    const Types::Time length = shadow->duration();
    const std::string len = std::to_string(length);
    EXPECT_EQ(merged, (std::vector<std::string>{
                          "Before type=9 at=0 len=20000000 track=0",
                          "Label type=4 at=30000000 len=10000000 track=1 linked-to=* Scene 1+10000000",
                          "After type=9 at=50000000 len=20000000 track=0",
                          "* Scene 1 type=8 at=20000000 len=" + len + " track=0",
                          "Scene 1 audio type=2 at=20000000 len=" + len + " track=3 linked-to=* Scene 1+0",
                      }));
    const Timeline::Clip* replacement = project->clips()[3];
    const Timeline::Object* shown = replacement->nestedTimeline();
    ASSERT_NE(shown, nullptr);
    EXPECT_NE(shown, shadow) << "the project shows a copy, which outlives the change";
    EXPECT_EQ(describe(shown), describe(shadow));
    EXPECT_EQ(project->findNativeAudio(replacement), project->clips()[4]);
    EXPECT_EQ(describe(scene), sceneBefore);
}

INSTANTIATE_TEST_SUITE_P(Answers, TypicalImportTest,
                         ::testing::Values(TypicalImportCase{"keep", false}, TypicalImportCase{"remove", true}),
                         [](const ::testing::TestParamInfo<TypicalImportCase>& info) {
                             return std::string(info.param.name);
                         });
