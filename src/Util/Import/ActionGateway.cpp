#include "ActionGateway.h"

#include "DeferredCall.h"

#include <glog/logging.h>

namespace Action {

Gateway::Gateway(Executor executor, QObject* parent)
    : QObject(parent),
      m_executor(std::move(executor)),
      m_deferredReplay(std::make_unique<DeferredCall>(this, &Gateway::replay))
{
    if (!m_executor)
        LOG(ERROR) << "Action::Gateway::Gateway: no executor; accepting a proposal will throw";
}

Gateway::~Gateway()
{
    // Whoever waits for a queued proposal hears that it will never run.
    Gateway::closeInternal();
}

std::pair<Id, Verdict> Gateway::propose(const Proposal& proposal)
{
    const Id id = m_nextId++;
    if (m_closed) {
        setVerdict(id, Verdict::Cancelled);
        Q_EMIT cancelled(id, tr("The editor has closed."));
    } else if (m_blacklist.contains(proposal.kind)) {
        setVerdict(id, Verdict::Blacklisted);
        Q_EMIT blacklisted(id, proposal.kind);
    } else if (isLocked() || m_replaying || !m_queue.empty()) {
        m_queue.push_back(Entry{id, proposal});
        setVerdict(id, Verdict::Queued);
        Q_EMIT blocked(id, isLocked() ? m_locks.firstKey() : tr("Waiting for earlier actions"));
    } else {
        settle(id, proposal);
    }
    return {id, m_verdicts.at(id)};
}

bool Gateway::cancel(Id id)
{
    for (auto it = m_queue.begin(); it != m_queue.end(); ++it) {
        if (it->id != id)
            continue;
        m_queue.erase(it);
        setVerdict(id, Verdict::Cancelled);
        Q_EMIT cancelled(id, tr("Cancelled."));
        return true;
    }
    return false;
}

void Gateway::lock(const QString& reason)
{
    if (reason.isEmpty()) {
        LOG(ERROR) << "Action::Gateway::lock: a lock needs a reason";
        return;
    }
    lockInternal(reason);
}

void Gateway::lockInternal(const QString& reason) { ++m_locks[reason]; }

bool Gateway::unlock(const QString& reason)
{
    const auto it = m_locks.find(reason);
    if (it == m_locks.end()) {
        LOG(ERROR) << "Action::Gateway::unlock: \"" << reason.toStdString() << "\" does not hold the editor";
        return false;
    }
    if (--it.value() == 0)
        m_locks.erase(it);
    if (m_locks.isEmpty() && !m_queue.empty())
        m_deferredReplay->trigger();
    return true;
}

bool Gateway::isLocked() const { return !m_locks.isEmpty(); }

QStringList Gateway::lockReasons() const { return m_locks.keys(); }

void Gateway::blacklist(const QString& kind) { blacklistInternal(kind); }

void Gateway::blacklistInternal(const QString& kind) { m_blacklist.insert(kind); }

void Gateway::unblacklist(const QString& kind) { m_blacklist.remove(kind); }

bool Gateway::isBlacklisted(const QString& kind) const { return m_blacklist.contains(kind); }

void Gateway::close() { closeInternal(); }

void Gateway::closeInternal()
{
    m_closed = true;
    std::deque<Entry> queue;
    queue.swap(m_queue);
    for (const Entry& entry : queue) {
        setVerdict(entry.id, Verdict::Cancelled);
        Q_EMIT cancelled(entry.id, tr("The editor has closed."));
    }
}

bool Gateway::isClosed() const { return m_closed; }

std::vector<std::pair<Id, Proposal>> Gateway::queued() const
{
    std::vector<std::pair<Id, Proposal>> result;
    result.reserve(m_queue.size());
    for (const Entry& entry : m_queue)
        result.emplace_back(entry.id, entry.proposal);
    return result;
}

std::optional<Verdict> Gateway::verdict(Id id) const
{
    const auto it = m_verdicts.find(id);
    return it == m_verdicts.end() ? std::nullopt : std::optional<Verdict>(it->second);
}

void Gateway::settle(Id id, const Proposal& proposal)
{
    if (!m_executor)
        throw std::bad_function_call();
    setVerdict(id, Verdict::Accepted);
    Q_EMIT accepted(id);
    m_executor(proposal);
}

void Gateway::replay()
{
    if (m_replaying)
        return;
    m_replaying = true;
    struct Pass
    {
        bool& running;
        ~Pass() { running = false; }
    } pass{m_replaying};
    // Proposals queued by the executors during this pass wait for the next one.
    for (size_t count = m_queue.size(); count > 0 && !m_queue.empty() && !isLocked(); --count) {
        const Entry entry = m_queue.front();
        m_queue.pop_front();
        if (m_blacklist.contains(entry.proposal.kind)) {
            setVerdict(entry.id, Verdict::Blacklisted);
            Q_EMIT blacklisted(entry.id, entry.proposal.kind);
        } else {
            settle(entry.id, entry.proposal);
        }
    }
    if (!m_queue.empty() && !isLocked())
        m_deferredReplay->trigger();
}

void Gateway::setVerdict(Id id, Verdict verdict) { m_verdicts[id] = verdict; }

void GatewayEmpty::lockInternal(const QString&) {}

void GatewayEmpty::blacklistInternal(const QString&) {}

void GatewayEmpty::closeInternal() {}

} // namespace Action
