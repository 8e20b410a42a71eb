#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>
#include <vector>

namespace PubSub::Details {

// A hash map from object addresses to values, open-addressed with linear probing and kept at
// most half full, so a lookup, an insertion and a removal cost a few memory reads whatever the
// number of entries, and need no allocation but the occasional doubling. Each 64-byte block of
// memory has a group of eight neighbouring slots, chosen by Fibonacci hashing (multiplication by
// 2^64 / golden ratio, top bits): objects that lie side by side share a group (a walk over them
// touches few cache lines), and blocks, however regularly spaced, scatter over the table, so
// probe runs stay short (a hash that kept whole runs of objects in neighbouring slots was tried:
// those runs made probes linear). Null is not a valid key.
template <class V>
class PointerMap
{
public:
    std::size_t size() const noexcept { return m_size; }
    bool empty() const noexcept { return m_size == 0; }

    V* find(const void* key) noexcept
    {
        if (m_size == 0)
            return nullptr;
        for (std::size_t i = home(key);; i = (i + 1) & m_mask) {
            if (m_slots[i].key == key)
                return &m_slots[i].get();
            if (!m_slots[i].key)
                return nullptr;
        }
    }
    const V* find(const void* key) const noexcept { return const_cast<PointerMap*>(this)->find(key); }
    bool contains(const void* key) const noexcept { return find(key) != nullptr; }

    // The value of `key`, inserted (default-constructed) when absent; `inserted` tells which.
    V& insert(const void* key, bool* inserted = nullptr)
    {
        if ((m_size + 1) * 2 > m_slots.size())
            grow();
        std::size_t i = home(key);
        for (; m_slots[i].key; i = (i + 1) & m_mask) {
            if (m_slots[i].key == key) {
                if (inserted)
                    *inserted = false;
                return m_slots[i].get();
            }
        }
        m_slots[i].key = key;
        ++m_size;
        if (inserted)
            *inserted = true;
        return m_slots[i].get();
    }

    bool erase(const void* key)
    {
        if (m_size == 0)
            return false;
        std::size_t i = home(key);
        for (; m_slots[i].key != key; i = (i + 1) & m_mask) {
            if (!m_slots[i].key)
                return false;
        }
        // Shift the entries that follow back into the gap, so no probe chain is broken.
        for (std::size_t j = (i + 1) & m_mask; m_slots[j].key; j = (j + 1) & m_mask) {
            const std::size_t h = home(m_slots[j].key);
            const bool staysBehindGap = i <= j ? (i < h && h <= j) : (i < h || h <= j);
            if (!staysBehindGap) {
                m_slots[i] = std::move(m_slots[j]);
                i = j;
            }
        }
        m_slots[i].key = nullptr;
        m_slots[i].get() = V();
        --m_size;
        return true;
    }

    void clear()
    {
        m_slots.clear();
        m_mask = 0;
        m_bits = 0;
        m_size = 0;
    }

    // Calls f(key, value) for every entry, in slot order. The map must not change meanwhile.
    template <class F>
    void forEach(F&& f) const
    {
        for (const Slot& slot : m_slots) {
            if (slot.key)
                f(slot.key, slot.get());
        }
    }

private:
    // A value of an empty type (a set's) takes no room: the slot is the key alone, eight bytes.
    template <class T, bool = std::is_empty_v<T>>
    struct SlotOf
    {
        const void* key = nullptr;
        T value{};
        T& get() noexcept { return value; }
        const T& get() const noexcept { return value; }
    };
    template <class T>
    struct SlotOf<T, true> : T
    {
        const void* key = nullptr;
        T& get() noexcept { return *this; }
        const T& get() const noexcept { return *this; }
    };
    using Slot = SlotOf<V>;

    std::size_t home(const void* key) const noexcept
    {
        // The 64-byte block of the address picks a group of eight slots (Fibonacci hashing), the
        // 8-byte word within the block a slot of the group, turned by another part of the hash so
        // that objects alike in alignment (large ones, each in a block of its own) do not all
        // start on the same slot of their groups. Larger groups (16, 64 slots) were tried: blocks
        // sharing a group then overfill it, and the probes of small tables grow long.
        const std::uint64_t k = std::uint64_t(reinterpret_cast<std::uintptr_t>(key));
        const std::uint64_t mixed = (k >> (GroupBits + 3)) * 0x9E3779B97F4A7C15ull;
        const unsigned groupBits = m_bits > GroupBits ? m_bits - GroupBits : 0;
        const std::uint64_t group = groupBits ? mixed >> (64 - groupBits) : 0;
        const std::uint64_t slot = ((k >> 3) + (mixed >> 24)) & ((std::uint64_t(1) << GroupBits) - 1);
        return std::size_t((group << GroupBits) | slot) & m_mask;
    }

    void grow()
    {
        std::vector<Slot> old = std::move(m_slots);
        const std::size_t capacity = old.empty() ? 8 : old.size() * 2;
        m_slots = std::vector<Slot>(capacity);
        m_mask = capacity - 1;
        m_bits = 0;
        while ((std::size_t(1) << m_bits) < capacity)
            ++m_bits;
        m_size = 0;
        for (Slot& slot : old) {
            if (slot.key)
                insert(slot.key) = std::move(slot.get());
        }
    }

    static constexpr unsigned GroupBits = 3; // eight slots to a group
    std::vector<Slot> m_slots;
    std::size_t m_mask = 0;
    unsigned m_bits = 0;
    std::size_t m_size = 0;
};

} // namespace PubSub::Details
