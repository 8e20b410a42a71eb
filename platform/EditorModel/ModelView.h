#pragma once

#include <EditorModel/Messages.h>
#include <EditorModel/Registry.h>
#include <EditorModel/WorkingCopy.h>

#include <glog/logging.h>

#include <map>
#include <memory>
#include <set>
#include <typeinfo>
#include <utility>
#include <vector>

namespace Model {

template <class T>
class View;

// An edit of one record: a working copy committed when the edit is destroyed (or by commit()).
// The view applies it when it owns the record and otherwise sends it to the owner as a Change
// request. cancel() drops it. A refused edit (a null record, a record that is not the host's)
// still has a working copy, whose writes are dropped.
template <class T>
class Edit : public WorkingCopy<T, View<T>>
{
public:
    Edit(View<T>* view, const T* object)
        : WorkingCopy<T, View<T>>(object ? view : nullptr, object,
                                  object ? std::make_unique<T>(*object) : std::make_unique<T>())
    {}
};

// The model's view of records of one type. It keeps the records it owns (and applies changes to)
// and those it only observes, serves the Change and Remove requests of its own records, and can
// serve the Add requests of every record of T. Its hooks report every record it follows being
// added, changed or removed, whether it owns it or another owner announced it. A subscriber
// that subscribes to a record directly (without observe()) gets the hooks for it too.
template <class T>
class View : public Message::Types::Participant<T>
{
public:
    using Add = Message::Types::Add<T>;
    using Added = Message::Types::Added<T>;
    using Change = Message::Types::Change<T>;
    using Changed = Message::Types::Changed<T>;
    using Remove = Message::Types::Remove<T>;
    using Removed = Message::Types::Removed<T>;

    View() = default;
    View(const View&) = delete;
    View& operator=(const View&) = delete;
    // Owned records are announced removed and freed.
    ~View() override
    {
        this->unsubscribeEverything();
        auto records = std::move(m_records);
        for (auto& record : records) {
            if (!record.second)
                continue;
            Registry::leave(typeid(T), record.first);
            this->publish(Removed(record.first));
        }
    }

    // Takes `object` over, announces it (Added) and returns it; null for a null object.
    const T* own(std::unique_ptr<T> object)
    {
        if (!object) {
            LOG(ERROR) << "Model::View::own: null object of type " << typeid(T).name();
            return nullptr;
        }
        const T* record = object.get();
        m_records[record] = std::move(object);
        this->subscribe(record);
        Registry::enter(typeid(T), record);
        recordAdded(record);
        this->publish(Added(record));
        return record;
    }

    // Follows a record another owner keeps. False for a null object or one already followed.
    bool observe(const T* object)
    {
        if (!object) {
            LOG(ERROR) << "Model::View::observe: null object of type " << typeid(T).name();
            return false;
        }
        if (m_records.count(object))
            return false;
        m_records.emplace(object, nullptr);
        this->subscribe(object);
        return true;
    }

    // Stops following an observed record. False (and a log line) for one never observed; an
    // owned record is removed with remove(), not forgotten.
    bool forget(const T* object)
    {
        const auto it = m_records.find(object);
        if (it == m_records.end() || it->second) {
            LOG(ERROR) << "Model::View::forget: "
                       << (it == m_records.end() ? "object not observed" : "object is owned");
            return false;
        }
        m_records.erase(it);
        this->unsubscribe(object);
        return true;
    }

    // Opens an edit of a record (owned, observed or merely known by address).
    Edit<T> edit(const T* object)
    {
        if (!object)
            LOG(ERROR) << "Model::View::edit: null object of type " << typeid(T).name();
        return Edit<T>(object ? this : nullptr, object);
    }

    // Removes an owned record, or asks its owner to. True when it was removed.
    bool remove(const T* object)
    {
        if (!object) {
            LOG(ERROR) << "Model::View::remove: null object";
            return false;
        }
        if (isOwned(object)) {
            removeOwned(object);
            return true;
        }
        const Remove message(object);
        this->publish(message);
        if (!message.applied())
            LOG(ERROR) << "Model::View::remove: nobody owns the " << typeid(T).name() << " to remove";
        return message.applied();
    }

