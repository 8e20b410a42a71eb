#include "ImportTestSupport.h"
#include "TestSupport.h"

#include <Util/Import/ActionGateway.h>

#include <QSignalSpy>

#include <gtest/gtest.h>

using namespace ImportTest;
using Action::Verdict;

namespace {

struct Recorder
{
    QStringList ran;
    Action::Gateway::Executor executor()
    {
        return [this](const Action::Proposal& p) { ran << p.kind + QLatin1Char(':') + p.origin; };
    }
};

Action::Proposal proposal(const char* kind, const char* origin = "")
{
    return Action::Proposal{QString::fromUtf8(kind), {}, QString::fromUtf8(origin)};
}

} // namespace

TEST(GatewayTest, VerdictOfAProposalByTheGatewayState)
{
    struct Row
    {
        const char* name;
        bool locked;
        bool blacklisted;
        bool closed;
        Verdict verdict;
        const char* signal;
        QString reason;
    };
    const Row rows[] = {
        {"open gateway", false, false, false, Verdict::Accepted, "accepted", {}},
        {"locked", true, false, false, Verdict::Queued, "blocked", QStringLiteral("Exporting")},
        {"blacklisted kind", false, true, false, Verdict::Blacklisted, "blacklisted", QStringLiteral("openFiles")},
        {"blacklisted wins over the lock", true, true, false, Verdict::Blacklisted, "blacklisted",
         QStringLiteral("openFiles")},
        {"closed", true, false, true, Verdict::Cancelled, "cancelled", QStringLiteral("The editor has closed.")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Recorder recorder;
        Action::Gateway gateway(recorder.executor());
        if (row.locked)
            gateway.lock(QStringLiteral("Exporting"));
        if (row.blacklisted)
            gateway.blacklist(QStringLiteral("openFiles"));
        if (row.closed)
            gateway.close();
        QSignalSpy accepted(&gateway, &Action::Gateway::accepted);
        QSignalSpy blocked(&gateway, &Action::Gateway::blocked);
        QSignalSpy blacklisted(&gateway, &Action::Gateway::blacklisted);
        QSignalSpy cancelled(&gateway, &Action::Gateway::cancelled);

        const auto [id, verdict] = gateway.propose(proposal("openFiles", "second instance"));
        EXPECT_EQ(verdict, row.verdict);
        EXPECT_EQ(gateway.verdict(id), row.verdict);
        EXPECT_EQ(recorder.ran,
                  row.verdict == Verdict::Accepted ? QStringList{"openFiles:second instance"} : QStringList{});
        const std::map<std::string, QSignalSpy*> spies{
            {"accepted", &accepted}, {"blocked", &blocked}, {"blacklisted", &blacklisted}, {"cancelled", &cancelled}};
        for (const auto& [name, spy] : spies) {
            SCOPED_TRACE(name);
            ASSERT_EQ(spy->count(), name == row.signal ? 1 : 0);
            if (spy->count() && spy != &accepted) {
                EXPECT_EQ(spy->at(0).at(1).toString(), row.reason);
            }
        }
        EXPECT_EQ(gateway.queued().size(), row.verdict == Verdict::Queued ? 1u : 0u);
    }
}

TEST(GatewayTest, QueueIsLookedAtAgainInArrivalOrderWhenTheLastLockIsReleased)
{
    Recorder recorder;
    Action::Gateway gateway(recorder.executor());
    QSignalSpy accepted(&gateway, &Action::Gateway::accepted);
    QSignalSpy blocked(&gateway, &Action::Gateway::blocked);
    QSignalSpy blacklisted(&gateway, &Action::Gateway::blacklisted);
    QSignalSpy cancelled(&gateway, &Action::Gateway::cancelled);
    const QString dialog = QStringLiteral("Dialog");
    gateway.lock(dialog);
    gateway.lock(dialog); // a dialog opened from a dialog
    gateway.lock(QStringLiteral("Drag"));

    const Action::Id first = gateway.propose(proposal("openFiles", "1")).first;
    const Action::Id second = gateway.propose(proposal("command", "2")).first;
    const Action::Id third = gateway.propose(proposal("import", "3")).first;
    const Action::Id fourth = gateway.propose(proposal("command", "4")).first;
    EXPECT_EQ(blocked.count(), 4);
    EXPECT_EQ(blocked.at(0).at(1).toString(), dialog) << "the first reason held is shown";
    EXPECT_TRUE(gateway.cancel(second));
    EXPECT_FALSE(gateway.cancel(second)) << "only a queued proposal can be cancelled";
    gateway.blacklist(QStringLiteral("import"));

    EXPECT_TRUE(gateway.unlock(dialog));
    EXPECT_TRUE(gateway.unlock(QStringLiteral("Drag")));
    spinTurns();
    EXPECT_TRUE(recorder.ran.isEmpty()) << "the inner dialog still holds the editor";

    EXPECT_TRUE(gateway.unlock(dialog));
    EXPECT_TRUE(recorder.ran.isEmpty()) << "the queue is looked at in a later turn";
    // Arrives after the release, before the pass: it waits behind the queue.
    const auto [fifth, fifthVerdict] = gateway.propose(proposal("command", "5"));
    EXPECT_EQ(fifthVerdict, Verdict::Queued);
    EXPECT_EQ(blocked.last().at(1).toString(), QStringLiteral("Waiting for earlier actions"));
    spinTurns();

    EXPECT_EQ(recorder.ran, (QStringList{"openFiles:1", "command:4", "command:5"}));
    EXPECT_EQ(accepted.count(), 3);
    EXPECT_EQ(blacklisted.count(), 1) << "blacklisted while queued: refused, not run";
    EXPECT_EQ(cancelled.count(), 1);
    const std::pair<Action::Id, Verdict> ends[] = {{first, Verdict::Accepted},
                                                   {second, Verdict::Cancelled},
                                                   {third, Verdict::Blacklisted},
                                                   {fourth, Verdict::Accepted},
                                                   {fifth, Verdict::Accepted}};
    for (const auto& [id, verdict] : ends)
        EXPECT_EQ(gateway.verdict(id), verdict) << "proposal " << id;
    EXPECT_FALSE(gateway.verdict(999));
    EXPECT_TRUE(gateway.queued().empty());
}

TEST(GatewayTest, AnExecutorThatLocksAgainStopsThePassAndKeepsTheRest)
{
    Action::Gateway* self = nullptr;
    QStringList ran;
    Action::Gateway gateway([&](const Action::Proposal& p) {
        ran << p.origin;
        if (p.kind == QLatin1String("modal"))
            self->lock(QStringLiteral("Dialog"));
        else if (p.kind == QLatin1String("command"))
            self->propose(proposal("later", "from executor"));
    });
    self = &gateway;
    gateway.lock(QStringLiteral("Export"));
    for (const char* origin : {"a", "b", "c"})
        gateway.propose(proposal(origin[0] == 'b' ? "modal" : "command", origin));
    gateway.unlock(QStringLiteral("Export"));
    spinTurns();
    EXPECT_EQ(ran, (QStringList{"a", "b"})) << "the modal action's lock stops the pass";
    ASSERT_EQ(gateway.queued().size(), 2u);
    EXPECT_EQ(gateway.queued()[0].second.origin, QStringLiteral("c"));
    EXPECT_EQ(gateway.queued()[1].second.origin, QStringLiteral("from executor"))
        << "a proposal made by an executor waits behind the queue, never runs inside it";

    gateway.unlock(QStringLiteral("Dialog"));
    spinTurns();
    EXPECT_EQ(ran, (QStringList{"a", "b", "c", "from executor", "from executor"}));
    EXPECT_TRUE(gateway.queued().empty());
}

TEST(GatewayTest, ClosingCancelsTheQueueAndCallerMistakesAreLogged)
{
    TestSupport::LogCapture log;
    Recorder recorder;
    auto gateway = std::make_unique<Action::Gateway>(recorder.executor());
    QSignalSpy cancelled(gateway.get(), &Action::Gateway::cancelled);
    gateway->lock(QString());
    EXPECT_FALSE(gateway->isLocked());
    EXPECT_TRUE(log.containsError("Action::Gateway::lock: a lock needs a reason"));
    EXPECT_FALSE(gateway->unlock(QStringLiteral("never held")));
    EXPECT_TRUE(log.containsError("Action::Gateway::unlock: \"never held\" does not hold the editor"));

    gateway->lock(QStringLiteral("Export"));
    gateway->propose(proposal("openFiles"));
    gateway->propose(proposal("openFiles"));
    gateway->close();
    EXPECT_EQ(cancelled.count(), 2);
    EXPECT_EQ(gateway->propose(proposal("openFiles")).second, Verdict::Cancelled);
    gateway->unlock(QStringLiteral("Export"));
    spinTurns();
    EXPECT_TRUE(recorder.ran.isEmpty());

    // Destroying a gateway with a queue tells of each proposal it drops.
    auto second = std::make_unique<Action::Gateway>(recorder.executor());
    QSignalSpy dropped(second.get(), &Action::Gateway::cancelled);
    second->lock(QStringLiteral("Export"));
    second->propose(proposal("command"));
    second.reset();
    EXPECT_EQ(dropped.count(), 1);
}

TEST(GatewayTest, EmptyGatewayAcceptsEverythingAtOnce)
{
    Recorder recorder;
    Action::GatewayEmpty gateway(recorder.executor());
    gateway.lock(QStringLiteral("Export"));
    gateway.blacklist(QStringLiteral("openFiles"));
    gateway.close();
    EXPECT_FALSE(gateway.isLocked());
    EXPECT_EQ(gateway.propose(proposal("openFiles", "x")).second, Verdict::Accepted);
    EXPECT_EQ(recorder.ran, QStringList{"openFiles:x"});
}
