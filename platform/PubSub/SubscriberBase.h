#pragma once

#include <PubSub/Object.h>
#include <PubSub/PointerMap.h>

#include <cstddef>
#include <typeindex>
#include <vector>

namespace PubSub::Details {

struct TypeRecord;

// Base of every subscriber (virtual base of each Subscriber<T> it derives from).
//
// A subscriber receives a message of type T when it has registered itself for T (each
// Subscriber<T> does so in its constructor) and is subscribed either to the message's source
// object or to every source of T (subscribeAll). Subscriptions made before a type is registered
// apply to it as soon as it is. The destructor releases everything, so a destroyed subscriber is
// never called again, not even by a delivery already in progress.
//
// Copying a subscriber copies its subscriptions (objects and all-source types); the copy then
// receives the same messages as the original, after it.
class SubscriberBase
{
public:
    SubscriberBase() noexcept;
    SubscriberBase(const SubscriberBase& other);
    SubscriberBase& operator=(const SubscriberBase& other);
    virtual ~SubscriberBase();

    // Start receiving the messages addressed to `object`. False (and a log line) for a null
    // object; subscribing twice is harmless and returns true.
    bool subscribe(const PubSub::Object* object);
    // Stop receiving the messages addressed to `object`. False when it was not subscribed.
    bool unsubscribe(const PubSub::Object* object);
    bool isSubscribed(const PubSub::Object* object) const;
    // Drops every object and all-source subscription (registrations are kept).
    void unsubscribeEverything();
    // Number of objects this subscriber is subscribed to.
    std::size_t subscribedObjectCount() const noexcept { return m_objects.size(); }

protected:
    // Receive messages of `messageType` from every source object.
    bool subscribeAll(const std::type_index& messageType);
    bool unsubscribeAll(const std::type_index& messageType);
    bool isSubscribedAll(const std::type_index& messageType) const;

    // Called by Subscriber<T> for its T from its constructor and destructor. `self` is the
    // Details::Subscriber<T> part of the subscriber, the address deliveries call notify on.
    void registerSelf(SubscriberBase* base, void* self, const std::type_index& messageType);
    void unregisterSelf(SubscriberBase* base, void* self, const std::type_index& messageType);

private:
    struct Registration
    {
        TypeRecord* record;
        void* self;
    };

    void attach(const Registration& registration, const PubSub::Object* object);
    void detach(const Registration& registration, const PubSub::Object* object);
    void attachAll(const Registration& registration);
    void detachAll(const Registration& registration);
    const Registration* findRegistration(const TypeRecord* record) const;
    template <class F>
    void forEachObject(F&& f) const;

    std::vector<Registration> m_registrations;
    struct Subscribed
    {
    };
    PointerMap<Subscribed> m_objects; // the objects subscribed to (as a set of 8-byte slots)
    std::vector<std::type_index> m_allTypes;
};

} // namespace PubSub::Details
