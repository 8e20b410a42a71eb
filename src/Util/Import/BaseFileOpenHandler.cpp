#include "BaseFileOpenHandler.h"

#include "DeferredCall.h"

#include <Util/Dialog/Dialog.h>
#include <Util/Error.h>
#include <Util/Interfaces/Core.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>
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

// Open addressing over file addresses, at most half full, never shrinking: per file, its failure
// state and where it first stands in the batch. Notifications find a file here with one probe;
// the processing pass never does, it reads the states kept in batch order beside the files.
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
    static constexpr std::uint32_t NoPosition = UINT32_MAX;

    struct Entry
    {
        std::uintptr_t bits = 0;             // file address | state | Present
        std::uint32_t position = NoPosition; // index of the file's first entry in the batch
        bool repeated = false;               // the file was watched more than once
        const Media::File* file() const { return reinterpret_cast<const Media::File*>(bits & ~std::uintptr_t(7)); }
        std::uint8_t state() const { return std::uint8_t(bits & 3); }
    };

    // Kept out of line, so that resolve() stays small enough to be inlined into the pass.
    __attribute__((noinline)) std::uint8_t state(const Media::File* file) const
    {
        const Entry* entry = find(file);
        return entry ? entry->state() : 0;
    }

    const Entry* find(const Media::File* file) const
    {
        if (m_slots.empty())
            return nullptr;
        for (std::size_t i = index(file);; i = (i + 1) & m_mask) {
            const Entry& slot = m_slots[i];
            if (slot.file() == file && slot.bits)
                return &slot;
            if (!slot.bits)
                return nullptr;
        }
    }
    Entry* find(const Media::File* file) { return const_cast<Entry*>(std::as_const(*this).find(file)); }

    // The entry of `file`, made when missing. Entries are never taken out (a file whose state
    // went back to 0 keeps its slot), so probing needs no tombstones.
    Entry& entry(const Media::File* file)
    {
        if ((m_used + 1) * 2 > m_slots.size())
            grow();
        std::size_t i = index(file);
        while (m_slots[i].bits && m_slots[i].file() != file)
            i = (i + 1) & m_mask;
        if (!m_slots[i].bits) {
            m_slots[i].bits = reinterpret_cast<std::uintptr_t>(file) | Present;
            ++m_used;
        }
        return m_slots[i];
    }

    static void setState(Entry& entry, std::uint8_t bits, bool on)
    {
        const std::uintptr_t state = on ? (entry.bits & 3) | bits : (entry.bits & 3) & ~std::uintptr_t(bits);
        entry.bits = reinterpret_cast<std::uintptr_t>(entry.file()) | state | Present;
    }

    // Every batch position after `removed` moves one place forward.
    void positionRemoved(std::uint32_t removed)
    {
        for (Entry& slot : m_slots) {
            if (slot.bits && slot.position != NoPosition && slot.position > removed)
                --slot.position;
        }
    }

private:
    // Marks a used slot whose state went back to 0.
    static constexpr std::uintptr_t Present = 4;

    std::size_t index(const Media::File* file) const
    {
        // Records are at least 8-byte aligned; mix the address so neighbours spread out.
        auto key = reinterpret_cast<std::uintptr_t>(file) >> 3;
        key ^= key >> 17;
        key *= 0x9E3779B97F4A7C15ull;
        return std::size_t(key >> 20) & m_mask;
    }

    void grow()
    {
        std::vector<Entry> old = std::move(m_slots);
        m_slots.assign(old.empty() ? 64 : old.size() * 2, Entry());
        m_mask = m_slots.size() - 1;
        m_used = 0;
        for (const Entry& slot : old) {
            if (slot.bits)
                entry(slot.file()) = slot;
        }
    }

    std::vector<Entry> m_slots;
    std::size_t m_mask = 0;
    std::size_t m_used = 0;

