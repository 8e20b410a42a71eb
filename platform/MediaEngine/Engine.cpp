#include <MediaEngine/Engine.h>

#include <MediaEngine/FrameDecoder.h>
#include <MediaEngine/Probe.h>

#include <QThread>

#include <glog/logging.h>

namespace MediaEngine {

Engine::Engine(QObject* parent)
    : Engine(Limits(), parent)
{
}

Engine::Engine(const Limits& limits, QObject* parent)
    : QObject(parent)
    , m_limits(limits)
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
        id, [path, limits](const std::atomic_bool* cancelled) { return probeFile(path, limits, cancelled); },
        &Engine::deliverProbe);
    return id;
}

JobId Engine::requestFrame(const FrameRequest& request, QObject* context, FrameCallback callback)
{
    if (!callback) {
        LOG(ERROR) << "MediaEngine::Engine::requestFrame: no callback for " << request.path.toStdString();
        return 0;
    }
    const JobId id = addJob(request.path, context, nullptr, std::move(callback));
    const QImage cached = m_cache.find(request);
    if (!cached.isNull()) {
        FrameResult result;
        result.request = request;
        result.image = cached;
        result.fromCache = true;
        QMetaObject::invokeMethod(
            this, [this, id, result = std::move(result)]() { deliverFrame(id, result); }, Qt::QueuedConnection);
        return id;
    }
    const Limits limits = m_limits;
    startWork<FrameResult>(
        id, [request, limits](const std::atomic_bool* cancelled) { return decodeFrame(request, limits, cancelled); },
        &Engine::deliverFrame);
    return id;
}

template <typename Result>
void Engine::startWork(JobId id, std::function<Result(const std::atomic_bool*)> work,
                       void (Engine::*deliver)(JobId, const Result&))
{
    std::shared_ptr<std::atomic_bool> cancelled = m_jobs.at(id).cancelled;
    m_pool.start(QRunnable::create([this, id, work = std::move(work), deliver, cancelled]() {
        if (cancelled->load())
            return;
        Result result = work(cancelled.get());
        if (cancelled->load())
            return;
        QMetaObject::invokeMethod(
            this, [this, id, deliver, result = std::move(result)]() { (this->*deliver)(id, result); },
            Qt::QueuedConnection);
    }));
}

QImage Engine::cachedFrame(const FrameRequest& request)
{
    return m_cache.find(request);
}

bool Engine::cancel(JobId id)
{
    const auto found = m_jobs.find(id);
    if (found == m_jobs.end())
        return false;
    found->second.cancelled->store(true);
    m_jobs.erase(found);
    return true;
}

int Engine::cancelFile(const QString& path)
{
    int dropped = 0;
    for (auto it = m_jobs.begin(); it != m_jobs.end();) {
        if (it->second.path == path) {
            it->second.cancelled->store(true);
            it = m_jobs.erase(it);
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

void Engine::deliverFrame(JobId id, const FrameResult& result)
{
    Job job;
    if (!takeJob(id, job))
        return;
    if (result.ok() && !result.fromCache)
        m_cache.insert(result.request, result.image);
    if (job.context)
        job.frameCallback(result);
}

} // namespace MediaEngine
