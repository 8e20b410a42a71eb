#include "BaseFileOpenHandler.h"

#include "DeferredCall.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Error.h>
#include <Util/Interfaces/Core.h>

#include <algorithm>
#include <cstdint>
#include <vector>

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

// Open addressing over file addresses, at most half full: a probe usually reads one cache line
// whatever the size of the batch.
class BaseFileOpenHandler::FailureTable
{
    static_assert(alignof(Media::File) >= 8, "the table keeps a file's state in the low bits of its address");

public:
    // The failure state of a file: bit 0 its failed flag, bit 1 a code-20 error was reported.
    enum : std::uint8_t
    {
        FailedFlag = 1,
        Code20 = 2
    };
    // Marks a used slot whose state went back to 0.
    static constexpr std::uintptr_t Present = 4;

    std::uint8_t state(const Media::File* file) const
    {
        if (m_slots.empty())
            return 0;
        for (std::size_t i = index(file);; i = (i + 1) & m_mask) {
            const Slot slot = m_slots[i];
            if (slot.fileOf() == file)
                return std::uint8_t(slot.bits & 3);
            if (!slot.bits)
                return 0;
        }
    }

    // Starts loading the home slot of `file`, so that asking for it a little later does not
    // wait for memory: a large batch's table is larger than the caches.
    void prefetch(const Media::File* file) const
    {
        if (!m_slots.empty())
            __builtin_prefetch(&m_slots[index(file)]);
    }

    void set(const Media::File* file, std::uint8_t bits, bool on)
    {
        if (!on && state(file) == 0)
            return;
        Slot& slot = find(file);
        const std::uintptr_t state = on ? ((slot.bits & 7) | bits) : ((slot.bits & 7) & ~std::uintptr_t(bits));
        slot.bits = reinterpret_cast<std::uintptr_t>(file) | state | Present;
    }

private:
    // A file address with the state in its low bits (records are at least 8-byte aligned).
    struct Slot
    {
        std::uintptr_t bits = 0;
        const Media::File* fileOf() const { return reinterpret_cast<const Media::File*>(bits & ~std::uintptr_t(7)); }
    };

    std::size_t index(const Media::File* file) const
    {
        // Records are at least 8-byte aligned; mix the address so neighbours spread out.
        auto key = reinterpret_cast<std::uintptr_t>(file) >> 3;
        key ^= key >> 17;
        key *= 0x9E3779B97F4A7C15ull;
        return std::size_t(key >> 20) & m_mask;
    }

    // The slot of `file`, made when missing. Entries are never taken out (a file whose state
    // went back to 0 keeps its slot), so probing needs no tombstones.
    Slot& find(const Media::File* file)
    {
        if ((m_used + 1) * 2 > m_slots.size())
            grow();
        std::size_t i = index(file);
        while (m_slots[i].bits && m_slots[i].fileOf() != file)
            i = (i + 1) & m_mask;
        if (!m_slots[i].bits) {
            m_slots[i].bits = reinterpret_cast<std::uintptr_t>(file) | Present;
            ++m_used;
        }
        return m_slots[i];
    }

    void grow()
    {
        std::vector<Slot> old = std::move(m_slots);
        m_slots.assign(old.empty() ? 64 : old.size() * 2, Slot());
        m_mask = m_slots.size() - 1;
        m_used = 0;
        for (const Slot& slot : old) {
            if (slot.bits & 3)
                find(slot.fileOf()).bits = slot.bits;
        }
    }

    std::vector<Slot> m_slots;
    std::size_t m_mask = 0;
    std::size_t m_used = 0;
};

BaseFileOpenHandler::BaseFileOpenHandler()
    : m_failures(std::make_unique<FailureTable>()),
      m_deferredProcessing(std::make_unique<DeferredCall>(this, &BaseFileOpenHandler::makeProcessing))
{}

BaseFileOpenHandler::~BaseFileOpenHandler() = default;

bool BaseFileOpenHandler::isProcessing() { return processingInProgress; }

void BaseFileOpenHandler::watchFile(const Media::File* file)
{
    if (!file)
        return;
    m_files.push_back(file);
    followFailedFlag(file);
    subscribe(file);
}

void BaseFileOpenHandler::followFailedFlag(const Media::File* file)
{
    m_failures->set(file, FailureTable::FailedFlag, file->isFailed());
}

void BaseFileOpenHandler::fileChanged(const Media::File* file, const Media::File*) { followFailedFlag(file); }

void BaseFileOpenHandler::fileAdded(const Media::File* file) { watchFile(file); }

void BaseFileOpenHandler::fileOpened(const Media::File* file)
{
    followFailedFlag(file);
    m_deferredProcessing->trigger();
    ++m_finishedCount;
}

void BaseFileOpenHandler::fileFailed(const Media::File* file)
{
    followFailedFlag(file);
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
    m_failures->set(file, FailureTable::FailedFlag, false);
    unsubscribe(file);
}

void BaseFileOpenHandler::fileOpenFailed(const Media::FileOpenFailedNotification& notification)
{
    const Media::File* file = notification.file;
    for (const Media::OpenError& error : notification.errors) {
        m_openErrors.emplace(error.code, file);
        if (error.code == LicenseErrorCode)
            m_failures->set(file, FailureTable::Code20, true);
    }
}

BaseFileOpenHandler::ErrorType BaseFileOpenHandler::resolve(const Media::File* file) const
{
    const std::uint8_t state = m_failures->state(file);
    if (state & FailureTable::Code20)
        return Code20Failed;
    return state & FailureTable::FailedFlag ? OpenFailed : NoError;
}

BaseFileOpenHandler::AnalyzedProduct BaseFileOpenHandler::makeFilesAnalyze() const
{
    // Failed files are gathered first and the ordered sets built from sorted runs, which costs a
    // sort of the failures instead of a tree insertion per failure.
    std::vector<const Media::File*> failed;
    std::vector<const Media::File*> code20;
    // The table is read a few files ahead of the one resolved, so its misses overlap.
    auto ahead = m_files.begin();
    for (int i = 0; i < 16 && ahead != m_files.end(); ++i, ++ahead)
        m_failures->prefetch(*ahead);
    for (const Media::File* file : m_files) {
        if (ahead != m_files.end())
            m_failures->prefetch(*ahead++);
        const ErrorType type = resolve(file);
        if (type == NoError)
            continue;
        failed.push_back(file);
        if (type == Code20Failed)
            code20.push_back(file);
    }
    for (auto* list : {&failed, &code20}) {
        if (!std::is_sorted(list->begin(), list->end()))
            std::sort(list->begin(), list->end());
    }
    AnalyzedProduct product;
    product.failedFiles.insert(failed.begin(), failed.end());
    product.code20Files.insert(code20.begin(), code20.end());
    return product;
}

bool BaseFileOpenHandler::allowToKeepFiles() const { return false; }

void BaseFileOpenHandler::postProcessing(bool) {}

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
