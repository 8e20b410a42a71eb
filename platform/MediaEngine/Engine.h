#pragma once

#include <MediaEngine/FrameCache.h>
#include <MediaEngine/MediaTypes.h>

#include <QObject>
#include <QPointer>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <memory>
#include <unordered_map>
#include <vector>

namespace MediaEngine {

using JobId = quint64;
using ProbeCallback = std::function<void(const ProbeResult&)>;
using FrameCallback = std::function<void(const FrameResult&)>;

// Probes files and decodes frames on a pool of its own (as many threads as the machine has
// cores) and answers on the thread the engine lives in (the GUI thread). A callback runs
// from the event loop, never inside the call that asked; it does not run when its job was
// cancelled or its context object was destroyed. Destroying the engine cancels what is
// still running and waits only for the read or decode step in progress, which notices
// cancellation promptly.
class MEDIAENGINE_EXPORT Engine : public QObject
{
    Q_OBJECT

public:
    explicit Engine(QObject* parent = nullptr);
    explicit Engine(const Limits& limits, QObject* parent = nullptr);
    ~Engine() override;

    const Limits& limits() const { return m_limits; }

    // Reads the streams of the file; `callback` receives the result unless cancelled
    // first. `context` (living on the engine's thread; null for the engine itself) bounds
    // the callback's lifetime. The id of the job, or 0 (and a log line) without a callback.
    JobId probe(const QString& path, QObject* context, ProbeCallback callback);

    // Decodes a frame; a frame in the cache is answered without decoding (fromCache set) unless
    // the file was rewritten or replaced since (another size, modification time or inode),
    // and requests for a frame already being decoded share that decode. Successful frames
    // enter the cache. The frames of one file are decoded one after another by one worker, in
    // the order of their times, with the file kept open while more are waiting: a strip of
    // thumbnails inside one group of pictures decodes the group once.
    JobId requestFrame(const FrameRequest& request, QObject* context, FrameCallback callback);

    // The cached frame for the request, or a null image; never decodes.
    QImage cachedFrame(const FrameRequest& request);

    // Drops one job: its callback will not run. False when the id is not pending.
    bool cancel(JobId id);
    // Drops every pending job on the file and forgets its cached frames; the number of
    // jobs dropped.
    int cancelFile(const QString& path);
    void cancelAll();

    int pendingCount() const { return int(m_jobs.size()); }
    // Blocks until no worker runs (answers already posted still arrive from the event
    // loop); false when the time ran out. For shutdown paths and tests.
    bool waitForDone(int msecs = -1) { return m_pool.waitForDone(msecs); }
    FrameCache& cache() { return m_cache; }
    int maxThreadCount() const { return m_pool.maxThreadCount(); }

private:
    struct Job
    {
        QString path;
        std::shared_ptr<std::atomic_bool> cancelled; // the flag its work watches
        QPointer<QObject> context;
        ProbeCallback probeCallback;
        FrameCallback frameCallback;
        JobId flight = 0; // the decode a frame job waits for
    };
    // One decode and the frame jobs that asked for the same frame meanwhile.
    struct Flight
    {
        FrameKey key;
        std::vector<JobId> waiters;
        std::shared_ptr<std::atomic_bool> cancelled; // set when the last waiter is dropped
    };
    using Jobs = std::unordered_map<JobId, Job>;
    struct Lane;

    JobId addJob(const QString& path, QObject* context, ProbeCallback probeCallback, FrameCallback frameCallback);
    // Forgets the job; its work stops unless other jobs wait for the same decode.
    Jobs::iterator dropJob(Jobs::iterator job);
    // Runs `work` on the pool and hands its result to `deliver` on the engine's thread,
    // unless `cancelled` is set in between.
    template <typename Result>
    void startWork(std::shared_ptr<std::atomic_bool> cancelled, std::function<Result(const std::atomic_bool*)> work,
                   std::function<void(const Result&)> deliver);
    // Takes the job out of the pending ones; false when it was cancelled.
    bool takeJob(JobId id, Job& job);
    void deliverProbe(JobId id, const ProbeResult& result);
    void deliverFlight(JobId flight, const FrameResult& result);
    void deliverFrame(JobId id, const FrameResult& result);
    // Hands the decode to the worker of its file, or starts one.
    void enqueueDecode(JobId flight, const FrameRequest& request, std::shared_ptr<std::atomic_bool> cancelled);

    Limits m_limits;
    QThreadPool m_pool;
    FrameCache m_cache;
    JobId m_nextId = 1;
    Jobs m_jobs;
    std::unordered_map<JobId, Flight> m_flights;
    std::unordered_map<FrameKey, JobId, FrameKeyHash> m_flightByKey;
    std::unordered_map<QString, std::shared_ptr<Lane>> m_lanes; // by file path
};

} // namespace MediaEngine
