#include <DQtUtil/ExclusiveService.h>

#include <TestSupport.h>

#include <QSignalSpy>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

// Three clients of one service; every signal of each, and of the service, lands in one
// journal, so a test sees who was told what and in which order.
class ExclusiveServiceTest : public testing::Test
{
protected:
    void SetUp() override
    {
        for (const char* name : {"A", "B", "C"}) {
            auto* client = new ExclusiveClient(&service, &owner);
            record(client, name);
            clients.push_back(client);
        }
        QObject::connect(&service, &ExclusiveService::acquired, &owner, [this](ExclusiveClient* c) {
            journal.push_back("service:acquired " + c->objectName().toStdString());
        });
        QObject::connect(&service, &ExclusiveService::freed, &owner, [this] { journal.push_back("service:freed"); });
    }

    void record(ExclusiveClient* client, const std::string& name)
    {
        client->setObjectName(QString::fromStdString(name));
        QObject::connect(client, &ExclusiveClient::intercepted, &owner,
                         [this, name] { journal.push_back(name + ":intercepted"); });
        QObject::connect(client, &ExclusiveClient::otherClientAppeared, &owner,
                         [this, name] { journal.push_back(name + ":otherClientAppeared"); });
        QObject::connect(client, &ExclusiveClient::released, &owner,
                         [this, name] { journal.push_back(name + ":released"); });
    }

    ExclusiveClient& a() { return *clients[0]; }
    ExclusiveClient& b() { return *clients[1]; }
    ExclusiveClient& c() { return *clients[2]; }

    // The journal outlives everything that writes to it; the service dies before the
    // clients (children of owner), telling its holder released().
    std::vector<std::string> journal;
    std::vector<ExclusiveClient*> clients;
    QObject owner;
    ExclusiveService service;
};

// One holder at a time: taking a free service tells the waiting clients; taking it over tells the
// holder first; finalize ends only the caller's own use; breakAll ends it whoever holds it.
TEST_F(ExclusiveServiceTest, OneHolderAtATimeAndEveryoneToldInOrder)
{
    EXPECT_TRUE(a().acquire());
    EXPECT_TRUE(a().isInUse());
    EXPECT_FALSE(b().isInUse());
    EXPECT_EQ(service.holder(), &a());
    EXPECT_THAT(journal, ElementsAre("service:acquired A", "B:otherClientAppeared", "C:otherClientAppeared"));
    journal.clear();
    EXPECT_TRUE(a().acquire()); // again, by the holder: nothing to tell
    EXPECT_THAT(journal, IsEmpty());

    EXPECT_TRUE(b().acquire());
    EXPECT_FALSE(a().isInUse());
    EXPECT_TRUE(b().isInUse());
    EXPECT_THAT(journal, ElementsAre("A:intercepted", "A:released", "service:acquired B", "C:otherClientAppeared"));

    journal.clear();
    a().finalize();
    EXPECT_THAT(journal, IsEmpty());
    EXPECT_TRUE(b().isInUse());
    b().finalize();
    EXPECT_THAT(journal, ElementsAre("B:released", "service:freed"));
    EXPECT_TRUE(service.isFree());
    journal.clear();
    b().finalize();
    EXPECT_THAT(journal, IsEmpty());

    a().acquire();
    journal.clear();
    c().breakAll();
    EXPECT_THAT(journal, ElementsAre("A:released", "service:freed"));
    EXPECT_FALSE(a().isInUse());
    EXPECT_TRUE(service.isFree());
}

TEST_F(ExclusiveServiceTest, AnInterceptedClientMayTakeTheServiceBackAtOnce)
{
    a().acquire();
    QObject::connect(&a(), &ExclusiveClient::intercepted, &owner, [this] { a().acquire(); });
    journal.clear();

    EXPECT_FALSE(b().acquire());

    EXPECT_TRUE(a().isInUse());
    EXPECT_FALSE(b().isInUse());
    EXPECT_THAT(journal,
                ElementsAre("A:intercepted", "service:acquired A", "B:otherClientAppeared", "C:otherClientAppeared"));
}

TEST_F(ExclusiveServiceTest, MovingToAnotherServiceEndsTheHoldOnTheOldOne)
{
    ExclusiveService other;
    a().acquire();
    journal.clear();

    a().setService(&other);

    EXPECT_THAT(journal, ElementsAre("A:released", "service:freed"));
    EXPECT_EQ(a().service(), &other);
    EXPECT_FALSE(service.clients().contains(&a()));
    EXPECT_TRUE(other.clients().contains(&a()));
    EXPECT_FALSE(a().isInUse());
}

TEST_F(ExclusiveServiceTest, AClientThatDiesWhileHoldingGivesTheServiceBack)
{
    b().acquire();
    journal.clear();

    delete clients[1];
    clients.erase(clients.begin() + 1);

    EXPECT_THAT(journal, ElementsAre("B:released", "service:freed"));
    EXPECT_TRUE(service.isFree());
    EXPECT_EQ(service.clients().size(), 2);
}

// A client outlives its service: told released() once, then refused with an error like a client
// that never had one.
TEST(ExclusiveServiceLifetime, ClientsOutliveTheirServiceAndWithoutOneAreRefused)
{
    ExclusiveClient client;
    QSignalSpy released(&client, &ExclusiveClient::released);
    {
        ExclusiveService service;
        client.setService(&service);
        client.acquire();
    }
    EXPECT_EQ(released.count(), 1);
    EXPECT_EQ(client.service(), nullptr);
    EXPECT_FALSE(client.isInUse());
    client.finalize();
    client.breakAll();
    EXPECT_EQ(released.count(), 1);

    TestSupport::LogCapture log;
    EXPECT_FALSE(client.acquire());
    EXPECT_FALSE(client.isInUse());
    EXPECT_TRUE(log.containsError("ExclusiveClient::acquire"));
    EXPECT_EQ(released.count(), 1);
}

} // namespace
