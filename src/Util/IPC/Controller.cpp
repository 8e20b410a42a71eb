#include "Controller.h"

#include <Util/CommandProvider.h>

#include <glog/logging.h>

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QDataStream>
#include <QDateTime>
#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QPointer>
#include <QThread>
#include <QTimer>

#ifdef Q_OS_UNIX
#include <sys/socket.h>
#include <sys/types.h>
#include <unistd.h>
#endif

namespace IPC {

namespace {

const quint32 kMagic = 0x45554950; // "EUIP"
const int kHeaderBytes = 4;
// sun_path holds 108 bytes on Linux, 104 elsewhere; a user-only socket is first bound as
// "<path>-XXXXXX/s" and then renamed into place.
const int kSocketPathLimit = 94;
const int kFilesPerChunk = 1000;
const int kIdleMs = 10000;
const int kRetryMs = 10;
// A lock file older than this whose holder keeps no lock on it is removed, even when its
// process id names a running process (process ids of sandboxes are not ours to check).
const int kStaleLockAgeMs = 1000;

enum Status : quint8
{
    Accepted = 0,
    Refused = 1
};

QString userId()
{
#ifdef Q_OS_UNIX
    return QString::number(::getuid());
#else
    return qEnvironmentVariable("USERNAME");
#endif
}

QString runtimeFolder()
{
    QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    const QString sandbox = qEnvironmentVariable("FLATPAK_ID");
    if (!folder.isEmpty() && !sandbox.isEmpty())
        folder += QLatin1String("/app/") + sandbox;
    if (folder.isEmpty() || !QFileInfo(folder).isDir())
        folder = QDir::tempPath();
    return folder;
}

QByteArray frame(const QByteArray& payload)
{
    QByteArray bytes;
    QDataStream out(&bytes, QIODevice::WriteOnly);
    out << quint32(payload.size());
    bytes += payload;
    return bytes;
}

QDataStream& versioned(QDataStream& stream)
{
    stream.setVersion(QDataStream::Qt_5_15);
    return stream;
}

QByteArray replyPayload(quint64 id, Status status)
{
    QByteArray payload;
    QDataStream out(&payload, QIODevice::WriteOnly);
    versioned(out) << kMagic << Controller::ProtocolVersion << id << quint8(status)
                   << qint64(QCoreApplication::applicationPid());
    return payload;
}

// Reads one whole frame from `socket` into `payload`; false while it is incomplete. A length
// beyond the limit leaves `oversized` set.
bool takeFrame(QLocalSocket* socket, QByteArray* payload, bool* oversized)
{
    if (socket->bytesAvailable() < kHeaderBytes)
        return false;
    QByteArray header = socket->peek(kHeaderBytes);
    QDataStream in(header);
    quint32 length = 0;
    in >> length;
    if (length > quint32(Controller::MaxFrameBytes)) {
        *oversized = true;
        return false;
    }
    if (socket->bytesAvailable() < kHeaderBytes + qint64(length))
        return false;
    socket->read(kHeaderBytes);
    *payload = socket->read(length);
    return true;
}

bool peerIsThisUser(QLocalSocket* socket)
{
#if defined(Q_OS_LINUX)
    struct ucred credentials = {};
    socklen_t size = sizeof(credentials);
    if (::getsockopt(int(socket->socketDescriptor()), SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0)
        return false;
    return credentials.uid == ::getuid();
#else
    Q_UNUSED(socket)
    return true;
#endif
}

} // namespace

class Controller::Private
{
public:
    enum class Sent
    {
        Acknowledged,
        Unreachable, // nobody listens, or the connection closed before the answer
        Silent,      // a frame went out and no answer came in time
        Refused
    };

    Private(Controller* q, CommandProvider* provider, const QString& key)
        : q(q),
          provider(provider),
          socketPath(serverNameFor(QCoreApplication::applicationName(), key)),
          lockPath(socketPath.left(socketPath.size() - 5) + QLatin1String(".lock")),
          lock(lockPath)
    {
        lock.setStaleLockTime(0);
    }

    bool listen();
    Sent send(const Request& request, const QDeadlineTimer& deadline);
    Sent sendFrame(QLocalSocket& socket, const QByteArray& payload, quint64 id, const QDeadlineTimer& deadline);
    void accept();
    void serve(QLocalSocket* socket);
    void refuse(QLocalSocket* socket, const QString& reason);
    void removeStaleLock();

