// Application services against plain baselines in the same process:
//   - parseDirectory over a tree of 100,000 files vs a std::filesystem walk doing the same
//     suffix test (goal: within 2x), with the longest gap between processed interface
//     events while it runs (goal: below 50 ms);
//   - the missing-files search, which walks the tree once whatever the number of lost
//     files, vs searching the tree once per lost file (the best-folder choice needs every
//     candidate, so each per-file search walks the whole tree);
//   - Format::time/timeMs and Error::describeTranscodingError per call.
// The tree is generated once per run in a temporary folder.

#include <Util/Dialog/MissingFilesDialog/MissingFilesDialog.h>
#include <Util/Error.h>
#include <Util/Filesystem.h>
#include <Util/Format.h>

#include <Core/ProcessingError.h>

#include <QCoreApplication>
#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTimer>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <fstream>
#include <unordered_set>

namespace {

constexpr int kTop = 10;
constexpr int kMiddle = 10;
constexpr int kLeaf = 10;
constexpr int kFilesPerFolder = 100; // 10 * 10 * 10 folders * 100 = 100,000 files

const char* const kExtensions[] = {"mp4", "jpg", "wav", "txt", "mov", "png", "xml", "mp3", "mkv", "dat"};

QString fileName(int folder, int index)
{
    return QStringLiteral("f%1_%2.%3").arg(folder).arg(index).arg(QLatin1String(kExtensions[index % 10]));
}

// The generated tree, made once.
const QString& tree()
{
    static QTemporaryDir dir;
    static const QString root = [] {
        const QString r = dir.path() + QStringLiteral("/media");
        int folder = 0;
        for (int a = 0; a < kTop; ++a)
            for (int b = 0; b < kMiddle; ++b)
                for (int c = 0; c < kLeaf; ++c, ++folder) {
                    const QString sub = QStringLiteral("%1/t%2/m%3/l%4").arg(r).arg(a).arg(b).arg(c);
                    std::filesystem::create_directories(sub.toStdString());
                    for (int i = 0; i < kFilesPerFolder; ++i)
                        std::ofstream((sub + QLatin1Char('/') + fileName(folder, i)).toStdString());
                }
        return r;
    }();
    return root;
}

// Lost files spread evenly over the tree, each with the old path of a moved project.
QStringList lostFiles(int count)
{
    QStringList lost;
    const int folders = kTop * kMiddle * kLeaf;
    for (int k = 0; k < count; ++k) {
        const int folder = (k * 997 + 13) % folders;
        lost << QStringLiteral("/old/disk/l%1/").arg(folder % kLeaf) + fileName(folder, (k * 7) % kFilesPerFolder);
    }
    return lost;
}

void BM_ParseDirectory(benchmark::State& state)
{
    const QString root = tree();
    // A zero-interval timer fires on every pass of the event loop: the longest time between
    // two firings is the longest the interface went without handling events.
    QElapsedTimer clock;
    qint64 last = 0;
    qint64 longestGap = 0;
    QTimer probe;
    probe.setInterval(0);
    QObject::connect(&probe, &QTimer::timeout, [&] {
        const qint64 now = clock.elapsed();
        longestGap = std::max(longestGap, now - last);
        last = now;
    });
    std::size_t found = 0;
    for (auto _ : state) {
        probe.start();
        clock.start();
        last = 0;
        found = static_cast<std::size_t>(Filesystem::parseDirectory(root, true).size());
        longestGap = std::max(longestGap, clock.elapsed() - last);
        probe.stop();
    }
    state.counters["files"] = static_cast<double>(found);
    state.counters["max_event_gap_ms"] = static_cast<double>(longestGap);
}
BENCHMARK(BM_ParseDirectory)->Unit(benchmark::kMillisecond);

void BM_StdFilesystemWalk(benchmark::State& state)
{
    const std::string root = tree().toStdString();
    std::unordered_set<std::string> suffixes;
    for (const QString& e : Filesystem::supportedClipFileExtensions())
        suffixes.insert(e.toStdString());
    std::size_t found = 0;
    for (auto _ : state) {
        std::vector<std::string> files;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            if (!entry.is_regular_file())
                continue;
            std::string suffix = entry.path().extension().string();
            if (suffix.empty())
                continue;
            suffix.erase(0, 1);
            std::transform(suffix.begin(), suffix.end(), suffix.begin(),
                           [](unsigned char ch) { return std::tolower(ch); });
            if (suffixes.count(suffix))
                files.push_back(entry.path().string());
        }
        found = files.size();
        benchmark::DoNotOptimize(files.data());
    }
    state.counters["files"] = static_cast<double>(found);
}
BENCHMARK(BM_StdFilesystemWalk)->Unit(benchmark::kMillisecond);

void BM_MissingFilesSearch(benchmark::State& state)
{
    const QString root = tree();
    const QStringList lost = lostFiles(static_cast<int>(state.range(0)));
    int found = 0;
    for (auto _ : state)
        found = MissingFilesDialog::searchFolderTree(root, lost).size();
    state.counters["found"] = found;
}
BENCHMARK(BM_MissingFilesSearch)->Arg(1)->Arg(20)->Arg(200)->Unit(benchmark::kMillisecond);

void BM_MissingFilesSearchPerFile(benchmark::State& state)
{
    const QString root = tree();
    const QStringList lost = lostFiles(static_cast<int>(state.range(0)));
    int found = 0;
    for (auto _ : state) {
        found = 0;
        for (const QString& file : lost)
            found += MissingFilesDialog::searchFolderTree(root, {file}).size();
    }
    state.counters["found"] = found;
}
BENCHMARK(BM_MissingFilesSearchPerFile)->Arg(20)->Unit(benchmark::kMillisecond);

void BM_FormatTime(benchmark::State& state)
{
    int seconds = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Format::time(seconds));
        seconds = (seconds + 7919) % 200000;
    }
}
BENCHMARK(BM_FormatTime);

void BM_FormatTimeMs(benchmark::State& state)
{
    long long ms = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(Format::timeMs(ms));
        ms = (ms + 7919123) % 200000000;
    }
}
BENCHMARK(BM_FormatTimeMs);

// The QTime formatting the durations would take if written the obvious way.
void BM_QTimeToStringBaseline(benchmark::State& state)
{
    int seconds = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(QTime(0, 0).addMSecs(seconds * 1000).toString(QStringLiteral("hh:mm:ss")));
        seconds = (seconds + 7919) % 86400;
    }
}
BENCHMARK(BM_QTimeToStringBaseline);

void BM_DescribeTranscodingError(benchmark::State& state)
{
    const int codes[] = {6, 22, 34, 36, 99};
    int i = 0;
    for (auto _ : state) {
        const Dravik::Proc::ProcessingError error(codes[i % 5]);
        benchmark::DoNotOptimize(Error::describeTranscodingError(error, static_cast<Error::Context>(i % 2)));
        ++i;
    }
}
BENCHMARK(BM_DescribeTranscodingError);

void BM_DescribeTranscodingErrorWithContact(benchmark::State& state)
{
    const Dravik::Proc::ProcessingError error(99);
    for (auto _ : state)
        benchmark::DoNotOptimize(Error::describeTranscodingError(error, Error::Analyze));
}
BENCHMARK(BM_DescribeTranscodingErrorWithContact);

} // namespace
