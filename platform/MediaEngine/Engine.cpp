#include <MediaEngine/Engine.h>

#include <MediaEngine/FrameDecoder.h>
#include <MediaEngine/Probe.h>

#include <QThread>

#include <algorithm>
#include <mutex>

#include <glog/logging.h>

namespace MediaEngine {

// The decodes waiting for the worker of one file. The worker takes them in the order of their
// times from where it stands and closes the lane (under the lock) when none is left, so a
// decode asked for later starts a new worker.
struct Engine::Lane
{
    struct Decode
    {
        JobId flight;
        FrameRequest request;
        std::shared_ptr<std::atomic_bool> cancelled;
    };
    std::mutex mutex;
    std::vector<Decode> waiting;
    bool closed = false;

    bool hasWaiting()
    {
        std::lock_guard<std::mutex> lock(mutex);
        return std::any_of(waiting.begin(), waiting.end(), [](const Decode& d) { return !d.cancelled->load(); });
    }

    // The next decode to run (the earliest at or after `position`, else the earliest), and
    // whether more wait after it; false when the lane is closed.
    bool take(qint64 position, Decode& next, bool& more)
    {
        std::lock_guard<std::mutex> lock(mutex);
        waiting.erase(
            std::remove_if(waiting.begin(), waiting.end(), [](const Decode& d) { return d.cancelled->load(); }),
            waiting.end());
        if (waiting.empty()) {
            closed = true;
            return false;
        }
        auto earlier = [](const Decode& a, const Decode& b) { return a.request.time < b.request.time; };
        auto chosen = waiting.end();
        for (auto it = waiting.begin(); it != waiting.end(); ++it)
            if (it->request.time >= position && (chosen == waiting.end() || earlier(*it, *chosen)))
                chosen = it;
        if (chosen == waiting.end())
            chosen = std::min_element(waiting.begin(), waiting.end(), earlier);
        next = std::move(*chosen);
        waiting.erase(chosen);
        more = !waiting.empty();
        return true;
    }
};

Engine::Engine(QObject* parent) : Engine(Limits(), parent) {}

Engine::Engine(const Limits& limits, QObject* parent) : QObject(parent), m_limits(limits)
{
    m_pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount()));
}

Engine::~Engine()
{
    cancelAll();
    m_pool.clear();
    // Running jobs see their flag at the next read or packet; their answers, posted to
    // this object, are discarded with it.
    m_pool.waitForDone();
}

JobId Engine::addJob(const QString& path, QObject* context, ProbeCallback probeCallback, FrameCallback frameCallback)
{
    const JobId id = m_nextId++;
    m_jobs.emplace(id, Job{path, std::make_shared<std::atomic_bool>(false), QPointer<QObject>(context ? context : this),
                           std::move(probeCallback), std::move(frameCallback)});
    return id;
}

JobId Engine::probe(const QString& path, QObject* context, ProbeCallback callback)
{
    if (!callback) {
        LOG(ERROR) << "MediaEngine::Engine::probe: no callback for " << path.toStdString();
        return 0;
    }
    const JobId id = addJob(path, context, std::move(callback), nullptr);
    const Limits limits = m_limits;
    startWork<ProbeResult>(
        m_jobs.at(id).cancelled,
        [path, limits](const std::atomic_bool* cancelled) { return probeFile(path, limits, cancelled); },
        [this, id](const ProbeResult& result) { deliverProbe(id, result); });
    return id;
}

JobId Engine::requestFrame(const FrameRequest& request, QObject* context, FrameCallback callback)
{
    if (!callback) {
        LOG(ERROR) << "MediaEngine::Engine::requestFrame: no callback for " << request.path.toStdString();
        return 0;
    }
    const JobId id = addJob(request.path, context, nullptr, std::move(callback));
    Job& job = m_jobs.at(id);
    // Taken now: the frame is cached under the content the file has when it is asked for.
    FrameKey key = FrameKey::of(request);
    const QImage cached = m_cache.find(key);
    if (!cached.isNull()) {
        FrameResult result;
        result.request = request;
        result.image = cached;
        result.fromCache = true;
        QMetaObject::invokeMethod(
            this, [this, id, result = std::move(result)]() { deliverFrame(id, result); }, Qt::QueuedConnection);
        return id;
    }
    const auto sharing = m_flightByKey.find(key);
    if (sharing != m_flightByKey.end()) {
        job.flight = sharing->second;
        m_flights.at(job.flight).waiters.push_back(id);
        return id;
    }
    job.flight = id;
    m_flights.emplace(id, Flight{key, {id}, job.cancelled});
    m_flightByKey.emplace(std::move(key), id);
    enqueueDecode(id, request, job.cancelled);
    return id;
}