    Controller* q;
    CommandProvider* provider;
    QString socketPath;
    QString lockPath;
    QLockFile lock;
    std::unique_ptr<QLocalServer> server;
    Gateway gateway;
    Role role = Role::Undecided;
    bool tookOver = false;
    bool stopping = false;
    quint64 nextId = 1;
    // Frames of one request that arrived ahead of its final frame, per connection.
    QHash<QLocalSocket*, Request> partial;
};

QString Controller::serverNameFor(const QString& application, const QString& key)
{
    const QByteArray identity = (application + QLatin1Char('\n') + userId() + QLatin1Char('\n') + key).toUtf8();
    const QString name =
        QLatin1String("eu-")
        + QString::fromLatin1(QCryptographicHash::hash(identity, QCryptographicHash::Sha256).toHex().left(16))
        + QLatin1String(".sock");
    QString folder = runtimeFolder();
    if (folder.size() + 1 + name.size() > kSocketPathLimit)
        folder = QDir::tempPath();
    if (folder.size() + 1 + name.size() > kSocketPathLimit)
        folder = QStringLiteral("/tmp");
    return folder + QLatin1Char('/') + name;
}

bool Controller::Private::listen()
{
    server = std::make_unique<QLocalServer>();
    server->setSocketOptions(QLocalServer::UserAccessOption);
    // Whatever is left at the path (the socket of a crashed primary, a foreign program's
    // socket or file) is in the way of this user's primary.
    QLocalServer::removeServer(socketPath);
    if (!server->listen(socketPath)) {
        LOG(ERROR) << "IPC::Controller::start: cannot listen on " << socketPath.toStdString() << ": "
                   << server->errorString().toStdString() << "; later starts will not reach this instance";
        return false;
    }
    QObject::connect(server.get(), &QLocalServer::newConnection, q, [this] { accept(); });
    return true;
}

void Controller::Private::removeStaleLock()
{
    // Only a lock file whose holder keeps no native lock on it can be removed here, so a live
    // primary's lock survives; the age keeps away from a lock that is being written.
    const QFileInfo info(lockPath);
    if (info.exists() && info.lastModified().msecsTo(QDateTime::currentDateTime()) > kStaleLockAgeMs
        && lock.removeStaleLockFile())
        LOG(ERROR) << "IPC::Controller::start: removed the lock " << lockPath.toStdString()
                   << " left by an instance that is gone";
}

Controller::Private::Sent Controller::Private::sendFrame(QLocalSocket& socket, const QByteArray& payload, quint64 id,
                                                         const QDeadlineTimer& deadline)
{
    socket.write(frame(payload));
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(int(qMax<qint64>(1, deadline.remainingTime()))))
            return socket.state() == QLocalSocket::ConnectedState ? Sent::Silent : Sent::Unreachable;
    }
    for (;;) {
        QByteArray reply;
        bool oversized = false;
        if (takeFrame(&socket, &reply, &oversized)) {
            QDataStream in(reply);
            quint32 magic = 0;
            quint16 version = 0;
            quint64 replyId = 0;
            quint8 status = Refused;
            versioned(in) >> magic >> version >> replyId >> status;
            if (in.status() != QDataStream::Ok || magic != kMagic || replyId != id)
                return Sent::Silent;
            return status == Accepted ? Sent::Acknowledged : Sent::Refused;
        }
        if (oversized)
            return Sent::Silent;
        if (socket.state() != QLocalSocket::ConnectedState)
            return Sent::Unreachable;
        if (deadline.hasExpired())
            return Sent::Silent;
        if (!socket.waitForReadyRead(int(qMax<qint64>(1, deadline.remainingTime())))
            && socket.state() != QLocalSocket::ConnectedState && socket.bytesAvailable() == 0)
            return Sent::Unreachable;
    }
}