    // Serve the Add requests of every record of T (the view becomes their owner).
    void serveAddRequests(bool on) { on ? this->subscribeAll(typeid(Add)) : this->unsubscribeAll(typeid(Add)); }
    // Follow every record of T that any owner announces from now on.
    void observeNew(bool on) { on ? this->subscribeAll(typeid(Added)) : this->unsubscribeAll(typeid(Added)); }

    bool isOwned(const T* object) const
    {
        const auto it = m_records.find(object);
        return it != m_records.end() && it->second;
    }
    bool isObserved(const T* object) const
    {
        const auto it = m_records.find(object);
        return it != m_records.end() && !it->second;
    }
    bool isFollowed(const T* object) const { return m_records.count(object) != 0; }
    std::set<const T*> records() const
    {
        std::set<const T*> result;
        for (const auto& record : m_records)
            result.insert(record.first);
        return result;
    }
    // The owned, writable record, or null.
    T* ownedPointer(const T* object) const
    {
        const auto it = m_records.find(object);
        return it == m_records.end() ? nullptr : it->second.get();
    }

    // Applies an edit's copy to an owned record, or sends it to the record's owner.
    bool commitCopy(const T* object, std::unique_ptr<T>& copy, const PubSub::Object* source)
    {
        if (T* owned = ownedPointer(object))
            return applyOwned(object, owned, *copy);
        const Change message(object, copy.get(), source);
        this->publish(message);
        if (!message.applied())
            LOG(ERROR) << "Model::View: the change of a " << typeid(T).name()
                       << " reached no owner (removed or never added)";
        return message.applied();
    }

protected:
    // Hooks; the base versions do nothing.
    virtual void recordAdded(const T* /*object*/) {}
    virtual void recordChanged(const T* /*object*/, const T* /*previous*/) {}
    virtual void recordRemoved(const T* /*object*/) {}
    // An owner may refuse a requested change of its record (the base accepts all).
    virtual bool acceptChange(const T* /*object*/, const T& /*requested*/) { return true; }

private:
    bool applyOwned(const T* object, T* owned, T& requested)
    {
        if (!acceptChange(object, requested))
            return false;
        const T previous(*owned);
        *owned = requested;
        recordChanged(object, &previous);
        this->publish(Changed(object, &previous));
        return true;
    }

    void removeOwned(const T* object)
    {
        Registry::leave(typeid(T), object);
        recordRemoved(object);
        this->publish(Removed(object));
        this->unsubscribe(object);
        const auto it = m_records.find(object);
        if (it != m_records.end()) {
            auto record = std::move(it->second);
            m_records.erase(it);
        }
    }

protected:
    // The messages of T. A subclass that handles messages of its own declares
    // `using Model::View<T>::notify;` beside its notify, so that neither hides the other.
    void notify(const Add& message) override
    {
        if (!message.object() || !message.take())
            return;
        own(std::unique_ptr<T>(message.object()));
    }
    void notify(const Added& message) override
    {
        const T* object = message.object();
        if (isOwned(object))
            return;
        if (!isFollowed(object)) {
            m_records.emplace(object, nullptr);
            this->subscribe(object);
        }
        recordAdded(object);
    }
    void notify(const Change& message) override
    {
        T* owned = ownedPointer(message.object());
        if (!owned || message.applied())
            return;
        if (applyOwned(message.object(), owned, *message.requested()))
            message.markApplied();
    }
    void notify(const Changed& message) override
    {
        if (!isOwned(message.object()))
            recordChanged(message.object(), message.previous());
    }
    void notify(const Remove& message) override
    {
        if (!isOwned(message.object()) || message.applied())
            return;
        message.markApplied();
        removeOwned(message.object());
    }
    void notify(const Removed& message) override
    {
        const T* object = message.object();
        if (isOwned(object))
            return;
        recordRemoved(object);
        if (m_records.erase(object))
            this->unsubscribe(object);
    }

private:
    std::map<const T*, std::unique_ptr<T>> m_records;
};

} // namespace Model
