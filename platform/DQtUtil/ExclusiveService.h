#pragma once

#include <QObject>
#include <QPointer>

#include <vector>

class ExclusiveClient;

// A resource that one client at a time may use exclusively (the player, the scene).
// Clients register by being given the service; one of them holds it at a time. A client
// that takes the service over intercepts the holder, and every other registered client,
// waiting for its turn, is told that another client appeared.
class ExclusiveService : public QObject
{
    Q_OBJECT

public:
    explicit ExclusiveService(QObject* parent = nullptr);
    ~ExclusiveService() override;

    // The client that holds the service now, or null when it is free.
    ExclusiveClient* holder() const;
    bool isFree() const;
    // The clients that were given this service, in the order they were given it.
    QList<ExclusiveClient*> clients() const;

    // Ends the exclusive use, whichever client holds it; the holder is told released().
    void breakAll();

signals:
    // The service was taken by `client` (after the previous holder was told intercepted()).
    void acquired(ExclusiveClient* client);
    // Nobody holds the service any more.
    void freed();

private:
    friend class ExclusiveClient;

    void attach(ExclusiveClient* client);
    void detach(ExclusiveClient* client);
    bool take(ExclusiveClient* client);
    void release(ExclusiveClient* client);

    std::vector<ExclusiveClient*> m_clients;
    ExclusiveClient* m_holder = nullptr;
};

// One user of an ExclusiveService. A client is registered with at most one service; it
// holds the service from acquire() until finalize(), breakAll() or an interception.
class ExclusiveClient : public QObject
{
    Q_OBJECT

public:
    explicit ExclusiveClient(ExclusiveService* service = nullptr, QObject* parent = nullptr);
    ~ExclusiveClient() override;

    ExclusiveService* service() const;
    // Registers with `service` instead of the current one; a hold on the old service ends
    // first (released()).
    void setService(ExclusiveService* service);

    // True while this client holds its service.
    bool isInUse() const;

    // Takes the service, intercepting its holder. False (and an error line) without a
    // service; true without any signal when this client already holds it.
    bool acquire();

    // Ends the exclusive use of the service, whoever holds it: the holder is told released().
    void breakAll();

public slots:
    // Ends this client's own use of the service, if it holds it.
    void finalize();

signals:
    // Another client took the service from this one; released() follows.
    void intercepted();
    // This client waits (registered, not holding) and another client took the service.
    void otherClientAppeared();
    // This client's use of the service ended, for whatever reason.
    void released();

private:
    friend class ExclusiveService;

    QPointer<ExclusiveService> m_service;
    bool m_inUse = false;
};
