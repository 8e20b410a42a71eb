#pragma once

#include <Util/EditorUtilExport.h>

#include <QMap>
#include <QObject>
#include <QSet>
#include <QString>
#include <QVariantMap>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <unordered_map>

class DeferredCall;

// The door through which actions from outside reach the editor: files handed over by a second
// instance, a command from the command provider, an import request.
namespace Action {

using Id = quint64;

// What is asked of the editor: a kind ("openFiles", "addFile", "command"...), its arguments and
// who asks (for status lines).
struct Proposal
{
    QString kind;
    QVariantMap arguments;
    QString origin;
};

// Where a proposal stands. Every proposal ends Accepted, Blacklisted or Cancelled, or is Queued
// until the editor's lock is released.
enum class Verdict
{
    Accepted,    // handed to the executor
    Queued,      // waiting: the editor is locked, or earlier proposals wait before it
    Blacklisted, // its kind is refused
    Cancelled,   // withdrawn by the caller, or the gateway was closed
};

// Accepts proposals and hands them to the executor, refuses blacklisted kinds, and holds the
// proposals that arrive while the editor is locked (an export, a modal dialog, a drag in
// progress). The lock is a set of named reasons; when the last one is released, the queue is
// looked at again in arrival order in a later turn of the event loop, and each queued
// proposal is accepted, or refused if its kind was blacklisted meanwhile. A pass that finds
// the editor locked again stops and keeps the rest. New proposals never overtake queued ones.
// Once closed, the gateway cancels what is queued and every later proposal.
//
//   Action::Gateway gateway([&](const Action::Proposal& p) { openFiles(p.arguments); });
//   gateway.lock(tr("Exporting"));
//   gateway.propose({"openFiles", {{"paths", paths}}, "second instance"});  // Queued
//   gateway.unlock(tr("Exporting"));                                       // accepted next turn
class EDITORUTIL_EXPORT Gateway : public QObject
{
    Q_OBJECT

public:
    // Runs an accepted proposal. Required: accepting with an empty executor throws
    // std::bad_function_call.
    using Executor = std::function<void(const Proposal&)>;

    explicit Gateway(Executor executor, QObject* parent = nullptr);
    ~Gateway() override;

    // The proposal's id and its verdict now (Accepted, Queued, Blacklisted or Cancelled). Each
    // verdict is also announced by the matching signal.
    std::pair<Id, Verdict> propose(const Proposal& proposal);
    // Withdraws a queued proposal; false when it is not queued.
    bool cancel(Id id);

    // Holds the editor; a reason may be held several times (nested dialogs) and is released as
    // often. Empty reasons are refused.
    void lock(const QString& reason);
    // False (and a log line) for a reason that is not held.
    bool unlock(const QString& reason);
    bool isLocked() const;
    QStringList lockReasons() const;

    void blacklist(const QString& kind);
    void unblacklist(const QString& kind);
    bool isBlacklisted(const QString& kind) const;

    // Cancels everything queued and every later proposal (the editor is closing).
    void close();
    bool isClosed() const;

    // The queued proposals in arrival order.
    std::vector<std::pair<Id, Proposal>> queued() const;
    // The verdict a proposal got, or nothing for an id the gateway never gave.
    std::optional<Verdict> verdict(Id id) const;

Q_SIGNALS:
    // Ids are Action::Id values, spelt quint64 for the meta-object system.
    void accepted(quint64 id);
    // Queued, with the reason to show ("Exporting", "Waiting for earlier actions").
    void blocked(quint64 id, const QString& reason);
    void blacklisted(quint64 id, const QString& kind);
    void cancelled(quint64 id, const QString& reason);

protected:
    // Steps of the public operations, for variants that hold no lock or list.
    virtual void lockInternal(const QString& reason);
    virtual void blacklistInternal(const QString& kind);
    virtual void closeInternal();

private:
    struct Entry
    {
        Id id;
        Proposal proposal;
    };

    void settle(Id id, const Proposal& proposal);
    void replay();
    void setVerdict(Id id, Verdict verdict);

    Executor m_executor;
    std::deque<Entry> m_queue;
    QMap<QString, int> m_locks; // reason -> times held
    QSet<QString> m_blacklist;
    std::unordered_map<Id, Verdict> m_verdicts;
    Id m_nextId = 1;
    bool m_closed = false;
    bool m_replaying = false;
    std::unique_ptr<DeferredCall> m_deferredReplay;
};

// A gateway that holds nothing back: no lock, no blacklist, no closing; every proposal is
// accepted and executed at once.
class EDITORUTIL_EXPORT GatewayEmpty : public Gateway
{
    Q_OBJECT

public:
    using Gateway::Gateway;

protected:
    void lockInternal(const QString& reason) override;
    void blacklistInternal(const QString& kind) override;
    void closeInternal() override;
};

} // namespace Action
