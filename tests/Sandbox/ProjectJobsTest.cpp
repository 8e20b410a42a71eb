// The sandbox window's long jobs and bad projects: an import shows its progress in the status
// line and its Cancel button drops it; a save that the disk refuses (a read-only folder, a full
// disk), a project from a newer version and a damaged one each give one clear message, leave the project file
// on disk byte for byte and the open project as it was.

#include "BinView.h"
#include "SandboxFixture.h"

#include <Util/Filesystem.h>
#include <Util/Interfaces/EditorSettings.h>

#include <QAbstractButton>
#include <QDir>
#include <QFile>
#include <QProgressBar>
#include <QSignalSpy>
#include <QStatusBar>
#include <QTest>

#include <gtest/gtest.h>

#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <functional>

using Sandbox::SandboxWindow;

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Root writes into read-only folders: while it lives, this thread gives up that power.
class WithoutFolderOverride
{
public:
    WithoutFolderOverride()
    {
        syscall(SYS_capget, &m_header, m_saved);
        __user_cap_data_struct lowered[2] = {m_saved[0], m_saved[1]};
        lowered[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH));
        syscall(SYS_capset, &m_header, lowered);
    }
    ~WithoutFolderOverride() { syscall(SYS_capset, &m_header, m_saved); }
    WithoutFolderOverride(const WithoutFolderOverride&) = delete;
    WithoutFolderOverride& operator=(const WithoutFolderOverride&) = delete;

private:
    __user_cap_header_struct m_header{_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct m_saved[2] = {};
};

