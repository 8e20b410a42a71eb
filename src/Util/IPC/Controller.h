#pragma once

#include <Util/EditorUtilExport.h>

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <optional>

class CommandProvider;

namespace IPC {

// What one start of the editor asks of the running one: its files (absolute and cleaned, in
// the order they were given), the add-media category to open for them, and its "mode" option.
struct Request
{
    QStringList files;
    QString category;
    QString mode;
};

// One frame of a request as it travels, without its length prefix: the request's id, whether
// it is the request's last frame, and its part of the request (mode, category and a run of
// its files; a primary appends the files of a request's frames in order).
struct Frame
{
    quint64 id = 0;
    bool final = true;
    Request request;
};

// Hands requests from a later start of the editor to the first one of the same user.
//
// The first instance (the primary) holds a lock file and listens on a per-user local socket;
// both live in the user's runtime folder ($XDG_RUNTIME_DIR, or its app/$FLATPAK_ID folder in a
// sandbox; the temporary folder when that path would be too long for a socket). Their name is
// a short hash of the application name, the user id and the key, so it is the same in every
// session of the user and never reaches another user's instance.
//
// A later instance (a secondary) sends its request as length-framed, versioned QDataStream
// messages and counts as handled only once the primary acknowledged it. A crashed primary
// leaves a lock whose holder is gone: it is removed and the next start becomes the primary.
// When no primary answers in time (hung, or a foreign program on the socket name) the
// instance takes over as primary without the lock, so a start never fails and no request is
// lost.
//
// The primary feeds every received request to the CommandProvider: handleFile per file,
// then showAddMediaCategory when the request has files and a category, then showMainWindow;
// the provider records them until start-up has completed. Frames that are malformed,
// oversized, of another protocol version or from another user are refused with a log line;
// the server keeps serving. GUI thread only.
class EDITORUTIL_EXPORT Controller : public QObject
{
    Q_OBJECT
public:
    enum class Role
    {
        Undecided,
        Primary,
        Secondary
    };

    // Decides when and whether a received request reaches the command provider: call
    // `deliver` once to let it through, later if it must wait (a modal dialog is open), or
    // never to drop it. The sender is acknowledged as soon as the hook returns: from then on
    // the request is this instance's to keep. The application sets it to pass requests through
    // its action gateway; without one every request is delivered at once.
    using Gateway = std::function<void(const Request& request, const std::function<void()>& deliver)>;

    // `provider` may be null for an instance that only hands over. `key` separates programs
    // (or test runs) that share an application name.
    explicit Controller(CommandProvider* provider, const QString& key = QString(), QObject* parent = nullptr);
    ~Controller() override;

    // Becomes the primary when the lock is free (or held by a dead process); otherwise sends
    // `request` to the primary. Returns Secondary only once the primary acknowledged every
    // frame within `timeoutMs`; Primary otherwise (see tookOver()). The request is not
    // delivered locally: the caller (Launcher) does that for a primary.
    Role start(const Request& request, int timeoutMs = 2000);
    Role role() const;
    // True when this instance became the primary without the lock because the lock's holder
    // never answered.
    bool tookOver() const;

    // Primary: delivers a request as if another instance had sent it (through the gateway).
    void deliver(const Request& request);
    void setGateway(Gateway gateway);

    // Primary: stops acknowledging, closes the socket and releases the lock, so a start from
    // now on becomes the primary itself. Runs when the application is about to quit and in
    // the destructor.
    void stop();

    // Full path of the socket and of the lock file.
    QString serverName() const;
    QString lockFileName() const;
    // The socket path an instance of `application` with `key` uses for this user.
    static QString serverNameFor(const QString& application, const QString& key);

    // The payload of a request frame, and back: what a secondary sends and what the primary
    // reads. A payload that is not a whole request frame of this program and protocol version
    // gives nothing and, in `problem`, why.
    static QByteArray encodeFrame(const Frame& frame);
    static std::optional<Frame> decodeFrame(const QByteArray& payload, QString* problem = nullptr);

    // Frame limits; larger requests are sent in several frames.
    static constexpr int MaxFrameBytes = 8 * 1024 * 1024;
    static constexpr int MaxFilesPerFrame = 10000;
    // A request whose frames add up to more files is refused: the sender handles it itself.
    static constexpr int MaxFilesPerRequest = 100000;
    static constexpr quint16 ProtocolVersion = 1;

Q_SIGNALS:
    // A request was received and acknowledged (before the gateway saw it).
    void requestReceived(const IPC::Request& request);
    // A frame or a connection was refused; `reason` is what was logged.
    void requestRefused(const QString& reason);

protected:
    virtual void deliverInternal(const Request& request);

private:
    class Private;
    std::unique_ptr<Private> d;
};

} // namespace IPC

Q_DECLARE_METATYPE(IPC::Request)
