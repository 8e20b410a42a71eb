#include "ImportTestSupport.h"

#include <Util/Import/BaseFileOpenHandler.h>

#include <gtest/gtest.h>

using namespace ImportTest;

namespace {

// Watches the files the test hands it and records what the pipeline does.
class RecordingHandler : public BaseFileOpenHandler
{
public:
    using BaseFileOpenHandler::AnalyzedProduct;
    using BaseFileOpenHandler::files;
    using BaseFileOpenHandler::finishedCount;
    using BaseFileOpenHandler::makeFilesAnalyze;
    using BaseFileOpenHandler::resolve;

    void watch(const Media::File* file) { fileAdded(file); }

    static inline int answered = 0; // by any handler, also one already gone
    int processingCalls = 0;
    int clearCalls = 0;
    std::vector<bool> answers;
    std::vector<AnalyzedProduct> analyses; // taken at postProcessing

protected:
    void processing() override
    {
        ++processingCalls;
        BaseFileOpenHandler::processing();
    }
    void postProcessing(bool remove) override
    {
        ++answered;
        answers.push_back(remove);
        analyses.push_back(makeFilesAnalyze());
    }
    void clear() override
    {
        ++clearCalls;
        BaseFileOpenHandler::clear();
    }
};

class BaseFileOpenHandlerTest : public ::testing::Test
{
protected:
    BaseFileOpenHandlerTest() : opener(std::make_shared<ManualOpener>()) { host.setOpener(opener); }

    const Media::File* addFile(RecordingHandler& handler, const QString& path)
    {
        const Media::File* file = host.addFile(Types::String(path));
        handler.watch(file);
        return file;
    }

    Model::Host host;
    std::shared_ptr<ManualOpener> opener;
    StrategyScope dialog;
};

} // namespace

TEST_F(BaseFileOpenHandlerTest, CompletionsOfATurnGiveOnePassAndTheFullBatchIsForgotten)
{
    RecordingHandler handler;
    int settled = 0;
    handler.onSettled = [&] { ++settled; };
    addFile(handler, QStringLiteral("/media/a.mp4"));
    addFile(handler, QStringLiteral("/media/b.png"));
    addFile(handler, QStringLiteral("/media/c.mp4"));
    opener->answer(QStringLiteral("/media/a.mp4"), opened());
    opener->answer(QStringLiteral("/media/b.png"), opened());
    EXPECT_EQ(handler.finishedCount(), 2);
    EXPECT_EQ(handler.processingCalls, 0) << "processing is deferred to the event loop";

    spinTurns();
    EXPECT_EQ(handler.processingCalls, 1) << "two completions in one turn give one pass";
    EXPECT_EQ(handler.files().size(), 3u) << "the batch is not complete, so nothing is cleared";
    EXPECT_EQ(handler.clearCalls, 0);
    EXPECT_FALSE(handler.isSettled());

    opener->answer(QStringLiteral("/media/c.mp4"), opened());
    spinTurns();
    EXPECT_EQ(handler.processingCalls, 2);
    EXPECT_TRUE(dialog->questions.empty());
    EXPECT_TRUE(handler.answers.empty()) << "postProcessing is not called without failures";
    EXPECT_TRUE(handler.files().empty());
    EXPECT_EQ(handler.finishedCount(), 0);
    EXPECT_EQ(handler.clearCalls, 1);
    EXPECT_EQ(settled, 1);
}

TEST_F(BaseFileOpenHandlerTest, FailuresAreSortedByCauseAndTheUserIsAskedOnce)
{
    RecordingHandler handler;
    const Media::File* licence = addFile(handler, QStringLiteral("/media/licence.mp4"));
    const Media::File* corrupt = addFile(handler, QStringLiteral("/media/corrupt.mp4"));
    const Media::File* silent = addFile(handler, QStringLiteral("/media/silent.mp4"));
    const Media::File* good = addFile(handler, QStringLiteral("/media/good.mp4"));
    dialog->remove = true;

    opener->answer(QStringLiteral("/media/licence.mp4"), failed({5, 20}));
    opener->answer(QStringLiteral("/media/corrupt.mp4"), failed({36}));
    opener->answer(QStringLiteral("/media/silent.mp4"), failed({}));
    opener->answer(QStringLiteral("/media/good.mp4"), opened());

    EXPECT_EQ(handler.resolve(licence), BaseFileOpenHandler::Code20Failed);
    EXPECT_EQ(handler.resolve(corrupt), BaseFileOpenHandler::OpenFailed);
    EXPECT_EQ(handler.resolve(silent), BaseFileOpenHandler::OpenFailed);
    EXPECT_EQ(handler.resolve(good), BaseFileOpenHandler::NoError);

    spinTurns();
    ASSERT_EQ(dialog->questions.size(), 1u);
    EXPECT_FALSE(dialog->questions[0].allowKeep) << "the base never offers to keep files";
    EXPECT_EQ(
        dialog->questions[0].message,
        QStringLiteral("Some of the files could not been opened because the codec licenses have not been activated."));
    ASSERT_EQ(handler.answers, std::vector<bool>{true});
    const auto& analysis = handler.analyses.front();
    EXPECT_EQ(analysis.failedFiles, (std::set<const Media::File*>{licence, corrupt, silent}));
    EXPECT_EQ(analysis.code20Files, (std::set<const Media::File*>{licence}));
    EXPECT_TRUE(handler.files().empty());
}

