#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Interfaces/PubSub.h>

#include <map>
#include <memory>
#include <set>
#include <typeinfo>

namespace Message {

// A client's mirror of records of type T on the bus, and their owner for the records it owns.
//
// It keeps an ordered map from each record it follows to the owned value (none for a record it
// only observes). Owned records are changed in place and the change announced (Changed<T>);
// changes of observed records are sent to their owner (Change<T>) and reach the view only when
// the owner announces them. Changes are made through a SetterChain: a working copy the caller
// writes, committed when the chain is destroyed.
template <class T>
class View : public Message::Types::Participant<T>
{
public:
    // A short-lived edit: the record (null for a new one) and a working copy of its value. Write
    // fields through -> or *; the destructor commits: a change of the named record, or the
    // addition of the copy as a new record of the view. A refused chain (a null record given to
    // add or own) has a copy too, and drops what is written to it.
    using SetterChain = Model::WorkingCopy<T, View>;

    explicit View(const T* object = nullptr);
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    // Owned records are announced removed and freed.
    ~View() override;

    // The record the view was made for, or (when made for none) the first one it added.
    const T* object() const noexcept { return m_object; }
    std::set<const T*> objects() const;
    // Every record of T the view can reach: its own and those the model's owners hold.
    std::set<const T*> enumerateAll() const;

    bool observe(const T* object);
    void observeAll();
    bool forget(const T* object);

    // Take a new record (allocated by the caller, now the view's) into the map as owned; it is
    // announced when the chain commits.
    SetterChain own(T* object);
    SetterChain add(T* object);
    // Edit a record; for a null record, a new one made from a default value is added on commit.
    SetterChain change(const T* object);
    // Removes an owned record, or asks the owner of an observed one to.
    bool remove(const T* object);

    bool isObserved(const T* object) const;
    bool isOwned(const T* object) const;
    T* ownerPointer(const T* object) const;

    // Serve every Add<T> request on the bus (the view becomes the owner of what it takes).
    void processAddRequests(bool on);
    // Follow every record of T that is announced from now on.
    void observeNew(bool on);

protected:
    virtual void addRequested(T* object);
    virtual void added(const T* object);
    virtual void changeRequested(T* object, T* requested);
    virtual void changed(const T* object, const T* previous, const T* current);
    virtual void changed(const T* object, const T* previous);
    virtual void changed(const T* object);
    virtual void removeRequested(T* object);
    virtual void removed(const T* object);

    // The bus messages of T; a subclass handling messages of its own declares
    // `using Message::View<T>::notify;` so that neither hides the other.
    void notify(const Message::Types::Add<T>& message) override;
    void notify(const Message::Types::Added<T>& message) override;
    void notify(const Message::Types::Change<T>& message) override;
    void notify(const Message::Types::Changed<T>& message) override;
    void notify(const Message::Types::Remove<T>& message) override;
    void notify(const Message::Types::Removed<T>& message) override;

private:
    friend SetterChain;
    bool commitCopy(const T* object, std::unique_ptr<T>& copy, const PubSub::Object* source);
    T* ownedPtr(const T* object) const;
    bool doChange(const T* object, T* requested, const PubSub::Object* source);
    void doAdd(T* object);
    void doRemove(const T* object);

