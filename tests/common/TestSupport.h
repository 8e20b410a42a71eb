#pragma once

#include <glog/logging.h>

#include <QList>
#include <QObject>
#include <QString>
#include <QUrl>

#include <mutex>
#include <string>
#include <vector>

namespace TestSupport {

// A QString from UTF-8 text, for the library's strict no-cast-from-ASCII builds.
inline QString S(const char* text) { return QString::fromUtf8(text); }

// Collects the glog lines written while it lives, so a test can assert that a caller's
// mistake was reported (and that a correct call reported nothing).
class LogCapture : public google::LogSink
{
public:
    LogCapture();
    ~LogCapture() override;
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    void send(google::LogSeverity severity, const char* fullFilename, const char* baseFilename, int line,
              const struct ::tm* tmTime, const char* message, size_t messageLen) override;

    std::vector<std::string> errors() const;
    bool containsError(const std::string& fragment) const;
    void clear();

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_errors;
};

// Receives the URLs the desktop services would open (install it with
// QDesktopServices::setUrlHandler), instead of a file manager.
class UrlCatcher : public QObject
{
    Q_OBJECT
public:
    QList<QUrl> urls;
public Q_SLOTS:
    void open(const QUrl& url) { urls << url; }
};

} // namespace TestSupport