TEST_F(BaseFileOpenHandlerTest, RemovedFilesLeaveTheCountConsistent)
{
    RecordingHandler handler;
    const Media::File* early = addFile(handler, QStringLiteral("/media/early.mp4"));
    const Media::File* late = addFile(handler, QStringLiteral("/media/late.mp4"));
    addFile(handler, QStringLiteral("/media/other.mp4"));

    // Removed before it finished: the count stays, the batch completes with the others.
    host.remove(late);
    EXPECT_EQ(handler.files().size(), 2u);
    EXPECT_EQ(handler.finishedCount(), 0);

    opener->answer(QStringLiteral("/media/early.mp4"), opened());
    EXPECT_EQ(handler.finishedCount(), 1);
    // Removed after it finished: the count drops with the list.
    host.remove(early);
    EXPECT_EQ(handler.files().size(), 1u);
    EXPECT_EQ(handler.finishedCount(), 0);

    opener->answer(QStringLiteral("/media/other.mp4"), failed({36}));
    spinTurns();
    ASSERT_EQ(dialog->questions.size(), 1u);
    EXPECT_TRUE(dialog->questions[0].message.isEmpty()) << "no licence text without code 20";
    EXPECT_EQ(handler.answers, std::vector<bool>{false});
    EXPECT_TRUE(handler.files().empty());
}

TEST_F(BaseFileOpenHandlerTest, ProcessingPassesDoNotNestAcrossHandlers)
{
    RecordingHandler first;
    RecordingHandler second;
    addFile(first, QStringLiteral("/media/one.mp4"));
    addFile(second, QStringLiteral("/media/two.mp4"));

    bool flagSeenInDialog = false;
    dialog->whileAsking = [&] {
        // The failure dialog spins the event loop; the other handler's batch completes meanwhile.
        flagSeenInDialog = BaseFileOpenHandler::isProcessing();
        if (dialog->questions.size() == 1) {
            opener->answer(QStringLiteral("/media/two.mp4"), failed({36}));
            spinTurns();
        }
    };
    opener->answer(QStringLiteral("/media/one.mp4"), failed({36}));
    spinTurns();

    EXPECT_TRUE(flagSeenInDialog);
    EXPECT_FALSE(BaseFileOpenHandler::isProcessing());
    EXPECT_EQ(dialog->questions.size(), 1u) << "the second pass was dropped while the first asked";
    EXPECT_EQ(second.processingCalls, 0);
    EXPECT_EQ(second.files().size(), 1u) << "a dropped pass is not repeated by itself";

    // A further completion starts the second handler's pass, which now covers both files.
    addFile(second, QStringLiteral("/media/three.mp4"));
    opener->answer(QStringLiteral("/media/three.mp4"), opened());
    spinTurns();
    EXPECT_EQ(second.processingCalls, 1);
    ASSERT_EQ(dialog->questions.size(), 2u);
    ASSERT_EQ(second.analyses.size(), 1u);
    EXPECT_EQ(second.analyses.front().failedFiles.size(), 1u);
}

