#pragma once

#include <boost/intrusive_ptr.hpp>

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>

namespace Dravik {
namespace Core {

// Reports the progress of a long operation and carries the user's request to cancel it.
// Shared through boost::intrusive_ptr; the count lives in the object, so a raw pointer can
// be turned back into a counted one at any time. Safe to use from several threads.
class IProgressController
{
public:
    virtual ~IProgressController() = default;

    // The amount of work, in the operation's own unit (files, bytes...).
    virtual void SetRange(std::int64_t total) = 0;
    // How much of the range is done; values are clamped to the range.
    virtual void SetProgress(std::int64_t done) = 0;
    virtual std::int64_t GetRange() const = 0;
    virtual std::int64_t GetProgress() const = 0;

    virtual void Cancel() = 0;
    virtual bool IsCancelled() const = 0;

    friend void intrusive_ptr_add_ref(const IProgressController* p) noexcept
    {
        p->m_refs.fetch_add(1, std::memory_order_relaxed);
    }
    friend void intrusive_ptr_release(const IProgressController* p) noexcept
    {
        if (p->m_refs.fetch_sub(1, std::memory_order_acq_rel) == 1)
            delete p;
    }

private:
    mutable std::atomic<int> m_refs{0};
};

using ProgressControllerPtr = boost::intrusive_ptr<IProgressController>;

// The ordinary controller: keeps the figures and calls an optional observer on every change
// of progress (on the thread that reported it). The observer may call Cancel().
class ProgressController : public IProgressController
{
public:
    using Observer = std::function<void(std::int64_t done, std::int64_t total)>;

    explicit ProgressController(Observer observer = {}) : m_observer(std::move(observer)) {}

    void SetRange(std::int64_t total) override;
    void SetProgress(std::int64_t done) override;
    std::int64_t GetRange() const override { return m_total.load(); }
    std::int64_t GetProgress() const override { return m_done.load(); }

    void Cancel() override { m_cancelled.store(true); }
    bool IsCancelled() const override { return m_cancelled.load(); }

private:
    Observer m_observer;
    std::atomic<std::int64_t> m_total{0};
    std::atomic<std::int64_t> m_done{0};
    std::atomic<bool> m_cancelled{false};
};

} // namespace Core
} // namespace Dravik