    const T* m_object;
    std::map<const T*, std::unique_ptr<T>> m_objects;
};

// --- View ------------------------------------------------------------------------------------------

template <class T>
View<T>::View(const T* object) : m_object(object)
{
    if (object)
        observe(object);
}

template <class T>
View<T>::~View()
{
    this->unsubscribeEverything();
    auto objects = std::move(m_objects);
    for (auto& entry : objects) {
        if (!entry.second)
            continue;
        Model::Registry::leave(typeid(T), entry.first);
        this->publish(Message::Types::Removed<T>(entry.first));
    }
}

template <class T>
std::set<const T*> View<T>::objects() const
{
    std::set<const T*> result;
    for (const auto& entry : m_objects)
        result.insert(entry.first);
    return result;
}

template <class T>
std::set<const T*> View<T>::enumerateAll() const
{
    std::set<const T*> result = Model::Registry::objectsOf<T>();
    for (const auto& entry : m_objects)
        result.insert(entry.first);
    return result;
}

template <class T>
bool View<T>::observe(const T* object)
{
    if (!object) {
        LOG(ERROR) << "Message::View::observe: null object";
        return false;
    }
    if (m_objects.count(object))
        return false;
    m_objects.emplace(object, nullptr);
    this->subscribe(object);
    return true;
}

template <class T>
void View<T>::observeAll()
{
    for (const T* object : Model::Registry::objectsOf<T>())
        observe(object);
    this->subscribeAll(typeid(Message::Types::Added<T>));
    this->subscribeAll(typeid(Message::Types::Changed<T>));
    this->subscribeAll(typeid(Message::Types::Removed<T>));
}

template <class T>
bool View<T>::forget(const T* object)
{
    const auto it = m_objects.find(object);
    if (it == m_objects.end()) {
        LOG(ERROR) << "Message::View::forget: the object was never observed";
        return false;
    }
    if (it->second) {
        LOG(ERROR) << "Message::View::forget: the object is owned by this view; remove it instead";
        return false;
    }
    m_objects.erase(it);
    this->unsubscribe(object);
    return true;
}

template <class T>
typename View<T>::SetterChain View<T>::own(T* object)
{
    if (!object)
        LOG(ERROR) << "Message::View::own: null object";
    return SetterChain(object ? this : nullptr, nullptr, std::unique_ptr<T>(object ? object : new T()));
}

template <class T>
typename View<T>::SetterChain View<T>::add(T* object)
{
    if (!object)
        LOG(ERROR) << "Message::View::add: null object";
    return SetterChain(object ? this : nullptr, nullptr, std::unique_ptr<T>(object ? object : new T()));
}

template <class T>
typename View<T>::SetterChain View<T>::change(const T* object)
{
    return SetterChain(this, object, std::make_unique<T>(object ? T(*object) : T()));
}

template <class T>
bool View<T>::remove(const T* object)
{
    if (!object) {
        LOG(ERROR) << "Message::View::remove: null object";
        return false;
    }
    if (isOwned(object)) {
        doRemove(object);
        return true;
    }
    const Message::Types::Remove<T> message(object);
    this->publish(message);
    if (!message.applied())
        LOG(ERROR) << "Message::View::remove: nobody owns the " << typeid(T).name() << " to remove";
    return message.applied();
}

template <class T>
bool View<T>::isObserved(const T* object) const
{
    const auto it = m_objects.find(object);
    return it != m_objects.end() && !it->second;
}

template <class T>
bool View<T>::isOwned(const T* object) const
{
    return ownedPtr(object) != nullptr;
}

template <class T>
T* View<T>::ownerPointer(const T* object) const
{
    return ownedPtr(object);
}

template <class T>
T* View<T>::ownedPtr(const T* object) const
{
    const auto it = m_objects.find(object);
    return it == m_objects.end() ? nullptr : it->second.get();
}

template <class T>
void View<T>::processAddRequests(bool on)
{
    if (on)
        this->subscribeAll(typeid(Message::Types::Add<T>));
    else
        this->unsubscribeAll(typeid(Message::Types::Add<T>));
}

template <class T>
void View<T>::observeNew(bool on)
{
    if (on)
        this->subscribeAll(typeid(Message::Types::Added<T>));
    else
        this->unsubscribeAll(typeid(Message::Types::Added<T>));
}

template <class T>
void View<T>::addRequested(T*)
{}

template <class T>
void View<T>::added(const T*)
{}

template <class T>
void View<T>::changeRequested(T*, T*)
{}

template <class T>
void View<T>::changed(const T*, const T*, const T*)
{}

template <class T>
void View<T>::changed(const T*, const T*)
{}

template <class T>
void View<T>::changed(const T*)
{}

template <class T>
void View<T>::removeRequested(T*)
{}

template <class T>
void View<T>::removed(const T*)
{}

template <class T>
bool View<T>::doChange(const T* object, T* requested, const PubSub::Object* source)
{
    T* owned = ownedPtr(object);
    if (!owned) {
        // Only the owner changes a record: ask it.
        const Message::Types::Change<T> message(object, requested, source);
        this->publish(message);
        if (!message.applied())
            LOG(ERROR) << "Message::View: the change of a " << typeid(T).name()
                       << " reached no owner (removed or never added)";
        return message.applied();
    }
    auto previous = std::make_unique<T>(*owned);
    *owned = *requested;
    *requested = T();
    changed(object, previous.get(), object);
    changed(object, previous.get());
    changed(object);
    this->publish(Message::Types::Changed<T>(object, previous.get()));
    return true;
}

template <class T>
bool View<T>::commitCopy(const T* object, std::unique_ptr<T>& copy, const PubSub::Object* source)
{
    if (object)
        return doChange(object, copy.get(), source);
    doAdd(copy.release());
    return true;
}

template <class T>
void View<T>::doAdd(T* object)
{
    m_objects[object].reset(object);
    if (!m_object)
        m_object = object;
    this->subscribe(object);
    Model::Registry::enter(typeid(T), object);
    added(object);
    this->publish(Message::Types::Added<T>(object));
}

template <class T>
void View<T>::doRemove(const T* object)
{
    removed(object);
    if (isOwned(object))
        Model::Registry::leave(typeid(T), object);
    this->publish(Message::Types::Removed<T>(object));
    this->unsubscribe(object);
    if (m_object == object)
        m_object = nullptr;
    const auto it = m_objects.find(object);
    if (it != m_objects.end()) {
        auto value = std::move(it->second); // freed after the entry is gone
        m_objects.erase(it);
    }
}

template <class T>
void View<T>::notify(const Message::Types::Add<T>& message)
{
    T* object = message.object();
    if (!object || !message.take())
        return;
    addRequested(object);
    doAdd(object);
}

template <class T>
void View<T>::notify(const Message::Types::Added<T>& message)
{
    const T* object = message.object();
    if (isOwned(object))
        return; // our own announcement
    if (!m_objects.count(object)) {
        m_objects.emplace(object, nullptr);
        this->subscribe(object);
    }
    added(object);
}

template <class T>
void View<T>::notify(const Message::Types::Change<T>& message)
{
    T* owned = ownedPtr(message.object());
    if (!owned || message.applied())
        return;
    message.markApplied();
    changeRequested(owned, message.requested());
    doChange(message.object(), message.requested(), message.source());
}

template <class T>
void View<T>::notify(const Message::Types::Changed<T>& message)
{
    const T* object = message.object();
    if (isOwned(object))
        return;
    if (!m_objects.count(object)) // reached through observeAll
        m_objects.emplace(object, nullptr);
    changed(object, message.previous(), object);
    changed(object, message.previous());
    changed(object);
}

template <class T>
void View<T>::notify(const Message::Types::Remove<T>& message)
{
    T* owned = ownedPtr(message.object());
    if (!owned || message.applied())
        return;
    message.markApplied();
    removeRequested(owned);
    doRemove(message.object());
}

template <class T>
void View<T>::notify(const Message::Types::Removed<T>& message)
{
    const T* object = message.object();
    if (isOwned(object))
        return;
    removed(object);
    if (m_object == object)
        m_object = nullptr;
    if (m_objects.erase(object))
        this->unsubscribe(object);
}

} // namespace Message
