#include "BaseFileOpenHandler.h"

#include "DeferredCall.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Error.h>
#include <Util/Interfaces/Core.h>

#include <algorithm>

namespace {

// One flag for the whole process: a pass started while another runs (the failure dialog of
// one handler spins the event loop) is dropped.
bool processingInProgress = false;

struct ProcessingGuard
{
    ProcessingGuard() { processingInProgress = true; }
    ~ProcessingGuard() { processingInProgress = false; }
    ProcessingGuard(const ProcessingGuard&) = delete;
    ProcessingGuard& operator=(const ProcessingGuard&) = delete;
};

} // namespace

BaseFileOpenHandler::BaseFileOpenHandler()
    : m_deferredProcessing(std::make_unique<DeferredCall>(this, &BaseFileOpenHandler::makeProcessing))
{
}

BaseFileOpenHandler::~BaseFileOpenHandler() = default;

bool BaseFileOpenHandler::isProcessing()
{
    return processingInProgress;
}

void BaseFileOpenHandler::watchFile(const Media::File* file)
{
    if (!file)
        return;
    m_files.push_back(file);
    subscribe(file);
}

void BaseFileOpenHandler::fileAdded(const Media::File* file)
{
    watchFile(file);
}

void BaseFileOpenHandler::fileOpened(const Media::File*)
{
    m_deferredProcessing->trigger();
    ++m_finishedCount;
}

void BaseFileOpenHandler::fileFailed(const Media::File*)
{
    m_deferredProcessing->trigger();
    ++m_finishedCount;
}

void BaseFileOpenHandler::fileRemoved(const Media::File* file)
{
    if (!file)
        return;
    const auto it = std::find(m_files.begin(), m_files.end(), file);
    if (it != m_files.end())
        m_files.erase(it);
    if (file->isOpened() || file->isFailed())
        --m_finishedCount;
    unsubscribe(file);
}

void BaseFileOpenHandler::fileOpenFailed(const Media::FileOpenFailedNotification& notification)
{
    const Media::File* file = notification.file;
    for (const Media::OpenError& error : notification.errors) {
        m_openErrors.emplace(error.code, file);
        if (error.code == LicenseErrorCode)
            m_code20Files.insert(file);
    }
}

BaseFileOpenHandler::ErrorType BaseFileOpenHandler::resolve(const Media::File* file) const
{
    if (m_code20Files.count(file) != 0)
        return Code20Failed;
    return file && file->isFailed() ? OpenFailed : NoError;
}

BaseFileOpenHandler::AnalyzedProduct BaseFileOpenHandler::makeFilesAnalyze() const
{
    AnalyzedProduct product;
    for (const Media::File* file : m_files) {
        const ErrorType type = resolve(file);
        if (type == NoError)
            continue;
        product.failedFiles.insert(file);
        if (type == Code20Failed)
            product.code20Files.insert(file);
    }
    return product;
}

bool BaseFileOpenHandler::allowToKeepFiles() const
{
    return false;
}

void BaseFileOpenHandler::postProcessing(bool)
{
}

void BaseFileOpenHandler::clear()
{
    m_files.clear();
    m_finishedCount = 0;
}

void BaseFileOpenHandler::processing()
{
    if (m_finishedCount < static_cast<qint32>(m_files.size()))
        return;

    struct ClearOnExit
    {
        BaseFileOpenHandler* handler;
        ~ClearOnExit() { handler->clear(); }
    } clearOnExit{this};

    const AnalyzedProduct analysis = makeFilesAnalyze();
    if (analysis.failedFiles.empty())
        return;

    QString message;
    if (!analysis.code20Files.empty()) {
        const Dravik::Proc::ProcessingError error(LicenseErrorCode, std::string(), std::string(), std::string(),
                                                  std::string(), 0);
        message += Error::describeTranscodingError(error, Error::Analyze).toQString();
    }
    const bool remove = Dialog::showHasFailedFiles(allowToKeepFiles(), message);
    postProcessing(remove);
}

void BaseFileOpenHandler::makeProcessing()
{
    if (processingInProgress)
        return;
    ProcessingGuard guard;
    processing();
}