public:
    // The lists a pass gathers, kept until the batch is forgotten: a pass then allocates nothing
    // but the nodes of its sets (a large allocation would first merge every small block freed
    // since, the previous analysis's nodes among them).
    std::vector<const Media::File*> failed, code20, scratch;
};

namespace {

// Sorts file addresses in a few counting passes over the bits in which they differ (11 at a
// time), so the cost grows with the number of files alone; short lists use std::sort.
void sortAddresses(std::vector<const Media::File*>& list, std::vector<const Media::File*>& scratch)
{
    if (list.size() < 512) {
        std::sort(list.begin(), list.end());
        return;
    }
    const auto [lowest, highest] = std::minmax_element(list.begin(), list.end());
    const std::uintptr_t base = reinterpret_cast<std::uintptr_t>(*lowest);
    const std::uintptr_t span = (reinterpret_cast<std::uintptr_t>(*highest) - base) >> 3;
    constexpr unsigned DigitBits = 11;
    std::array<std::uint32_t, std::size_t(1) << DigitBits> counts;
    scratch.resize(list.size());
    auto key = [base](const Media::File* file) { return (reinterpret_cast<std::uintptr_t>(file) - base) >> 3; };
    for (unsigned shift = 0; shift < 64 && (span >> shift) != 0; shift += DigitBits) {
        counts.fill(0);
        for (const Media::File* file : list)
            ++counts[(key(file) >> shift) & (counts.size() - 1)];
        std::uint32_t sum = 0;
        for (std::uint32_t& count : counts)
            sum += std::exchange(count, sum);
        for (const Media::File* file : list)
            scratch[counts[(key(file) >> shift) & (counts.size() - 1)]++] = file;
        list.swap(scratch);
    }
}

} // namespace

BaseFileOpenHandler::BaseFileOpenHandler()
    : m_failures(std::make_unique<FailureTable>()),
      m_deferredProcessing(std::make_unique<DeferredCall>(this, &BaseFileOpenHandler::makeProcessing))
{}

BaseFileOpenHandler::~BaseFileOpenHandler() { *m_alive = false; }

bool BaseFileOpenHandler::isSettled() const { return m_files.empty(); }

bool BaseFileOpenHandler::isProcessing() { return processingInProgress; }

void BaseFileOpenHandler::watchFile(const Media::File* file)
{
    if (!file)
        return;
    FailureTable::Entry& entry = m_failures->entry(file);
    FailureTable::setState(entry, FailureTable::FailedFlag, file->isFailed());
    if (inBatchAt(file, entry.position)) {
        entry.repeated = true;
    } else {
        entry.position = std::uint32_t(m_files.size());
        entry.repeated = false;
    }
    m_files.push_back(file);
    m_states.push_back(entry.state());
    subscribe(file);
}

bool BaseFileOpenHandler::inBatchAt(const Media::File* file, std::uint32_t position) const
{
    return position < m_files.size() && m_files[position] == file;
}

void BaseFileOpenHandler::setFailure(const Media::File* file, std::uint8_t bits, bool on)
{
    FailureTable::Entry* entry = on ? &m_failures->entry(file) : m_failures->find(file);
    if (!entry)
        return;
    FailureTable::setState(*entry, bits, on);
    if (!inBatchAt(file, entry->position))
        return;
    m_states[entry->position] = entry->state();
    if (!entry->repeated)
        return;
    for (std::size_t i = entry->position + 1; i < m_files.size(); ++i) {
        if (m_files[i] == file)
            m_states[i] = entry->state();
    }
}

void BaseFileOpenHandler::followFailedFlag(const Media::File* file)
{
    setFailure(file, FailureTable::FailedFlag, file->isFailed());
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
    if (FailureTable::Entry* entry = m_failures->find(file); entry && inBatchAt(file, entry->position)) {
        const std::uint32_t removed = entry->position;
        m_files.erase(m_files.begin() + removed);
        m_states.erase(m_states.begin() + removed);
        m_failures->positionRemoved(removed);
        // A file watched twice is still in the batch further on.
        const auto next = entry->repeated ? std::find(m_files.begin() + removed, m_files.end(), file) : m_files.end();
        entry->position = next == m_files.end() ? FailureTable::NoPosition : std::uint32_t(next - m_files.begin());
    }
    if (file->isOpened() || file->isFailed())
        --m_finishedCount;
    setFailure(file, FailureTable::FailedFlag, false);
    unsubscribe(file);
}