Controller::Private::Sent Controller::Private::send(const Request& request, const QDeadlineTimer& deadline)
{
    QLocalSocket socket;
    socket.connectToServer(socketPath);
    if (!socket.waitForConnected(int(qMax<qint64>(1, deadline.remainingTime()))))
        return Sent::Unreachable;
    const quint64 id = (quint64(QCoreApplication::applicationPid()) << 32) | nextId++;
    int offset = 0;
    do {
        const QStringList chunk = request.files.mid(offset, kFilesPerChunk);
        offset += chunk.size();
        const bool final = offset >= request.files.size();
        const Sent sent =
            sendFrame(socket, encodeFrame({id, final, {chunk, request.category, request.mode}}), id, deadline);
        // Earlier frames were only taken in: the primary delivers a request on its final
        // frame, so a request that fails half-way is resent or taken over as a whole.
        if (sent != Sent::Acknowledged)
            return sent;
    } while (offset < request.files.size());
    socket.disconnectFromServer();
    return Sent::Acknowledged;
}

Controller::Controller(CommandProvider* provider, const QString& key, QObject* parent)
    : QObject(parent), d(std::make_unique<Private>(this, provider, key))
{
    qRegisterMetaType<IPC::Request>();
    if (QCoreApplication::instance())
        connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this, &Controller::stop);
}

Controller::~Controller() { stop(); }

Controller::Role Controller::start(const Request& request, int timeoutMs)
{
    if (d->role != Role::Undecided) {
        LOG(ERROR) << "IPC::Controller::start: called twice; the role stays as it was";
        return d->role;
    }
    const QDeadlineTimer deadline(timeoutMs);
    const char* why = "";
    for (;;) {
        if (d->lock.tryLock(0)) {
            d->role = Role::Primary;
            d->listen();
            return d->role;
        }
        const Private::Sent sent = d->send(request, deadline);
        if (sent == Private::Sent::Acknowledged) {
            d->role = Role::Secondary;
            return d->role;
        }
        if (sent == Private::Sent::Refused || sent == Private::Sent::Silent || deadline.hasExpired()) {
            why = sent == Private::Sent::Refused  ? "the primary refused the request"
                  : sent == Private::Sent::Silent ? "the primary did not answer"
                                                  : "no primary could be reached";
            break;
        }
        d->removeStaleLock();
        QThread::msleep(kRetryMs);
    }
    LOG(ERROR) << "IPC::Controller::start: " << why << " on " << d->socketPath.toStdString() << " within " << timeoutMs
               << " ms; this instance takes over as the primary";
    d->role = Role::Primary;
    d->tookOver = true;
    d->listen();
    return d->role;
}

Controller::Role Controller::role() const { return d->role; }

bool Controller::tookOver() const { return d->tookOver; }

void Controller::setGateway(Gateway gateway) { d->gateway = std::move(gateway); }

void Controller::deliver(const Request& request)
{
    if (d->role != Role::Primary) {
        LOG(ERROR) << "IPC::Controller::deliver: this instance is not the primary; request dropped";
        return;
    }
    if (!d->gateway) {
        deliverInternal(request);
        return;
    }
    QPointer<Controller> self(this);
    auto delivered = std::make_shared<bool>(false);
    d->gateway(request, [self, request, delivered] {
        if (!self || *delivered)
            return;
        *delivered = true;
        self->deliverInternal(request);
    });
}

void Controller::deliverInternal(const Request& request)
{
    if (!d->provider)
        return;
    for (const QString& file : request.files)
        d->provider->handleFile(file);
    if (!request.files.isEmpty() && !request.category.isEmpty())
        d->provider->showAddMediaCategory(request.category);
    d->provider->showMainWindow();
}

void Controller::stop()
{
    if (d->stopping || d->role != Role::Primary)
        return;
    d->stopping = true;
    if (d->server) {
        // Connections waiting for an answer get none: their senders start over.
        const QList<QLocalSocket*> sockets = d->server->findChildren<QLocalSocket*>();
        for (QLocalSocket* socket : sockets) {
            QObject::disconnect(socket, nullptr, this, nullptr);
            socket->abort();
        }
        d->partial.clear();
        d->server->close();
        d->server.reset();
    }
    if (d->lock.isLocked())
        d->lock.unlock();
}

QString Controller::serverName() const { return d->socketPath; }

QString Controller::lockFileName() const { return d->lockPath; }

