#include "GeneratedMedia.h"

#include <MediaEngine/Engine.h>

#include <TestSupport.h>

#include <QCoreApplication>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <set>
#include <vector>

using namespace MediaEngine;
using MediaSamples::Sample;

namespace {

FrameRequest thumbnailOf(Sample sample, qint64 time)
{
    FrameRequest request;
    request.path = MediaSamples::path(sample);
    request.time = time;
    request.size = QSize(64, 36);
    return request;
}

class EngineTest : public testing::Test
{
protected:
    // Lets the workers finish and the answers they posted arrive.
    void settle()
    {
        ASSERT_TRUE(engine->waitForDone(30000));
        QCoreApplication::processEvents();
    }

    std::unique_ptr<Engine> engine = std::make_unique<Engine>();
};

TEST_F(EngineTest, aProbeAnswersLaterOnTheEnginesThread)
{
    std::vector<ProbeResult> answers;
    QThread* answeredOn = nullptr;
    const QString file = MediaSamples::path(Sample::Mp4VideoAudio);

    const JobId id = engine->probe(file, nullptr, [&](const ProbeResult& result) {
        answers.push_back(result);
        answeredOn = QThread::currentThread();
    });

    EXPECT_NE(id, 0u);
    EXPECT_TRUE(answers.empty()); // never inside the call
    EXPECT_EQ(engine->pendingCount(), 1);
    settle();
    ASSERT_EQ(answers.size(), 1u);
    EXPECT_EQ(answeredOn, engine->thread());
    EXPECT_TRUE(answers.front().ok());
    EXPECT_EQ(answers.front().path, file);
    EXPECT_EQ(answers.front().video.size(), 1u);
    EXPECT_EQ(engine->pendingCount(), 0);
}

TEST_F(EngineTest, manyProbesAnswerOnceEachWithTheirOwnFile)
{
    const std::vector<std::pair<Sample, int>> files = {{Sample::Mp4VideoAudio, ErrorCode::None},
                                                       {Sample::MkvVideo, ErrorCode::None},
                                                       {Sample::WavAudio, ErrorCode::None},
                                                       {Sample::PngImage, ErrorCode::None},
                                                       {Sample::RandomBytes, ErrorCode::FileCorrupted},
                                                       {Sample::Missing, ErrorCode::FileCorrupted},
                                                       {Sample::NoDecoder, ErrorCode::CodecNotAvailable}};
    std::map<QString, std::vector<int>> codesByFile;
    for (int round = 0; round < 3; ++round)
        for (const auto& [sample, code] : files)
            engine->probe(MediaSamples::path(sample), nullptr,
                          [&](const ProbeResult& result) { codesByFile[result.path].push_back(result.errorCode); });

    settle();
    ASSERT_EQ(codesByFile.size(), files.size());
    for (const auto& [sample, code] : files)
        EXPECT_EQ(codesByFile[MediaSamples::path(sample)], std::vector<int>(3, code)) << int(sample);
}

TEST_F(EngineTest, aProbeCancelledBeforeItRanNeverAnswers)
{
    int answers = 0;
    const JobId id =
        engine->probe(MediaSamples::path(Sample::Mp4VideoAudio), nullptr, [&](const ProbeResult&) { ++answers; });

    EXPECT_TRUE(engine->cancel(id));
    EXPECT_FALSE(engine->cancel(id));
    settle();
    EXPECT_EQ(answers, 0);
    EXPECT_EQ(engine->pendingCount(), 0);
}

TEST_F(EngineTest, aJobCancelledAfterItsWorkFinishedNeverAnswers)
{
    int answers = 0;
    const JobId probe =
        engine->probe(MediaSamples::path(Sample::Mp4VideoAudio), nullptr, [&](const ProbeResult&) { ++answers; });
    const JobId frame =
        engine->requestFrame(thumbnailOf(Sample::Mp4Colours, 0), nullptr, [&](const FrameResult&) { ++answers; });
    ASSERT_TRUE(engine->waitForDone(30000)); // both answers are posted, not yet delivered

    EXPECT_TRUE(engine->cancel(probe));
    EXPECT_TRUE(engine->cancel(frame));
    QCoreApplication::processEvents();
    EXPECT_EQ(answers, 0);
    EXPECT_TRUE(engine->cachedFrame(thumbnailOf(Sample::Mp4Colours, 0)).isNull());
}

TEST_F(EngineTest, cancellingAFileDropsOnlyItsJobsAndFrames)
{
    const FrameRequest colours = thumbnailOf(Sample::Mp4Colours, 0);
    engine->requestFrame(colours, nullptr, [](const FrameResult&) {});
    settle();
    ASSERT_FALSE(engine->cachedFrame(colours).isNull());

    std::vector<QString> answered;
    auto record = [&](const FrameResult& result) { answered.push_back(result.request.path); };
    engine->requestFrame(thumbnailOf(Sample::Mp4Colours, 1'500'000), nullptr, record);
    engine->requestFrame(thumbnailOf(Sample::Mp4Colours, 500'000), nullptr, record);
    engine->requestFrame(thumbnailOf(Sample::MkvVideo, 0), nullptr, record);

    EXPECT_EQ(engine->cancelFile(colours.path), 2);
    EXPECT_TRUE(engine->cachedFrame(colours).isNull());
    settle();
    EXPECT_EQ(answered, std::vector<QString>{MediaSamples::path(Sample::MkvVideo)});
}

TEST_F(EngineTest, aDestroyedContextGetsNoAnswer)
{
    int answers = 0;
    auto context = std::make_unique<QObject>();
    engine->probe(MediaSamples::path(Sample::WavAudio), context.get(), [&](const ProbeResult&) { ++answers; });
    engine->requestFrame(thumbnailOf(Sample::Mp4Colours, 0), context.get(), [&](const FrameResult&) { ++answers; });

    context.reset();
    settle();

    EXPECT_EQ(answers, 0);
    EXPECT_EQ(engine->pendingCount(), 0);
    // The decoded frame is kept for whoever asks next.
    EXPECT_FALSE(engine->cachedFrame(thumbnailOf(Sample::Mp4Colours, 0)).isNull());
}

TEST_F(EngineTest, aRepeatedFrameComesFromTheCacheAsTheSameImage)
{
    const FrameRequest request = thumbnailOf(Sample::Mp4Colours, 1'500'000);
    std::vector<FrameResult> answers;
    auto record = [&](const FrameResult& result) { answers.push_back(result); };

    engine->requestFrame(request, nullptr, record);
    settle();
    ASSERT_EQ(answers.size(), 1u);
    ASSERT_TRUE(answers[0].ok()) << answers[0].errorMessage.toStdString();
    EXPECT_FALSE(answers[0].fromCache);

    engine->requestFrame(request, nullptr, record);
    EXPECT_EQ(answers.size(), 1u); // still answered from the event loop
    settle();
    ASSERT_EQ(answers.size(), 2u);
    EXPECT_TRUE(answers[1].fromCache);
    EXPECT_EQ(answers[1].image.cacheKey(), answers[0].image.cacheKey());
    EXPECT_EQ(engine->cachedFrame(request).cacheKey(), answers[0].image.cacheKey());
}

TEST_F(EngineTest, aFileReplacedAtTheSamePathNeverShowsItsOldFrame)
{
    const QString file = MediaSamples::copyOf(Sample::Mp4Colours, QStringLiteral("replaced.mp4"));
    FrameRequest request = thumbnailOf(Sample::Mp4Colours, 0);
    request.path = file;
    std::vector<FrameResult> answers;
    auto ask = [&] {
        engine->requestFrame(request, nullptr, [&](const FrameResult& result) { answers.push_back(result); });
        settle();
    };
    ask();
    ask();
    ASSERT_EQ(answers.size(), 2u);
    ASSERT_TRUE(answers[0].ok());
    EXPECT_TRUE(answers[1].fromCache);
    EXPECT_GT(qRed(answers[0].image.pixel(32, 18)), 200);

    // New content under the old name, as a copy tool or an export leaves it.
    const QDateTime before = QFileInfo(file).lastModified();
    ASSERT_TRUE(QFile::remove(file));
    ASSERT_TRUE(QFile::copy(MediaSamples::path(Sample::MkvAnamorphic), file));
    QFile touched(file);
    ASSERT_TRUE(touched.open(QIODevice::ReadWrite));
    ASSERT_TRUE(touched.setFileTime(before.addSecs(5), QFileDevice::FileModificationTime));
    touched.close();
    ask();
    ASSERT_EQ(answers.size(), 3u);
    ASSERT_TRUE(answers[2].ok()) << answers[2].errorMessage.toStdString();
    EXPECT_FALSE(answers[2].fromCache);
    EXPECT_GT(qBlue(answers[2].image.pixel(32, 18)), 200) << "white, not the old red";
    EXPECT_TRUE(engine->cachedFrame(request).cacheKey() == answers[2].image.cacheKey());
}

TEST_F(EngineTest, requestsForAFrameBeingDecodedShareTheDecode)
{
    const FrameRequest request = thumbnailOf(Sample::Mp4Colours, 700'000);
    std::vector<std::pair<int, FrameResult>> answers;
    for (int i = 0; i < 3; ++i)
        engine->requestFrame(request, nullptr,
                             [&answers, i](const FrameResult& result) { answers.emplace_back(i, result); });
    EXPECT_EQ(engine->pendingCount(), 3);

    settle();

    ASSERT_EQ(answers.size(), 3u);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(answers[size_t(i)].first, i); // in the order asked
        EXPECT_FALSE(answers[size_t(i)].second.fromCache);
        // One decode: the very same image for all.
        EXPECT_EQ(answers[size_t(i)].second.image.cacheKey(), answers[0].second.image.cacheKey());
    }
}

TEST_F(EngineTest, cancellingSomeRequestsSharingADecodeKeepsTheOthersAndAllStopsIt)
{
    const FrameRequest kept = thumbnailOf(Sample::Mp4Colours, 700'000);
    const FrameRequest dropped = thumbnailOf(Sample::Mp4Colours, 900'000);
    std::vector<int> answered;
    auto answer = [&answered](int n) {
        return [&answered, n](const FrameResult& r) { answered.push_back(r.ok() ? n : -n); };
    };
    const JobId first = engine->requestFrame(kept, nullptr, answer(1));
    engine->requestFrame(kept, nullptr, answer(2));
    const JobId third = engine->requestFrame(kept, nullptr, answer(3));
    const JobId fourth = engine->requestFrame(dropped, nullptr, answer(4));
    const JobId fifth = engine->requestFrame(dropped, nullptr, answer(5));

    for (const JobId id : {first, third, fifth, fourth})
        EXPECT_TRUE(engine->cancel(id));
    settle();

    EXPECT_EQ(answered, std::vector<int>{2});
    EXPECT_FALSE(engine->cachedFrame(kept).isNull());
    EXPECT_TRUE(engine->cachedFrame(dropped).isNull());

    // A new request for the dropped frame decodes it afresh.
    engine->requestFrame(dropped, nullptr, answer(6));
    settle();
    EXPECT_EQ(answered, (std::vector<int>{2, 6}));
}

TEST_F(EngineTest, aCallbackMayCancelTheRequestsAfterIt)
{
    const FrameRequest request = thumbnailOf(Sample::Mp4Colours, 300'000);
    std::vector<int> answered;
    JobId second = 0;
    engine->requestFrame(request, nullptr, [&](const FrameResult&) {
        answered.push_back(1);
        engine->cancel(second);
    });
    second = engine->requestFrame(request, nullptr, [&](const FrameResult&) { answered.push_back(2); });
    engine->requestFrame(request, nullptr, [&](const FrameResult&) { answered.push_back(3); });

    settle();

    EXPECT_EQ(answered, (std::vector<int>{1, 3}));
    EXPECT_EQ(engine->pendingCount(), 0);
}

TEST_F(EngineTest, aFailedFrameIsNotCached)
{
    const FrameRequest request = thumbnailOf(Sample::TruncatedMp4, 0);
    std::vector<int> codes;
    engine->requestFrame(request, nullptr, [&](const FrameResult& result) { codes.push_back(result.errorCode); });
    settle();

    EXPECT_EQ(codes, std::vector<int>{ErrorCode::FileCorrupted});
    EXPECT_TRUE(engine->cachedFrame(request).isNull());
    EXPECT_EQ(engine->cache().size(), 0);
}

TEST_F(EngineTest, destroyingTheEngineWithWorkUnderWayAnswersNothing)
{
    int answers = 0;
    QObject context;
    for (int i = 0; i < 8; ++i) {
        engine->probe(MediaSamples::path(Sample::MkvVideo), &context, [&](const ProbeResult&) { ++answers; });
        engine->requestFrame(thumbnailOf(Sample::Mp4Colours, i * 200'000), &context,
                             [&](const FrameResult&) { ++answers; });
    }
    QSignalSpy destroyed(engine.get(), &QObject::destroyed);

    engine.reset();
    QCoreApplication::processEvents();

    EXPECT_EQ(destroyed.count(), 1);
    EXPECT_EQ(answers, 0);
}

TEST_F(EngineTest, amongManyJobsEveryKeptOneAnswersOnceAndNoCancelledOneAnswers)
{
    const std::vector<Sample> samples = {Sample::Mp4Colours, Sample::MkvVideo,    Sample::AviVideoAudio,
                                         Sample::PngImage,   Sample::RandomBytes, Sample::WavAudio};
    std::map<JobId, int> answers;
    std::vector<JobId> ids;
    QRandomGenerator random(7);
    for (int i = 0; i < 60; ++i) {
        const Sample sample = samples[size_t(i) % samples.size()];
        const JobId id =
            i % 2 == 0 ? engine->probe(MediaSamples::path(sample), nullptr,
                                       [&answers, &ids, i](const ProbeResult&) { ++answers[ids[size_t(i)]]; })
                       : engine->requestFrame(thumbnailOf(sample, random.bounded(2'000'000)), nullptr,
                                              [&answers, &ids, i](const FrameResult&) { ++answers[ids[size_t(i)]]; });
        ids.push_back(id);
    }
    std::set<JobId> cancelled;
    // Some are dropped while queued or running, some after their work finished.
    for (JobId id : ids)
        if (random.bounded(3) == 0 && engine->cancel(id))
            cancelled.insert(id);
    ASSERT_TRUE(engine->waitForDone(60000));
    for (JobId id : ids)
        if (random.bounded(4) == 0 && engine->cancel(id))
            cancelled.insert(id);
    QCoreApplication::processEvents();

    EXPECT_EQ(engine->pendingCount(), 0);
    for (JobId id : ids)
        EXPECT_EQ(answers[id], cancelled.count(id) ? 0 : 1) << id;
    EXPECT_FALSE(cancelled.empty());
}

TEST_F(EngineTest, aMissingCallbackIsRefusedWithALogLine)
{
    TestSupport::LogCapture log;

    EXPECT_EQ(engine->probe(MediaSamples::path(Sample::WavAudio), nullptr, nullptr), 0u);
    EXPECT_EQ(engine->requestFrame(thumbnailOf(Sample::Mp4Colours, 0), nullptr, nullptr), 0u);
    EXPECT_EQ(engine->pendingCount(), 0);
    EXPECT_TRUE(log.containsError("no callback"));
}

} // namespace
