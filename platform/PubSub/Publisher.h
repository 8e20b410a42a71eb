#pragma once

#include <PubSub/Dispatcher.h>
#include <PubSub/Subscriber.h>

#include <type_traits>
#include <typeinfo>

namespace PubSub {

namespace Details {

// Delivers `message` to the subscribers of its source, synchronously and in subscription order.
// A subscriber that throws stops the delivery; the exception reaches the publisher.
template <class M>
void deliver(const M& message)
{
    static_assert(std::is_base_of_v<MessageBase, M>, "a message derives from PubSub::Details::MessageBase");
    static TypeRecord* const record = Dispatcher::instance().typeRecord(typeid(M));
    if (record->empty() || record->reachesNobody(message.source()))
        return; // the common case of a message nobody listens to, decided without a call
    Delivery delivery(*record, message.source());
    for (std::size_t i = 0; i < delivery.size(); ++i) {
        if (void* target = delivery.target(i))
            static_cast<Details::Subscriber<M>*>(target)->notify(message);
    }
}

} // namespace Details

// Mix-in that lets a class publish the listed message types. Publishing is synchronous: every
// subscriber has been notified when publish() returns.
template <class... T>
class Publisher
{
public:
    template <class M>
    void publish(const M& message) const
    {
        static_assert((std::is_same_v<M, T> || ...), "this publisher does not publish that message type");
        Details::deliver(message);
    }

protected:
    ~Publisher() = default;
};

} // namespace PubSub