void Engine::enqueueDecode(JobId flight, const FrameRequest& request, std::shared_ptr<std::atomic_bool> cancelled)
{
    std::shared_ptr<Lane>& lane = m_lanes[request.path];
    if (lane) {
        std::lock_guard<std::mutex> lock(lane->mutex);
        if (!lane->closed) {
            lane->waiting.push_back(Lane::Decode{flight, request, std::move(cancelled)});
            return;
        }
    }
    lane = std::make_shared<Lane>();
    lane->waiting.push_back(Lane::Decode{flight, request, std::move(cancelled)});
    m_pool.start(QRunnable::create([this, lane, limits = m_limits]() {
        FrameDecoder decoder(limits);
        qint64 position = 0;
        Lane::Decode next;
        bool more = false;
        // Asked while decoding: requests keep coming in while the first ones decode.
        const std::function<bool()> waiting = [&lane] { return lane->hasWaiting(); };
        while (lane->take(position, next, more)) {
            FrameResult result = decoder.decode(next.request, next.cancelled.get(), waiting);
            position = next.request.time;
            if (next.cancelled->load())
                continue;
            QMetaObject::invokeMethod(
                this, [this, id = next.flight, result = std::move(result)]() { deliverFlight(id, result); },
                Qt::QueuedConnection);
        }
    }));
}

template <typename Result>
void Engine::startWork(std::shared_ptr<std::atomic_bool> cancelled, std::function<Result(const std::atomic_bool*)> work,
                       std::function<void(const Result&)> deliver)
{
    m_pool.start(QRunnable::create([this, work = std::move(work), deliver = std::move(deliver), cancelled]() {
        if (cancelled->load())
            return;
        Result result = work(cancelled.get());
        if (cancelled->load())
            return;
        QMetaObject::invokeMethod(
            this, [deliver, result = std::move(result)]() { deliver(result); }, Qt::QueuedConnection);
    }));
}

QImage Engine::cachedFrame(const FrameRequest& request) { return m_cache.find(request); }

Engine::Jobs::iterator Engine::dropJob(Jobs::iterator job)
{
    const auto flight = job->second.flight ? m_flights.find(job->second.flight) : m_flights.end();
    if (flight == m_flights.end()) {
        job->second.cancelled->store(true);
    } else {
        std::vector<JobId>& waiters = flight->second.waiters;
        waiters.erase(std::remove(waiters.begin(), waiters.end(), job->first), waiters.end());
        if (waiters.empty()) {
            flight->second.cancelled->store(true);
            m_flightByKey.erase(flight->second.key);
            m_flights.erase(flight);
        }
    }
    return m_jobs.erase(job);
}

bool Engine::cancel(JobId id)
{
    const auto found = m_jobs.find(id);
    if (found == m_jobs.end())
        return false;
    dropJob(found);
    return true;
}

int Engine::cancelFile(const QString& path)
{
    int dropped = 0;
    for (auto it = m_jobs.begin(); it != m_jobs.end();) {
        if (it->second.path == path) {
            it = dropJob(it);
            ++dropped;
        } else {
            ++it;
        }
    }
    m_cache.removeFile(path);
    return dropped;
}

void Engine::cancelAll()
{
    for (auto& [id, job] : m_jobs)
        job.cancelled->store(true);
    m_jobs.clear();
    m_flights.clear();
    m_flightByKey.clear();
}

bool Engine::takeJob(JobId id, Job& job)
{
    const auto found = m_jobs.find(id);
    if (found == m_jobs.end())
        return false; // cancelled after the work had finished
    job = std::move(found->second);
    m_jobs.erase(found);
    return true;
}

void Engine::deliverProbe(JobId id, const ProbeResult& result)
{
    Job job;
    if (takeJob(id, job) && job.context)
        job.probeCallback(result);
}

void Engine::deliverFlight(JobId flightId, const FrameResult& result)
{
    const auto flight = m_flights.find(flightId);
    if (flight == m_flights.end())
        return; // every waiter was cancelled
    // A worker that finished its lane leaves it closed: forget it.
    const auto lane = m_lanes.find(result.request.path);
    if (lane != m_lanes.end()) {
        const std::shared_ptr<Lane> kept = lane->second;
        bool closed = false;
        {
            std::lock_guard<std::mutex> lock(kept->mutex);
            closed = kept->closed;
        }
        if (closed)
            m_lanes.erase(lane);
    }
    const std::vector<JobId> waiters = std::move(flight->second.waiters);
    FrameKey key = std::move(flight->second.key);
    m_flightByKey.erase(key);
    m_flights.erase(flight);
    if (result.ok())
        m_cache.insert(std::move(key), result.image);
    // A callback may cancel the waiters after it: they are skipped.
    for (const JobId id : waiters)
        deliverFrame(id, result);
}

void Engine::deliverFrame(JobId id, const FrameResult& result)
{
    Job job;
    if (takeJob(id, job) && job.context)
        job.frameCallback(result);
}

} // namespace MediaEngine
