#pragma once

// Stand-ins the test programs share around the model host: open results chosen by the test, an
// opener the test answers by hand, and a log of what the host reports about files.

#include <Util/Interfaces/EditorModel.h>

#include <QFileInfo>
#include <QString>

#include <deque>
#include <string>
#include <vector>

namespace TestSupport {

inline Media::OpenResult failed(std::vector<int> codes)
{
    Media::OpenResult result;
    for (int code : codes)
        result.errors.push_back(Media::OpenError{code, "chosen by the test"});
    return result;
}

// Keeps every open request until the test answers it.
class ManualOpener : public Media::Opener
{
public:
    void open(const Types::String& path, Done done) override
    {
        m_pending.push_back({path.toQString(), std::move(done)});
    }

    // Answers the oldest request for `path`; false when there is none.
    bool answer(const QString& path, const Media::OpenResult& result)
    {
        for (auto it = m_pending.begin(); it != m_pending.end(); ++it) {
            if (it->path == path) {
                const Done done = std::move(it->done);
                m_pending.erase(it);
                done(result);
                return true;
            }
        }
        return false;
    }
    int pendingCount() const { return int(m_pending.size()); }

private:
    struct Pending
    {
        QString path;
        Done done;
    };
    std::deque<Pending> m_pending;
};

// Logs, by file name, what the file view reports and the failure notifications of the files it
// is subscribed to.
class FileLog : public Media::View<Media::File>, public PubSub::Subscriber<Media::FileOpenFailedNotification>
{
public:
    std::vector<std::string> log;

protected:
    using Media::View<Media::File>::notify;

private:
    static std::string name(const Media::File* f) { return QFileInfo(f->path().toQString()).fileName().toStdString(); }
    void fileAdded(const Media::File* f) override { log.push_back("added " + name(f)); }
    void fileRemoved(const Media::File* f) override { log.push_back("removed " + name(f)); }
    void fileOpened(const Media::File* f) override
    {
        log.push_back("opened " + name(f) + " streams " + std::to_string(f->videos().size() + f->audios().size()));
    }
    void fileFailed(const Media::File* f) override { log.push_back("failed " + name(f)); }
    void notify(const Media::FileOpenFailedNotification& n) override
    {
        std::string codes;
        for (const auto& e : n.errors)
            codes += " " + std::to_string(e.code);
        log.push_back("notification " + name(n.file) + codes + (n.file->isFailed() ? " (already failed)" : ""));
    }
};

} // namespace TestSupport
