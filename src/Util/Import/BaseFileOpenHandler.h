#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Import/Listeners.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Interfaces/PubSub.h>

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <vector>

class DeferredCall;

// Waits for a batch of media files to finish opening, then asks the user once what is to
// become of the files that failed, and hands the answer to the subclass.
//
// The model reports each watched file as opened or failed; failures may come with a
// Media::FileOpenFailedNotification naming processing-error codes. When every watched file
// has finished, one processing pass runs in a later turn of the event loop: the failed files
// are sorted by cause, Dialog::showHasFailedFiles is asked (with the text for error code 20
// when a file failed for that reason), postProcessing() receives the answer, and the batch is
// forgotten. Subclasses decide which files are watched and what the answer does.
class EDITORUTIL_EXPORT BaseFileOpenHandler : public Media::View<Media::File>, public ImportListeners::FileOpenFailed
{
public:
    enum ErrorType : qint32
    {
        NoError = 0,
        OpenFailed = 3,   // the model marked the file failed
        Code20Failed = 4, // a failure notification for the file carried error code 20
    };

    struct AnalyzedProduct
    {
        std::set<const Media::File*> failedFiles;
        std::set<const Media::File*> code20Files; // always a subset of failedFiles
    };

    BaseFileOpenHandler();
    ~BaseFileOpenHandler() override;
    BaseFileOpenHandler(const BaseFileOpenHandler&) = delete;
    BaseFileOpenHandler& operator=(const BaseFileOpenHandler&) = delete;

    // The error code whose failures are told apart from the others.
    static constexpr int LicenseErrorCode = 20;

    // Whether a processing pass of any handler is running in this process.
    static bool isProcessing();

    // Whether no batch waits for its files or its question: nothing is watched, or the last
    // batch was settled (the failures answered and the answer applied).
    bool isSettled() const;
    // Called after a pass that settled the batch. The handler may be destroyed while its
    // question is open (its event loop runs everything else meanwhile): the answer then goes
    // nowhere and nothing is called.
    std::function<void()> onSettled;

protected:
    void fileAdded(const Media::File* file) override;
    void fileRemoved(const Media::File* file) override;
    void fileOpened(const Media::File* file) override;
    void fileFailed(const Media::File* file) override;
    void fileChanged(const Media::File* file, const Media::File* previous) override;

    virtual ErrorType resolve(const Media::File* file) const;
    virtual void postProcessing(bool remove);
    virtual bool allowToKeepFiles() const;
    virtual void processing();
    virtual void clear();

    // Records every error code a failure notification of a watched file carries.
    void fileOpenFailed(const Media::FileOpenFailedNotification& notification) override;

    AnalyzedProduct makeFilesAnalyze() const;

    // Appends a file to the batch and starts listening to its failure notifications.
    void watchFile(const Media::File* file);

    // Read access for subclasses.
    const std::deque<const Media::File*>& files() const { return m_files; }
    int finishedCount() const { return m_finishedCount; }
    const std::multimap<qint32, const Media::File*>& openErrors() const { return m_openErrors; }

private:
    void makeProcessing();

    qint32 m_finishedCount = 0;
    std::deque<const Media::File*> m_files;
    std::multimap<qint32, const Media::File*> m_openErrors;
    // Kept beside the batch so that resolve() neither walks m_openErrors nor reads every file
    // record: what resolve() answers for the files stored in m_openErrors under code 20 and for
    // the watched files whose "failed" flag is set (followed through the files' change
    // notifications). The table answers per file and knows where each stands in the batch;
    // m_states holds the same state per batch entry, so a pass reads it in order.
    class FailureTable;
    std::unique_ptr<FailureTable> m_failures;
    std::vector<std::uint8_t> m_states;
    // The file a pass is resolving and its state, which resolve() answers without a look-up.
    mutable const Media::File* m_passFile = nullptr;
    mutable std::uint8_t m_passState = 0;
    void followFailedFlag(const Media::File* file);
    void setFailure(const Media::File* file, std::uint8_t bits, bool on);
    bool inBatchAt(const Media::File* file, std::uint32_t position) const;
    std::unique_ptr<DeferredCall> m_deferredProcessing;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true); // false once destroyed
};
