#pragma once

#include <PubSub/MessageBase.h>
#include <PubSub/Object.h>
#include <PubSub/PointerMap.h>

#include <boost/container/small_vector.hpp>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <memory>
#include <typeindex>
#include <unordered_map>
#include <vector>

namespace PubSub::Details {

class SubscriberBase;
struct TypeRecord;

// One subscription of one subscriber to one source (or to all sources) of one message type.
struct Entry
{
    SubscriberBase* base;
    void* self;           // the Details::Subscriber<T> part, called by a delivery
    std::uint64_t serial; // unique per subscription, so a renewed one is told apart
};

using EntryList = boost::container::small_vector<Entry, 1>;

// One subscription to one source object: a node of that source's list for one message type. The
// nodes live in one pool of the dispatcher, linked by index (0 ends a list), so a subscription
// allocates nothing but the pool's occasional doubling.
struct Node
{
    SubscriberBase* base;
    void* self;
    std::uint64_t serial;
    std::uint32_t next;
};

// The list of the subscriptions of one message type to one source object: a link of that
// object's chain of lists (one per message type it has subscribers of), kept in a pool like
// the nodes. One table maps each subscribed object to its chain, whatever the message types,
// so a subscriber of several types finds the object once (one cache line, not one per type).
struct ObjectList
{
    const TypeRecord* type;
    std::uint32_t head; // first node
    std::uint32_t next; // next list of the same object
};

class Dispatcher;

// Everything the dispatcher knows about one message type. Records are made on first use and
// live as long as the process, so a publisher may keep a pointer to its message type's record.
struct TypeRecord
{
    TypeRecord(const std::type_index& t, const Dispatcher& d) : type(t), dispatcher(d) {}

    bool empty() const noexcept { return objects == 0 && all.empty(); }
    // Whether a message of this type to `source` reaches nobody (a null source is not decided here).
    inline bool reachesNobody(const PubSub::Object* source) const noexcept;

    std::type_index type;
    const Dispatcher& dispatcher;
    std::size_t objects = 0; // source objects with a subscription of this type
    EntryList all;
    std::size_t registrations = 0;
};

// What a delivery calls: the subscribers found when it started, checked again before each call
// whenever a subscription was dropped since (so a subscriber destroyed or unsubscribed by an
// earlier notify is skipped).
class Delivery
{
public:
    struct Target
    {
        void* self;
        std::uint64_t serial;
        bool toAll;
    };

    Delivery(TypeRecord& record, const PubSub::Object* source);
    Delivery(const Delivery&) = delete;
    Delivery& operator=(const Delivery&) = delete;

    std::size_t size() const noexcept { return m_targets.size(); }
    // The subscriber to call at `index`, or null when it has gone since the delivery started.
    // Decided inline while nothing was unsubscribed since (the usual case), by a look-up otherwise.
    void* target(std::size_t index) const
    {
        return *m_removalsNow == m_removals ? m_targets[index].self : liveTarget(index);
    }

private:
    void* liveTarget(std::size_t index) const;

    TypeRecord& m_record;
    const PubSub::Object* m_source;
    const std::uint64_t* m_removalsNow; // the dispatcher's count of dropped subscriptions
    std::uint64_t m_removals;           // that count when the delivery started
    boost::container::small_vector<Target, 16> m_targets;
};

// The process-wide dispatcher. It keeps, per message type, the subscribers of each source object
// and those of every source, in subscription order, which is the delivery order. Subscribing and
// unsubscribing cost one look-up in the object table whatever the number of subscriptions.
class Dispatcher
{
public:
    static Dispatcher& instance();

    Dispatcher(const Dispatcher&) = delete;
    Dispatcher& operator=(const Dispatcher&) = delete;

    // The record of a message type, made on first use; never null, never freed.
    TypeRecord* typeRecord(const std::type_index& messageType);

    // Number of live subscriptions (one per subscriber, source and message type) and of
    // registered (subscriber, message type) pairs: both return to their former values when the
    // subscribers made since are gone, which is how a leaked subscription shows.
    std::size_t subscriptionCount() const noexcept { return m_subscriptions; }
    std::size_t registrationCount() const noexcept;
    // Whether a message of `messageType` addressed to `source` would reach anybody.
    bool hasSubscribers(const std::type_index& messageType, const PubSub::Object* source) const;

    // The first node of the subscriptions of `type` to `source`, or null when there are none.
    const std::uint32_t* headOf(const TypeRecord* type, const PubSub::Object* source) const noexcept
    {
        const std::uint32_t* first = m_objects.find(source);
        for (std::uint32_t i = first ? *first : 0; i; i = m_lists[i].next) {
            if (m_lists[i].type == type)
                return &m_lists[i].head;
        }
        return nullptr;
    }

private:
    Dispatcher();
    ~Dispatcher();

    std::uint64_t addEntry(EntryList& list, SubscriberBase* base, void* self);
    bool removeEntry(EntryList& list, const SubscriberBase* base);
    // Appends a node to the list starting at `head` / unlinks the node of `base` from it.
    void addNode(std::uint32_t& head, SubscriberBase* base, void* self);
    bool removeNode(std::uint32_t& head, const SubscriberBase* base);
    // The list of `type` for `source`, made (empty) when missing; valid until the next list is made.
    std::uint32_t& listOf(TypeRecord* type, const PubSub::Object* source);
    // Drops the list of `type` for `source` once it holds no node.
    void dropIfEmpty(TypeRecord* type, const PubSub::Object* source);

    friend class SubscriberBase;
    friend class Delivery;

    std::unordered_map<std::type_index, std::unique_ptr<TypeRecord>> m_types;
    std::vector<Node> m_nodes = std::vector<Node>(1);             // node 0 stands for "none"
    std::uint32_t m_freeNodes = 0;                                // first unused node, linked by `next`
    PointerMap<std::uint32_t> m_objects;                          // source object -> first of its lists
    std::vector<ObjectList> m_lists = std::vector<ObjectList>(1); // list 0 stands for "none"
    std::uint32_t m_freeLists = 0;
    std::uint64_t m_nextSerial = 1;
    std::uint64_t m_removals = 0;
    std::size_t m_subscriptions = 0;
};

bool TypeRecord::reachesNobody(const PubSub::Object* source) const noexcept
{
    return all.empty() && source && !dispatcher.headOf(this, source);
}

} // namespace PubSub::Details
