// Project files: what is written is read back unchanged; damaged, cut-short, foreign and newer
// files are refused with a message and nothing else changes; a failed save keeps the previous
// file; lost paths are listed and relinked; recent projects keep unreachable entries marked;
// autosave keeps the newest copies.

#include "TempSettings.h"

#include <Util/Interfaces/EditorSettings.h>
#include <Util/Project.h>

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

QByteArray readAll(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeAll(const QString& path, const QByteArray& data)
{
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(data);
}

class ProjectTest : public testing::Test
{
protected:
    QString path(const QString& name) const { return settings.folder() + QLatin1Char('/') + name; }

    Project::Document sampleDocument() const
    {
        Project::Document document;
        document.name = QStringLiteral("Holiday");
        document.media = QStringList{path(QStringLiteral("a.mp4")), path(QStringLiteral("b.wav"))};
        document.trackKinds = {0, 1, 2, 3, 4};
        Project::ClipEntry video;
        video.file = document.media[0];
        video.stream = 0;
        video.type = 1;
        video.name = QStringLiteral("a.mp4");
        video.position = 12'345'678'901'234'567; // beyond what a double holds exactly
        video.length = 40'000'000;
        video.offset = 5'000'000;
        video.speed = 1.5;
        video.reversed = true;
        video.effects = {{QStringLiteral("filters.color"), QStringLiteral("sepia"), {{QStringLiteral("mix"), 0.5}}}};
        video.animation = QJsonDocument::fromJson(R"({"format":"animation","version":1,"keys":[
            {"time":"7","transform":[2,0,0,0,2,0,0,0,1]}]})")
                              .object();
        Project::ClipEntry sound = video;
        sound.stream = 1;
        sound.type = 2;
        sound.track = 3;
        sound.master = 0;
        sound.linkOffset = 2'500'000;
        sound.reversed = false;
        document.clips = {video, sound};
        return document;
    }

    TestSupport::TempSettings settings;
};

} // namespace

TEST_F(ProjectTest, aSavedDocumentReadsBackEqualAndASecondSaveReplacesTheFirst)
{
    const Project::Document document = sampleDocument();
    ASSERT_TRUE(Project::save(path(QStringLiteral("p.dscproj")), document).ok());
    const Project::Result read = Project::load(path(QStringLiteral("p.dscproj")));
    ASSERT_TRUE(read.ok());
    EXPECT_TRUE(read.message.isEmpty());
    EXPECT_EQ(read.document, document);

    Project::Document changed = document;
    changed.clips.removeLast();
    ASSERT_TRUE(Project::save(path(QStringLiteral("p.dscproj")), changed).ok());
    EXPECT_EQ(Project::load(path(QStringLiteral("p.dscproj"))).document, changed);
    // Nothing is left beside the file.
    EXPECT_EQ(QDir(settings.folder()).entryList({QStringLiteral("p.dscproj*")}, QDir::Files).size(), 1);
}

TEST_F(ProjectTest, badFilesAreRefusedWithTheirOwnMessage)
{
    ASSERT_TRUE(Project::save(path(QStringLiteral("good.dscproj")), sampleDocument()).ok());
    const QByteArray good = readAll(path(QStringLiteral("good.dscproj")));
    QByteArray newer = good;
    newer.replace("\"version\": 1", "\"version\": 7");
    QByteArray foreign = good;
    foreign.replace("\"format\": \"dscproj\"", "\"format\": \"other\"");
    // Qt alone would keep the second "media" and lose the memory of the first.
    QByteArray repeated = good;
    repeated.replace("\"name\": \"Holiday\"", "\"media\": [[1]], \"name\": \"Holiday\"");
    QByteArray badMotion = good;
    badMotion.replace("\"time\": \"7\"", "\"time\": \"-7\"");
    QByteArray badEffects = good;
    badEffects.replace("\"effects\": [", "\"effects\": \"sepia\", \"unread\": [");
    QByteArray badTrack = good;
    badTrack.replace("\"track\": 3", "\"track\": 9");
    struct Row
    {
        const char* name;
        QByteArray content;
        bool exists;
        Project::Status status;
        const char* words;
    };
    const Row rows[] = {
        {"missing file", {}, false, Project::Status::Unreadable, "cannot be read"},
        {"cut in half", good.left(good.size() / 2), true, Project::Status::Corrupted, "damaged or incomplete"},
        {"empty file", {}, true, Project::Status::Corrupted, "damaged or incomplete"},
        {"random bytes", QByteArray(300, '\x9c'), true, Project::Status::Corrupted, "damaged or incomplete"},
        {"another format", foreign, true, Project::Status::Corrupted, "damaged or incomplete"},
        {"a clip on a track that does not exist", badTrack, true, Project::Status::Corrupted, "damaged or incomplete"},
        {"a motion that is no animation", badMotion, true, Project::Status::Corrupted, "damaged or incomplete"},
        {"effects that are no list", badEffects, true, Project::Status::Corrupted, "damaged or incomplete"},
        {"a repeated key", repeated, true, Project::Status::Corrupted, "damaged or incomplete"},
        {"a newer version", newer, true, Project::Status::NewerVersion, "newer version"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const QString file = path(QString::fromLatin1(row.name) + QStringLiteral(".dscproj"));
        if (row.exists)
            writeAll(file, row.content);
        const Project::Result result = Project::load(file);
        EXPECT_EQ(result.status, row.status);
        EXPECT_TRUE(result.message.contains(QString::fromLatin1(row.words))) << result.message.toStdString();
        EXPECT_TRUE(result.message.contains(QDir::toNativeSeparators(file)));
        EXPECT_TRUE(result.document.clips.isEmpty());
        EXPECT_EQ(readAll(file), row.content);
    }

    // A folder is not read; a good project padded past the size of any project is refused
    // without reading it.
    ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("folder.dscproj"))));
    EXPECT_EQ(Project::load(path(QStringLiteral("folder.dscproj"))).status, Project::Status::Unreadable);
    QFile huge(path(QStringLiteral("huge.dscproj")));
    ASSERT_TRUE(huge.open(QIODevice::WriteOnly) && huge.write(good) == good.size());
    ASSERT_TRUE(huge.write(QByteArray(int(Project::MaxFileBytes) + 1 - good.size(), ' ')) > 0);
    huge.close();
    const Project::Result tooLarge = Project::load(huge.fileName());
    EXPECT_EQ(tooLarge.status, Project::Status::Corrupted);
    EXPECT_TRUE(tooLarge.message.contains(QStringLiteral("damaged or incomplete")));
}

