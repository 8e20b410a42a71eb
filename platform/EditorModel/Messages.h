#pragma once

#include <PubSub/PubSub.h>

#include <glog/logging.h>

#include <memory>
#include <typeinfo>

// The six messages every record type T travels with. Each is addressed to the record itself
// (its PubSub::Object part) and carries pointers, never copies.
namespace Message::Types {

// Asks for a new record to be taken over by the owner that serves add requests of T. The
// publisher keeps the record unless a subscriber took it (take()).
template <class T>
class Add : public PubSub::Details::MessageBase
{
public:
    explicit Add(T* object) : MessageBase(object), m_object(object) {}
    T* object() const noexcept { return m_object; }
    // Called by the subscriber that becomes the owner; false when somebody already took it.
    bool take() const noexcept { return m_taken ? false : (m_taken = true); }
    bool taken() const noexcept { return m_taken; }

private:
    T* m_object;
    mutable bool m_taken = false;
};

// A record was taken into the model by its owner.
template <class T>
class Added : public PubSub::Details::MessageBase
{
public:
    explicit Added(const T* object) : MessageBase(object), m_object(object) {}
    const T* object() const noexcept { return m_object; }

private:
    const T* m_object;
};

// Asks the owner of `object` to give it the value of `requested` (a working copy the owner may
// reset once it has applied it).
template <class T>
class Change : public PubSub::Details::MessageBase
{
public:
    Change(const T* object, T* requested) : Change(object, requested, object) {}
    // With the record's bus object given apart, for a record that may be gone meanwhile (a stale
    // pointer is never converted, only compared).
    Change(const T* object, T* requested, const PubSub::Object* source)
        : MessageBase(source), m_object(object), m_requested(requested)
    {}
    const T* object() const noexcept { return m_object; }
    T* requested() const noexcept { return m_requested; }
    // Set by the owner that applied the change; a change nobody applied was lost.
    void markApplied() const noexcept { m_applied = true; }
    bool applied() const noexcept { return m_applied; }

private:
    const T* m_object;
    T* m_requested;
    mutable bool m_applied = false;
};

// The owner applied a change: `object` holds the new value, `previous` the former one (valid
// during the delivery only).
template <class T>
class Changed : public PubSub::Details::MessageBase
{
public:
    Changed(const T* object, const T* previous) : MessageBase(object), m_object(object), m_previous(previous) {}
    const T* object() const noexcept { return m_object; }
    const T* previous() const noexcept { return m_previous; }

private:
    const T* m_object;
    const T* m_previous;
};

// Asks the owner of `object` to remove it.
template <class T>
class Remove : public PubSub::Details::MessageBase
{
public:
    explicit Remove(const T* object) : MessageBase(object), m_object(object) {}
    const T* object() const noexcept { return m_object; }
    void markApplied() const noexcept { m_applied = true; }
    bool applied() const noexcept { return m_applied; }

private:
    const T* m_object;
    mutable bool m_applied = false;
};

// The owner removed `object`; it is still valid during the delivery and freed afterwards.
template <class T>
class Removed : public PubSub::Details::MessageBase
{
public:
    explicit Removed(const T* object) : MessageBase(object), m_object(object) {}
    const T* object() const noexcept { return m_object; }

private:
    const T* m_object;
};

// A subscriber of the six messages of T and a publisher of them: the base of every view of T.
template <class T>
class Participant : public PubSub::Subscriber<Add<T>>,
                    public PubSub::Subscriber<Added<T>>,
                    public PubSub::Subscriber<Change<T>>,
                    public PubSub::Subscriber<Changed<T>>,
                    public PubSub::Subscriber<Remove<T>>,
                    public PubSub::Subscriber<Removed<T>>,
                    public PubSub::Publisher<Add<T>, Added<T>, Change<T>, Changed<T>, Remove<T>, Removed<T>>
{
};

} // namespace Message::Types

namespace Model {

// Hands a new record to whichever owner serves add requests of T (normally the model host).
// Returns the record, now owned by the model, or null (and the record is freed) when nobody
// took it.
template <class T>
const T* requestAdd(std::unique_ptr<T> object)
{
    if (!object) {
        LOG(ERROR) << "Model::requestAdd: null object of type " << typeid(T).name();
        return nullptr;
    }
    const Message::Types::Add<T> message(object.get());
    PubSub::Details::deliver(message);
    if (!message.taken()) {
        LOG(ERROR) << "Model::requestAdd: nobody serves add requests of " << typeid(T).name();
        return nullptr;
    }
    return object.release();
}

// A record handed over through a message (a preset given to a timeline request): the
// subscriber that uses it takes it; one nobody took dies with the message.
template <class T>
class Handover
{
public:
    Handover() = default;
    explicit Handover(std::unique_ptr<T> object) : m_object(std::move(object)) {}
    const T* get() const noexcept { return m_object.get(); }
    std::unique_ptr<T> take() const noexcept { return std::move(m_object); }
    bool taken() const noexcept { return !m_object; }

private:
    mutable std::unique_ptr<T> m_object;
};

} // namespace Model