// A disk with only `bytes` left for any file this process writes.
class FullDisk
{
public:
    explicit FullDisk(rlim_t bytes)
    {
        getrlimit(RLIMIT_FSIZE, &m_saved);
        m_signal = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = m_saved;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FullDisk()
    {
        setrlimit(RLIMIT_FSIZE, &m_saved);
        std::signal(SIGXFSZ, m_signal);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    rlimit m_saved{};
    void (*m_signal)(int) = nullptr;
};

class ProjectJobsTest : public SandboxTest::WindowFixture
{
};

} // namespace

TEST_F(ProjectJobsTest, anImportCountsItsFilesThenTheThumbnailsAndAsksOnceAboutTheBrokenOne)
{
    QProgressBar* bar = window->jobProgress();
    EXPECT_FALSE(bar->isVisible());
    QStringList shown;
    const QMetaObject::Connection watch =
        QObject::connect(bar, &QProgressBar::valueChanged, [&] { shown << bar->text(); });
    QSignalSpy finished(window.get(), &SandboxWindow::importFinished);
    window->importFiles(SandboxTest::samples());
    EXPECT_TRUE(bar->isVisible());
    EXPECT_TRUE(window->jobCancel()->isVisible());
    EXPECT_EQ(bar->text(), QStringLiteral("Importing 0 of 5 file(s)"));
    ASSERT_TRUE(Scripted::waitFor([&] { return finished.count() == 1 && !bar->isVisible(); }));
    EXPECT_EQ(window->bin()->thumbnailCount(), 3);
    EXPECT_FALSE(window->jobCancel()->isVisible());
    // Each file counted once as it settled, then the three pictures of the bin.
    EXPECT_TRUE(shown.contains(QStringLiteral("Importing 5 of 5 file(s)")))
        << shown.join(QLatin1Char('|')).toStdString();
    EXPECT_TRUE(shown.contains(QStringLiteral("Thumbnails 3 of 3"))) << shown.join(QLatin1Char('|')).toStdString();
    EXPECT_LT(shown.indexOf(QStringLiteral("Importing 5 of 5 file(s)")),
              shown.indexOf(QStringLiteral("Thumbnails 3 of 3")));
    QObject::disconnect(watch);

    // The broken file: one question, and its tile greyed (no thumbnail for it or the tone).
    ASSERT_EQ(dialogs->failedFilesQuestions.size(), 1u);
    EXPECT_TRUE(dialogs->failedFilesQuestions[0].allowKeep);
    ASSERT_EQ(window->bin()->files().size(), 5u);
    int failed = 0;
    for (const Media::File* file : window->bin()->files())
        failed += file->isFailed() ? 1 : 0;
    EXPECT_EQ(failed, 1);
    EXPECT_TRUE(window->binFile(sample(4))->isFailed());
    // A second import of a good file alone asks nothing more.
    import({sample(3)});
    EXPECT_EQ(dialogs->failedFilesQuestions.size(), 1u);
    // Answered Remove, however long the answer takes, a failed file stays out of the bin.
    const QString again = QDir(QDir::tempPath()).filePath(QStringLiteral("broken-again.mp4"));
    QFile::remove(again);
    ASSERT_TRUE(QFile::copy(sample(4), again));
    dialogs->removeFailed = true;
    import({again});
    EXPECT_EQ(dialogs->failedFilesQuestions.size(), 2u);
    EXPECT_EQ(window->binFile(again), nullptr);
    QFile::remove(again);
}

TEST_F(ProjectJobsTest, cancelDropsTheImportAndTheNextImportWorks)
{
    QSignalSpy finished(window.get(), &SandboxWindow::importFinished);
    QSignalSpy cancelled(window.get(), &SandboxWindow::importCancelled);
    bool doneCalled = false;
    window->importFiles({sample(0), sample(1), sample(2)},
                        [&](const std::vector<const Media::File*>&) { doneCalled = true; });
    ASSERT_TRUE(window->jobCancel()->isVisible());
    // Files handed over by another start wait for the import to end.
    int handedOver = 0;
    window->handOver({{sample(3)}, {}, {}}, [&] { ++handedOver; });
    EXPECT_EQ(handedOver, 0);
    EXPECT_EQ(window->statusBar()->currentMessage(), QStringLiteral("Files from another start wait: Importing"));
    QTest::mouseClick(window->jobCancel(), Qt::LeftButton);
    ASSERT_EQ(cancelled.count(), 1);
    EXPECT_TRUE(Scripted::waitFor([&] { return handedOver == 1; }));
    EXPECT_EQ(cancelled[0][0].toInt(), 3);
    EXPECT_FALSE(window->importRunning());
    EXPECT_FALSE(window->jobProgress()->isVisible());
    // The files still opening finish unseen.
    Scripted::waitFor([] { return false; }, 1500);
    EXPECT_EQ(finished.count(), 0);
    EXPECT_FALSE(doneCalled);
    EXPECT_TRUE(window->bin()->files().empty());
    EXPECT_TRUE(dialogs->failedFilesQuestions.empty());

    import({sample(0)});
    ASSERT_EQ(finished.count(), 1);
    EXPECT_EQ(finished[0][0].toInt(), 1);
    ASSERT_EQ(window->bin()->files().size(), 1u);
    EXPECT_TRUE(window->bin()->files()[0]->isOpened());

    // Thumbnails cancelled as their tiles appear never arrive.
    ASSERT_TRUE(Scripted::waitFor([&] { return window->bin()->thumbnailCount() == 1; }));
    window->importFiles({sample(1)}, [&](const std::vector<const Media::File*>&) { window->jobCancel()->click(); });
    Scripted::waitFor([] { return false; }, 1000);
    EXPECT_EQ(window->bin()->files().size(), 2u);
    EXPECT_EQ(window->bin()->thumbnailCount(), 1);
}

TEST_F(ProjectJobsTest, aRefusedSaveOrANewerOrDamagedProjectSaysWhyAndChangesNothing)
{
    struct Row
    {
        const char* name;
        bool save; // a save of the project, changed by importing `extra`, over its file; else an open
        int extra;
        std::function<void(const QString& folder)> spoil;
        const char* title;
        const char* words;
    };
    std::unique_ptr<WithoutFolderOverride> lowered;
    std::unique_ptr<FullDisk> full;
    const Row rows[] = {
        {"read-only project folder", true, 3,
         [&](const QString& folder) {
             QFile::setPermissions(folder, QFile::ReadOwner | QFile::ExeOwner);
             lowered = std::make_unique<WithoutFolderOverride>();
         },
         "Save Project", "could not be saved"},
        {"full disk", true, 0, [&](const QString&) { full = std::make_unique<FullDisk>(64); }, "Save Project",
         "could not be saved"},
        {"project of a newer version", false, -1,
         [&](const QString& folder) {
             const QString path = QDir(folder).filePath(QStringLiteral("p.dscproj"));
             QByteArray bytes = readAll(path);
             bytes.replace("\"version\": 1", "\"version\": 2");
             QFile file(path);
             ASSERT_TRUE(file.open(QIODevice::WriteOnly));
             file.write(bytes);
         },
         "Open Project", "newer version"},
        {"damaged project", false, -1,
         [&](const QString& folder) {
             QFile file(QDir(folder).filePath(QStringLiteral("p.dscproj")));
             ASSERT_TRUE(file.open(QIODevice::WriteOnly));
             file.write("{\"format\": \"dscproj\", \"version\": 1, \"clips\": [");
         },
         "Open Project", "damaged"},
    };
    import({sample(2)});
    ASSERT_TRUE(Scripted::dropFiles(viewport, {sample(2)}, pointAt(0, project()->tracks().back())));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        QTemporaryDir dir;
        const QString folder = dir.filePath(QStringLiteral("project"));
        ASSERT_TRUE(QDir().mkpath(folder));
        const QString path = QDir(folder).filePath(QStringLiteral("p.dscproj"));
        ASSERT_TRUE(window->saveProjectAs(path));
        row.spoil(folder);
        const QByteArray onDisk = readAll(path);
        ASSERT_FALSE(onDisk.isEmpty());
        if (row.save)
            import({sample(row.extra)});
        const Project::Document before = window->document();
        const bool modified = window->isModified();
        const std::size_t warnings = dialogs->warnings.size();

        const bool done = row.save ? window->saveProjectAs(path) : window->openProject(path);
        full.reset();
        lowered.reset();
        QFile::setPermissions(folder, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);

        EXPECT_FALSE(done) << readAll(path).size() << " bytes on disk, " << onDisk.size() << " before";
        ASSERT_EQ(dialogs->warnings.size(), warnings + 1);
        EXPECT_EQ(dialogs->warnings.back().title, QString::fromLatin1(row.title));
        EXPECT_TRUE(dialogs->warnings.back().text.contains(QString::fromLatin1(row.words)))
            << dialogs->warnings.back().text.toStdString();
        EXPECT_EQ(readAll(path), onDisk);
        EXPECT_EQ(QDir(folder).entryList(QDir::Files), QStringList{QStringLiteral("p.dscproj")});
        EXPECT_EQ(window->document(), before);
        EXPECT_EQ(window->projectPath(), Filesystem::cleanPath(path));
        EXPECT_EQ(window->isModified(), modified);
    }
}
