#include "TestSupport.h"

namespace TestSupport {

LogCapture::LogCapture() { google::AddLogSink(this); }

LogCapture::~LogCapture() { google::RemoveLogSink(this); }

void LogCapture::send(google::LogSeverity severity, const char*, const char*, int, const struct ::tm*,
                      const char* message, size_t messageLen)
{
    if (severity < google::GLOG_ERROR)
        return;
    std::lock_guard<std::mutex> lock(m_mutex);
    m_errors.emplace_back(message, messageLen);
}

std::vector<std::string> LogCapture::errors() const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_errors;
}

bool LogCapture::containsError(const std::string& fragment) const
{
    std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto& e : m_errors)
        if (e.find(fragment) != std::string::npos)
            return true;
    return false;
}

void LogCapture::clear()
{
    std::lock_guard<std::mutex> lock(m_mutex);
    m_errors.clear();
}

} // namespace TestSupport