TEST_F(ProjectTest, aSaveThatCannotBeWrittenReportsItAndLeavesThePreviousFile)
{
    const QString target = path(QStringLiteral("kept.dscproj"));
    ASSERT_TRUE(Project::save(target, sampleDocument()).ok());
    const QByteArray before = readAll(target);
    // A folder in the way of the temporary file: the path's parent is a file.
    const Project::Result result = Project::save(target + QStringLiteral("/inside.dscproj"), Project::Document());
    EXPECT_EQ(result.status, Project::Status::WriteFailed);
    EXPECT_TRUE(result.message.startsWith(QStringLiteral("The project could not be saved to")));
    EXPECT_EQ(readAll(target), before);
}

TEST_F(ProjectTest, lostPathsAreListedOnceAndRelinkedEverywhere)
{
    Project::Document document = sampleDocument();
    writeAll(document.media[1], "present");
    EXPECT_EQ(Project::missingFiles(document), QStringList{document.media[0]});
    const QString moved = path(QStringLiteral("moved/a.mp4"));
    EXPECT_EQ(Project::relink(document, {{document.media[0], moved}, {path(QStringLiteral("x")), moved}}), 3);
    EXPECT_EQ(document.media[0], moved);
    EXPECT_EQ(document.clips[0].file, moved);
    EXPECT_EQ(document.clips[1].file, moved);
}

TEST_F(ProjectTest, recentProjectsPutTheLatestFirstAndMarkThoseThatAreGone)
{
    writeAll(path(QStringLiteral("one.dscproj")), "{}");
    for (const char* name : {"gone.dscproj", "one.dscproj", "two.dscproj", "one.dscproj"})
        Project::rememberProject(path(QString::fromLatin1(name)), 3);
    const QList<Project::RecentEntry> entries = Project::recentProjects();
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[0].path, path(QStringLiteral("one.dscproj")));
    EXPECT_TRUE(entries[0].reachable);
    EXPECT_EQ(entries[1].path, path(QStringLiteral("two.dscproj")));
    EXPECT_FALSE(entries[1].reachable);
    EXPECT_EQ(entries[2].path, path(QStringLiteral("gone.dscproj")));
    EXPECT_FALSE(entries[2].reachable);
}

TEST_F(ProjectTest, autosaveWritesReadableCopiesAndKeepsTheNewest)
{
    Settings::setProjectPath(path(QStringLiteral("Projects")));
    QStringList written;
    for (int i = 0; i < 4; ++i) {
        Project::Document document = sampleDocument();
        document.clips[0].position = i;
        written << Project::autosave(document, 2);
        ASSERT_FALSE(written.last().isEmpty());
    }
    EXPECT_TRUE(written.last().startsWith(Project::autosaveFolder()));
    const QStringList left = QDir(Project::autosaveFolder()).entryList(QDir::Files, QDir::Name);
    ASSERT_EQ(left.size(), 2);
    EXPECT_EQ(Project::load(written.last()).document.clips[0].position, 3);
    EXPECT_FALSE(QFile::exists(written.first()));
}
