#pragma once

// Helpers of the import tests: an opener that fails chosen files with chosen codes and opens the
// rest honestly, a dialog strategy that records the failure question and answers it, and
// event-loop spinning.

#include "ModelFakes.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Interfaces/EditorModel.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QMap>
#include <QPointer>
#include <QTimer>

#include <functional>
#include <memory>
#include <vector>

namespace ImportTest {

using TestSupport::failed;
using TestSupport::ManualOpener;

inline Media::OpenResult opened()
{
    Media::OpenResult result;
    result.ok = true;
    Media::Video video;
    video.index = 0;
    result.metadata.videos.push_back(video);
    return result;
}

// Opens files with `honest`, except those whose file name is in `failures`, which fail with
// the codes given for them. Answers come from the event loop.
class ChoosingOpener : public Media::Opener
{
public:
    ChoosingOpener(std::shared_ptr<Media::Opener> honest, QMap<QString, std::vector<int>> failures)
        : m_honest(std::move(honest)), m_failures(std::move(failures))
    {}
    void open(const Types::String& path, Done done) override
    {
        const QString name = QFileInfo(path.toQString()).fileName();
        if (!m_failures.contains(name)) {
            m_honest->open(path, std::move(done));
            return;
        }
        const Media::OpenResult result = failed(m_failures.value(name));
        QTimer::singleShot(0, &m_context, [done = std::move(done), result] { done(result); });
    }

private:
    std::shared_ptr<Media::Opener> m_honest;
    QMap<QString, std::vector<int>> m_failures;
    QObject m_context;
};

// Records each failure question and answers "Remove" (true) or "Keep" (false). Everything else
// is answered as the silent strategy does.
class RecordingStrategy : public Dialog::DialogStrategyEmpty
{
public:
    struct Question
    {
        bool allowKeep;
        QString message;
    };

    bool remove = false;
    std::vector<Question> questions;
    // Runs inside the question, before it is answered (to spin the event loop, for one).
    std::function<void()> whileAsking;

private:
    bool showHasFailedFiles(bool allowKeep, const QString& message) override
    {
        questions.push_back({allowKeep, message});
        if (whileAsking)
            whileAsking();
        return remove;
    }
};

// Installs a recording strategy for the lifetime of the object, then the silent one.
class StrategyScope
{
public:
    StrategyScope() : strategy(std::make_shared<RecordingStrategy>()) { Dialog::setStrategy(strategy); }
    ~StrategyScope() { Dialog::initialize(false); }
    StrategyScope(const StrategyScope&) = delete;
    StrategyScope& operator=(const StrategyScope&) = delete;

    RecordingStrategy* operator->() const { return strategy.get(); }
    std::shared_ptr<RecordingStrategy> strategy;
};

// Runs the event loop until `done` holds or about ten seconds have passed (files opened on
// worker threads answer from the event loop).
template <class Pred>
bool spinUntil(Pred done, int maxMilliseconds = 10000)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.elapsed() > maxMilliseconds)
            return false;
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
    }
    return true;
}

// Lets posted events and zero-interval timers of the next few turns run.
inline void spinTurns(int turns = 10)
{
    for (int i = 0; i < turns; ++i) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents(QEventLoop::AllEvents);
    }
}

} // namespace ImportTest