TEST_F(BaseFileOpenHandlerTest, HandlerDestroyedWhileFilesOpenLeavesNoCallbackBehind)
{
    const Media::File* first = nullptr;
    const Media::File* second = nullptr;
    {
        RecordingHandler doomed;
        first = addFile(doomed, QStringLiteral("/media/a.mp4"));
        second = addFile(doomed, QStringLiteral("/media/b.mp4"));
        opener->answer(QStringLiteral("/media/a.mp4"), failed({36})); // a deferred pass is posted
    }
    const auto& dispatcher = PubSub::Details::Dispatcher::instance();
    EXPECT_FALSE(dispatcher.hasSubscribers(typeid(Media::FileOpenFailedNotification), first));
    EXPECT_FALSE(dispatcher.hasSubscribers(typeid(Media::FileOpenFailedNotification), second));

    opener->answer(QStringLiteral("/media/b.mp4"), failed({20}));
    spinTurns();
    EXPECT_TRUE(dialog->questions.empty());
    EXPECT_TRUE(second->isFailed()) << "the model finishes the file without the handler";

    // Destroyed by its owner while its question is open (an import cancelled meanwhile): the
    // answer goes nowhere.
    auto asking = std::make_unique<RecordingHandler>();
    addFile(*asking, QStringLiteral("/media/c.mp4"));
    dialog->whileAsking = [&] { asking.reset(); };
    const int answered = RecordingHandler::answered;
    opener->answer(QStringLiteral("/media/c.mp4"), failed({36}));
    spinTurns();
    EXPECT_EQ(dialog->questions.size(), 1u);
    EXPECT_EQ(RecordingHandler::answered, answered);
}

TEST_F(BaseFileOpenHandlerTest, ResolveFollowsTheFailedFlagOfWatchedFiles)
{
    RecordingHandler early;
    const Media::File* file = host.addFile("/media/again.mp4");
    opener->answer(QStringLiteral("/media/again.mp4"), failed({36}));
    ASSERT_TRUE(file->isFailed());

    RecordingHandler late; // starts watching a file that has already failed
    late.watch(file);
    EXPECT_EQ(late.resolve(file), BaseFileOpenHandler::OpenFailed);

    host.edit(file)->setOpened(true); // opened after all, on a second attempt
    EXPECT_EQ(late.resolve(file), BaseFileOpenHandler::NoError);
    host.edit(file)->setFailed(true);
    EXPECT_EQ(late.resolve(file), BaseFileOpenHandler::OpenFailed);
    EXPECT_EQ(late.makeFilesAnalyze().failedFiles, std::set<const Media::File*>{file});
}

namespace {

// Logs what resolve() answers, call by call.
class ResolveLog : public RecordingHandler
{
public:
    mutable std::vector<std::pair<const Media::File*, ErrorType>> calls;

protected:
    ErrorType resolve(const Media::File* file) const override
    {
        const ErrorType type = BaseFileOpenHandler::resolve(file);
        calls.emplace_back(file, type);
        return type;
    }
};

} // namespace

TEST_F(BaseFileOpenHandlerTest, LargeBatchWithRemovalsAndARepeatIsResolvedEntryByEntry)
{
    ResolveLog handler;
    std::vector<const Media::File*> batch;
    const auto path = [](int i) { return QStringLiteral("/media/many%1.mp4").arg(i); };
    for (int i = 0; i < 1200; ++i)
        batch.push_back(addFile(handler, path(i)));
    handler.watch(batch[7]); // a second entry for the same file, at the end
    // Removed before anything finished, so the entries after them move forward.
    const std::set<int> removed{0, 3, 500, 1199};
    for (int i : removed)
        host.remove(batch[i]);
    ASSERT_EQ(handler.files().size(), 1197u);

    // Every odd file fails (600 of them), every fourth with code 20 as well.
    std::set<const Media::File*> failedFiles, code20Files;
    for (int i = 0; i < 1200; ++i) {
        if (removed.count(i))
            continue;
        const bool fails = i % 2 == 1;
        opener->answer(path(i), fails ? failed(i % 4 == 1 ? std::vector<int>{5, 20} : std::vector<int>{36}) : opened());
        if (fails)
            failedFiles.insert(batch[i]);
        if (fails && i % 4 == 1)
            code20Files.insert(batch[i]);
    }

    const auto analysis = handler.makeFilesAnalyze();
    EXPECT_EQ(analysis.failedFiles, failedFiles);
    EXPECT_EQ(analysis.code20Files, code20Files);
    // One call per entry, front to back, each answering for its own file.
    ASSERT_EQ(handler.calls.size(), handler.files().size());
    for (std::size_t i = 0; i < handler.calls.size(); ++i) {
        SCOPED_TRACE(i);
        const Media::File* file = handler.files()[i];
        EXPECT_EQ(handler.calls[i].first, file);
        const auto expected = code20Files.count(file)   ? BaseFileOpenHandler::Code20Failed
                              : failedFiles.count(file) ? BaseFileOpenHandler::OpenFailed
                                                        : BaseFileOpenHandler::NoError;
        EXPECT_EQ(handler.calls[i].second, expected);
    }
    EXPECT_EQ(handler.calls.back().second, BaseFileOpenHandler::OpenFailed) << "the repeated entry follows its file";
}