void Controller::Private::accept()
{
    while (QLocalSocket* socket = server->nextPendingConnection()) {
        if (stopping) {
            socket->abort();
            socket->deleteLater();
            continue;
        }
        if (!peerIsThisUser(socket)) {
            refuse(socket, QStringLiteral("a connection from another user"));
            continue;
        }
        auto idle = new QTimer(socket);
        idle->setSingleShot(true);
        idle->start(kIdleMs);
        QObject::connect(idle, &QTimer::timeout, socket, [this, socket] {
            refuse(socket, QStringLiteral("a connection that sent no whole frame for %1 ms").arg(kIdleMs));
        });
        QObject::connect(socket, &QLocalSocket::readyRead, q, [this, socket, idle] {
            idle->start(kIdleMs);
            serve(socket);
        });
        QObject::connect(socket, &QLocalSocket::disconnected, q, [this, socket] {
            partial.remove(socket);
            socket->deleteLater();
        });
        serve(socket);
    }
}

void Controller::Private::refuse(QLocalSocket* socket, const QString& reason)
{
    LOG(ERROR) << "IPC::Controller: refused " << reason.toStdString() << "; the server keeps serving";
    partial.remove(socket);
    if (socket->state() == QLocalSocket::ConnectedState) {
        socket->write(frame(replyPayload(0, Refused)));
        socket->flush();
    }
    socket->disconnectFromServer();
    socket->deleteLater();
    Q_EMIT q->requestRefused(reason);
}

QByteArray Controller::encodeFrame(const Frame& frame)
{
    QByteArray payload;
    QDataStream out(&payload, QIODevice::WriteOnly);
    versioned(out) << kMagic << ProtocolVersion << frame.id << quint8(frame.final ? 1 : 0) << frame.request.mode
                   << frame.request.category << quint32(frame.request.files.size());
    for (const QString& file : frame.request.files)
        out << file;
    return payload;
}

std::optional<Frame> Controller::decodeFrame(const QByteArray& payload, QString* problem)
{
    auto refused = [problem](const QString& why) {
        if (problem)
            *problem = why;
        return std::nullopt;
    };
    QDataStream in(payload);
    quint32 magic = 0;
    quint16 version = 0;
    quint8 finalFlag = 0;
    quint32 count = 0;
    versioned(in) >> magic >> version;
    if (in.status() != QDataStream::Ok || magic != kMagic)
        return refused(QStringLiteral("a malformed frame (not a request of this program)"));
    if (version != ProtocolVersion)
        return refused(QStringLiteral("a frame of protocol version %1 (this instance speaks %2)")
                           .arg(version)
                           .arg(ProtocolVersion));
    Frame frame;
    in >> frame.id >> finalFlag >> frame.request.mode >> frame.request.category >> count;
    // Every path takes at least its four length bytes.
    if (in.status() != QDataStream::Ok || count > quint32(MaxFilesPerFrame) || qint64(count) * 4 > payload.size())
        return refused(QStringLiteral("a malformed frame (bad header or %1 files)").arg(count));
    frame.request.files.reserve(int(count));
    for (quint32 i = 0; i < count; ++i) {
        QString file;
        in >> file;
        frame.request.files << file;
    }
    if (in.status() != QDataStream::Ok || !in.atEnd())
        return refused(QStringLiteral("a malformed frame (truncated or trailing bytes)"));
    frame.final = finalFlag != 0;
    return frame;
}

void Controller::Private::serve(QLocalSocket* socket)
{
    for (;;) {
        QByteArray payload;
        bool oversized = false;
        if (!takeFrame(socket, &payload, &oversized)) {
            if (oversized)
                refuse(socket, QStringLiteral("an oversized frame (limit %1 bytes)").arg(MaxFrameBytes));
            return;
        }
        if (stopping) {
            socket->abort();
            return;
        }
        QString problem;
        const std::optional<Frame> received = decodeFrame(payload, &problem);
        if (!received) {
            refuse(socket, problem);
            return;
        }
        Request request = partial.value(socket);
        request.files += received->request.files;
        request.mode = received->request.mode;
        request.category = received->request.category;
        if (request.files.size() > MaxFilesPerRequest) {
            refuse(socket, QStringLiteral("a request of more than %1 files").arg(MaxFilesPerRequest));
            return;
        }
        const bool final = received->final;
        if (final)
            partial.remove(socket);
        else
            partial.insert(socket, request);
        // The answer goes out only once the request is in this instance's hands; an earlier
        // frame of the same request is kept until its final one arrives.
        if (final) {
            Q_EMIT q->requestReceived(request);
            q->deliver(request);
        }
        socket->write(frame(replyPayload(received->id, Accepted)));
        socket->flush();
    }
}

} // namespace IPC
