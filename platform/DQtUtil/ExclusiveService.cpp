#include "ExclusiveService.h"

#include <glog/logging.h>

#include <algorithm>

ExclusiveService::ExclusiveService(QObject* parent) : QObject(parent) {}

ExclusiveService::~ExclusiveService()
{
    breakAll();
    // The clients outlive their service: they stay, registered with nothing.
    const auto clients = m_clients;
    for (ExclusiveClient* client : clients)
        client->m_service = nullptr;
}

ExclusiveClient* ExclusiveService::holder() const { return m_holder; }

bool ExclusiveService::isFree() const { return m_holder == nullptr; }

QList<ExclusiveClient*> ExclusiveService::clients() const
{
    QList<ExclusiveClient*> result;
    for (ExclusiveClient* client : m_clients)
        result.append(client);
    return result;
}

void ExclusiveService::breakAll()
{
    if (m_holder)
        release(m_holder);
}

void ExclusiveService::attach(ExclusiveClient* client)
{
    if (std::find(m_clients.begin(), m_clients.end(), client) == m_clients.end())
        m_clients.push_back(client);
}

void ExclusiveService::detach(ExclusiveClient* client)
{
    if (m_holder == client)
        release(client);
    m_clients.erase(std::remove(m_clients.begin(), m_clients.end(), client), m_clients.end());
}

bool ExclusiveService::take(ExclusiveClient* client)
{
    if (m_holder == client)
        return true;

    ExclusiveClient* const previous = m_holder;
    if (previous) {
        m_holder = nullptr;
        previous->m_inUse = false;
        emit previous->intercepted();
        // A slot of the intercepted client may have taken the service back or handed it on.
        if (!previous->m_inUse)
            emit previous->released();
        if (m_holder)
            return m_holder == client;
    }

    m_holder = client;
    client->m_inUse = true;
    emit acquired(client);

    // The intercepted holder has been told already; the others wait for their turn.
    const auto others = m_clients;
    for (ExclusiveClient* other : others) {
        // Someone told earlier may already have taken the service in a slot of its own.
        if (m_holder != client)
            break;
        if (other != client && other != previous
            && std::find(m_clients.begin(), m_clients.end(), other) != m_clients.end())
            emit other->otherClientAppeared();
    }
    return m_holder == client;
}

void ExclusiveService::release(ExclusiveClient* client)
{
    if (m_holder != client)
        return;
    m_holder = nullptr;
    client->m_inUse = false;
    emit client->released();
    if (!m_holder)
        emit freed();
}

ExclusiveClient::ExclusiveClient(ExclusiveService* service, QObject* parent) : QObject(parent) { setService(service); }

ExclusiveClient::~ExclusiveClient()
{
    // A client that dies while holding the service gives it back (and says so).
    if (m_service)
        m_service->detach(this);
}

ExclusiveService* ExclusiveClient::service() const { return m_service; }

void ExclusiveClient::setService(ExclusiveService* service)
{
    if (m_service == service)
        return;
    if (m_service)
        m_service->detach(this);
    m_service = service;
    if (m_service)
        m_service->attach(this);
}

bool ExclusiveClient::isInUse() const { return m_inUse && m_service; }

bool ExclusiveClient::acquire()
{
    if (!m_service) {
        LOG(ERROR) << "ExclusiveClient::acquire: the client has no service";
        return false;
    }
    return m_service->take(this);
}

void ExclusiveClient::breakAll()
{
    if (m_service)
        m_service->breakAll();
}

void ExclusiveClient::finalize()
{
    if (m_service)
        m_service->release(this);
}
