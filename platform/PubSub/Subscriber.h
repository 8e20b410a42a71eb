#pragma once

#include <PubSub/SubscriberBase.h>

#include <typeinfo>

namespace PubSub {

namespace Details {

// The part of a subscriber that a delivery of T calls.
template <class T>
class Subscriber
{
public:
    virtual ~Subscriber() = default;
    virtual void notify(const T& message) = 0;

protected:
    Subscriber() = default;
    Subscriber(const Subscriber&) = default;
    Subscriber& operator=(const Subscriber&) = default;
};

} // namespace Details

// A subscriber of message type T. A class handling several messages derives from several
// Subscriber<T>; they share one virtual SubscriberBase, so one subscribe() covers them all.
template <class T>
class Subscriber : public virtual Details::SubscriberBase, public Details::Subscriber<T>
{
public:
    Subscriber() { registerSelf(this, self(), typeid(T)); }
    Subscriber(const Subscriber& other) : Details::SubscriberBase(other), Details::Subscriber<T>(other)
    {
        registerSelf(this, self(), typeid(T));
    }
    Subscriber(Subscriber&& other) : Subscriber(static_cast<const Subscriber&>(other)) {}
    Subscriber& operator=(const Subscriber& other)
    {
        Details::SubscriberBase::operator=(other);
        return *this;
    }
    Subscriber& operator=(Subscriber&& other) { return *this = static_cast<const Subscriber&>(other); }
    ~Subscriber() override { unregisterSelf(this, self(), typeid(T)); }

private:
    void* self() noexcept { return static_cast<Details::Subscriber<T>*>(this); }
};

} // namespace PubSub
