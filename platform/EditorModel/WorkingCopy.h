#pragma once

#include <PubSub/PubSub.h>

#include <memory>
#include <utility>

namespace Model {

// A working copy of one record that the caller writes through -> or *, handed to its owner when
// the copy is destroyed (or by commit()); cancel() drops it. The owner's
// `bool commitCopy(const T* record, std::unique_ptr<T>& copy, const PubSub::Object* source)`
// applies it (a null record means a new one). A copy without an owner (a refused edit) still
// has a value, whose writes are dropped. Both the model's views and the library's bus views
// hand out their edits this way.
template <class T, class Owner>
class WorkingCopy
{
public:
    WorkingCopy(Owner* owner, const T* record, std::unique_ptr<T> copy)
        : m_owner(owner), m_record(record), m_source(record), m_copy(std::move(copy))
    {}
    WorkingCopy(WorkingCopy&& other) noexcept
        : m_owner(std::exchange(other.m_owner, nullptr)),
          m_record(other.m_record),
          m_source(other.m_source),
          m_copy(std::move(other.m_copy))
    {}
    WorkingCopy(const WorkingCopy&) = delete;
    WorkingCopy& operator=(const WorkingCopy&) = delete;
    WorkingCopy& operator=(WorkingCopy&&) = delete;
    ~WorkingCopy() { commit(); }

    T* operator->() const noexcept { return m_copy.get(); }
    T& operator*() const noexcept { return *m_copy; }
    T* get() const noexcept { return m_copy.get(); }
    const T* object() const noexcept { return m_record; }

    // Hands the copy to the owner now; true when the owner applied it.
    bool commit()
    {
        Owner* owner = std::exchange(m_owner, nullptr);
        return owner && m_copy ? owner->commitCopy(m_record, m_copy, m_source) : false;
    }
    void cancel() noexcept { m_owner = nullptr; }

private:
    Owner* m_owner;
    const T* m_record;
    const PubSub::Object* m_source; // taken while the record is surely alive
    std::unique_ptr<T> m_copy;
};

} // namespace Model