void BaseFileOpenHandler::fileOpenFailed(const Media::FileOpenFailedNotification& notification)
{
    const Media::File* file = notification.file;
    for (const Media::OpenError& error : notification.errors) {
        m_openErrors.emplace(error.code, file);
        if (error.code == LicenseErrorCode)
            setFailure(file, FailureTable::Code20, true);
    }
}

BaseFileOpenHandler::ErrorType BaseFileOpenHandler::resolve(const Media::File* file) const
{
    // During a pass the state of the file at hand was read in batch order; any other file is
    // looked up.
    const std::uint8_t state = file && file == m_passFile ? m_passState : m_failures->state(file);
    if (state & FailureTable::Code20)
        return Code20Failed;
    return state & FailureTable::FailedFlag ? OpenFailed : NoError;
}

BaseFileOpenHandler::AnalyzedProduct BaseFileOpenHandler::makeFilesAnalyze() const
{
    // The batch and its states are walked side by side, front to back; the failed files are
    // gathered in that order and the ordered sets built from sorted runs, which costs a linear
    // sort of the failures instead of a tree insertion per failure. The kept lists are taken out
    // for the pass (a resolve() that analyses again gets its own).
    std::vector<const Media::File*> failed = std::move(m_failures->failed);
    std::vector<const Media::File*> code20 = std::move(m_failures->code20);
    std::vector<const Media::File*> scratch = std::move(m_failures->scratch);
    failed.clear();
    code20.clear();
    auto state = m_states.begin();
    for (const Media::File* file : m_files) {
        m_passFile = file;
        m_passState = *state++;
        const ErrorType type = resolve(file);
        if (type == NoError)
            continue;
        failed.push_back(file);
        if (type == Code20Failed)
            code20.push_back(file);
    }
    m_passFile = nullptr;
    sortAddresses(failed, scratch);
    sortAddresses(code20, scratch);
    AnalyzedProduct product;
    product.failedFiles.insert(failed.begin(), failed.end());
    product.code20Files.insert(code20.begin(), code20.end());
    m_failures->failed = std::move(failed);
    m_failures->code20 = std::move(code20);
    m_failures->scratch = std::move(scratch);
    return product;
}

bool BaseFileOpenHandler::allowToKeepFiles() const { return false; }

void BaseFileOpenHandler::postProcessing(bool) {}

void BaseFileOpenHandler::clear()
{
    m_files.clear();
    m_states.clear();
    for (auto* list : {&m_failures->failed, &m_failures->code20, &m_failures->scratch})
        std::vector<const Media::File*>().swap(*list);
    m_finishedCount = 0;
}

void BaseFileOpenHandler::processing()
{
    if (m_finishedCount < static_cast<qint32>(m_files.size()))
        return;

    // The question runs an event loop, in which the owner may destroy the handler (an import
    // cancelled meanwhile): then nothing is left to answer to or to clear.
    struct ClearOnExit
    {
        BaseFileOpenHandler* handler;
        std::shared_ptr<const bool> alive;
        ~ClearOnExit()
        {
            if (*alive)
                handler->clear();
        }
    } clearOnExit{this, m_alive};

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
    if (*clearOnExit.alive)
        postProcessing(remove);
}

void BaseFileOpenHandler::makeProcessing()
{
    if (processingInProgress)
        return;
    const std::shared_ptr<const bool> alive = m_alive;
    {
        ProcessingGuard guard;
        processing();
    }
    if (*alive && isSettled() && onSettled)
        onSettled();
}
