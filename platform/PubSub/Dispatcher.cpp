#include <PubSub/Dispatcher.h>
#include <PubSub/SubscriberBase.h>

#include <glog/logging.h>

#include <algorithm>

namespace PubSub {

Object::~Object() = default;

namespace Details {

MessageBase::~MessageBase() = default;

// --- Dispatcher -------------------------------------------------------------------------------

Dispatcher::Dispatcher() = default;
Dispatcher::~Dispatcher() = default;

Dispatcher& Dispatcher::instance()
{
    // Never destroyed: subscribers with static storage may unregister after main() returns.
    static Dispatcher* const dispatcher = new Dispatcher;
    return *dispatcher;
}

TypeRecord* Dispatcher::typeRecord(const std::type_index& messageType)
{
    auto it = m_types.find(messageType);
    if (it == m_types.end())
        it = m_types.emplace(messageType, std::make_unique<TypeRecord>(messageType, *this)).first;
    return it->second.get();
}

std::size_t Dispatcher::registrationCount() const noexcept
{
    std::size_t count = 0;
    for (const auto& type : m_types)
        count += type.second->registrations;
    return count;
}

bool Dispatcher::hasSubscribers(const std::type_index& messageType, const PubSub::Object* source) const
{
    const auto it = m_types.find(messageType);
    if (it == m_types.end())
        return false;
    const TypeRecord& record = *it->second;
    return !record.all.empty() || (source && headOf(&record, source));
}

std::uint64_t Dispatcher::addEntry(EntryList& list, SubscriberBase* base, void* self)
{
    const std::uint64_t serial = m_nextSerial++;
    list.push_back(Entry{base, self, serial});
    ++m_subscriptions;
    return serial;
}

bool Dispatcher::removeEntry(EntryList& list, const SubscriberBase* base)
{
    const auto it = std::find_if(list.begin(), list.end(), [base](const Entry& e) { return e.base == base; });
    if (it == list.end())
        return false;
    list.erase(it);
    --m_subscriptions;
    ++m_removals;
    return true;
}

namespace {

// An unused element of a pool whose free elements are linked by `next` from `freeHead`, or a new
// one at its end.
template <class T>
std::uint32_t takeFromPool(std::vector<T>& pool, std::uint32_t& freeHead)
{
    const std::uint32_t index = freeHead;
    if (index) {
        freeHead = pool[index].next;
        return index;
    }
    pool.emplace_back();
    return std::uint32_t(pool.size() - 1);
}

} // namespace

void Dispatcher::addNode(std::uint32_t& head, SubscriberBase* base, void* self)
{
    const std::uint32_t index = takeFromPool(m_nodes, m_freeNodes);
    m_nodes[index] = Node{base, self, m_nextSerial++, 0};
    std::uint32_t* link = &head;
    while (*link)
        link = &m_nodes[*link].next;
    *link = index;
    ++m_subscriptions;
}

bool Dispatcher::removeNode(std::uint32_t& head, const SubscriberBase* base)
{
    std::uint32_t* link = &head;
    while (*link && m_nodes[*link].base != base)
        link = &m_nodes[*link].next;
    const std::uint32_t index = *link;
    if (!index)
        return false;
    *link = m_nodes[index].next;
    m_nodes[index] = Node{nullptr, nullptr, 0, m_freeNodes};
    m_freeNodes = index;
    --m_subscriptions;
    ++m_removals;
    return true;
}

std::uint32_t& Dispatcher::listOf(TypeRecord* type, const PubSub::Object* source)
{
    std::uint32_t& first = m_objects.insert(source); // stays valid: the object table grows no more here
    std::uint32_t last = 0;
    for (std::uint32_t i = first; i; i = m_lists[i].next) {
        if (m_lists[i].type == type)
            return m_lists[i].head;
        last = i;
    }
    const std::uint32_t index = takeFromPool(m_lists, m_freeLists);
    m_lists[index] = ObjectList{type, 0, 0};
    (last ? m_lists[last].next : first) = index;
    ++type->objects;
    return m_lists[index].head;
}

void Dispatcher::dropIfEmpty(TypeRecord* type, const PubSub::Object* source)
{
    std::uint32_t* first = m_objects.find(source);
    if (!first)
        return;
    std::uint32_t* link = first;
    while (*link && m_lists[*link].type != type)
        link = &m_lists[*link].next;
    const std::uint32_t index = *link;
    if (!index || m_lists[index].head)
        return;
    *link = m_lists[index].next;
    m_lists[index] = ObjectList{nullptr, 0, m_freeLists};
    m_freeLists = index;
    --type->objects;
    if (!*first)
        m_objects.erase(source);
}

// --- Delivery ---------------------------------------------------------------------------------

Delivery::Delivery(TypeRecord& record, const PubSub::Object* source)
    : m_record(record), m_source(source), m_removalsNow(&Dispatcher::instance().m_removals), m_removals(*m_removalsNow)
{
    if (!source) {
        LOG(ERROR) << "PubSub: a message of type " << record.type.name() << " was published without a source object";
        return;
    }
    const std::vector<Node>& nodes = Dispatcher::instance().m_nodes;
    const std::uint32_t* own = Dispatcher::instance().headOf(&record, source);
    const std::uint32_t head = own ? *own : 0;
    for (std::uint32_t i = head; i; i = nodes[i].next)
        m_targets.push_back(Target{nodes[i].self, nodes[i].serial, false});
    for (const Entry& e : record.all) {
        // A subscriber of every source that also subscribed to this one gets the message once.
        bool duplicate = false;
        for (std::uint32_t i = head; i && !duplicate; i = nodes[i].next)
            duplicate = nodes[i].base == e.base;
        if (!duplicate)
            m_targets.push_back(Target{e.self, e.serial, true});
    }
}

void* Delivery::liveTarget(std::size_t index) const
{
    const Target& t = m_targets[index];
    const Dispatcher& dispatcher = Dispatcher::instance();
    if (t.toAll) {
        const EntryList& all = m_record.all;
        const bool alive = std::any_of(all.begin(), all.end(), [&t](const Entry& e) { return e.serial == t.serial; });
        return alive ? t.self : nullptr;
    }
    const std::uint32_t* head = dispatcher.headOf(&m_record, m_source);
    for (std::uint32_t i = head ? *head : 0; i; i = dispatcher.m_nodes[i].next) {
        if (dispatcher.m_nodes[i].serial == t.serial)
            return t.self;
    }
    return nullptr;
}

// --- SubscriberBase ---------------------------------------------------------------------------

SubscriberBase::SubscriberBase() noexcept = default;

SubscriberBase::SubscriberBase(const SubscriberBase& other) : m_objects(other.m_objects), m_allTypes(other.m_allTypes)
{
    // Registrations are not copied: each Subscriber<T> part of the copy registers itself, and
    // that applies the copied subscriptions to it.
}

SubscriberBase& SubscriberBase::operator=(const SubscriberBase& other)
{
    if (this == &other)
        return *this;
    unsubscribeEverything();
    m_objects = other.m_objects;
    m_allTypes = other.m_allTypes;
    for (const Registration& r : m_registrations) {
        forEachObject([this, &r](const PubSub::Object* object) { attach(r, object); });
        if (isSubscribedAll(r.record->type))
            attachAll(r);
    }
    return *this;
}

SubscriberBase::~SubscriberBase()
{
    unsubscribeEverything();
    Dispatcher& dispatcher = Dispatcher::instance();
    for (const Registration& r : m_registrations)
        --r.record->registrations;
    if (!m_registrations.empty())
        ++dispatcher.m_removals;
}

bool SubscriberBase::subscribe(const PubSub::Object* object)
{
    if (!object) {
        LOG(ERROR) << "PubSub::Details::SubscriberBase::subscribe: null object";
        return false;
    }
    bool inserted = false;
    m_objects.insert(object, &inserted);
    if (!inserted)
        return true;
    for (const Registration& r : m_registrations)
        attach(r, object);
    return true;
}

bool SubscriberBase::unsubscribe(const PubSub::Object* object)
{
    if (!object || !m_objects.erase(object))
        return false;
    for (const Registration& r : m_registrations)
        detach(r, object);
    return true;
}

bool SubscriberBase::isSubscribed(const PubSub::Object* object) const { return object && m_objects.contains(object); }

void SubscriberBase::unsubscribeEverything()
{
    for (const Registration& r : m_registrations) {
        forEachObject([this, &r](const PubSub::Object* object) { detach(r, object); });
        detachAll(r);
    }
    m_objects.clear();
    m_allTypes.clear();
}

bool SubscriberBase::subscribeAll(const std::type_index& messageType)
{
    if (isSubscribedAll(messageType))
        return true;
    m_allTypes.push_back(messageType);
    const TypeRecord* record = Dispatcher::instance().typeRecord(messageType);
    if (const Registration* r = findRegistration(record))
        attachAll(*r);
    return true;
}

bool SubscriberBase::unsubscribeAll(const std::type_index& messageType)
{
    const auto it = std::find(m_allTypes.begin(), m_allTypes.end(), messageType);
    if (it == m_allTypes.end())
        return false;
    m_allTypes.erase(it);
    const TypeRecord* record = Dispatcher::instance().typeRecord(messageType);
    if (const Registration* r = findRegistration(record))
        detachAll(*r);
    return true;
}

bool SubscriberBase::isSubscribedAll(const std::type_index& messageType) const
{
    return std::find(m_allTypes.begin(), m_allTypes.end(), messageType) != m_allTypes.end();
}

void SubscriberBase::registerSelf(SubscriberBase* base, void* self, const std::type_index& messageType)
{
    if (base != this || !self) {
        LOG(ERROR) << "PubSub::Details::SubscriberBase::registerSelf: a subscriber registers only itself";
        return;
    }
    TypeRecord* record = Dispatcher::instance().typeRecord(messageType);
    if (findRegistration(record)) {
        LOG(ERROR) << "PubSub::Details::SubscriberBase::registerSelf: already registered for " << messageType.name();
        return;
    }
    m_registrations.push_back(Registration{record, self});
    ++record->registrations;
    const Registration& r = m_registrations.back();
    forEachObject([this, &r](const PubSub::Object* object) { attach(r, object); });
    if (isSubscribedAll(messageType))
        attachAll(r);
}

void SubscriberBase::unregisterSelf(SubscriberBase* base, void* self, const std::type_index& messageType)
{
    if (base != this)
        return;
    const TypeRecord* record = Dispatcher::instance().typeRecord(messageType);
    const auto it = std::find_if(m_registrations.begin(), m_registrations.end(), [record, self](const Registration& r) {
        return r.record == record && r.self == self;
    });
    if (it == m_registrations.end())
        return;
    forEachObject([this, &it](const PubSub::Object* object) { detach(*it, object); });
    detachAll(*it);
    --it->record->registrations;
    ++Dispatcher::instance().m_removals;
    m_registrations.erase(it);
}

void SubscriberBase::attach(const Registration& r, const PubSub::Object* object)
{
    Dispatcher& dispatcher = Dispatcher::instance();
    dispatcher.addNode(dispatcher.listOf(r.record, object), this, r.self);
}

void SubscriberBase::detach(const Registration& r, const PubSub::Object* object)
{
    Dispatcher& dispatcher = Dispatcher::instance();
    std::uint32_t* head = const_cast<std::uint32_t*>(dispatcher.headOf(r.record, object));
    if (!head)
        return;
    dispatcher.removeNode(*head, this);
    if (!*head)
        dispatcher.dropIfEmpty(r.record, object);
}

template <class F>
void SubscriberBase::forEachObject(F&& f) const
{
    m_objects.forEach([&f](const void* object, const Subscribed&) { f(static_cast<const PubSub::Object*>(object)); });
}

void SubscriberBase::attachAll(const Registration& r)
{
    const auto& all = r.record->all;
    if (std::none_of(all.begin(), all.end(), [this](const Entry& e) { return e.base == this; }))
        Dispatcher::instance().addEntry(r.record->all, this, r.self);
}

void SubscriberBase::detachAll(const Registration& r) { Dispatcher::instance().removeEntry(r.record->all, this); }

const SubscriberBase::Registration* SubscriberBase::findRegistration(const TypeRecord* record) const
{
    for (const Registration& r : m_registrations) {
        if (r.record == record)
            return &r;
    }
    return nullptr;
}

} // namespace Details
} // namespace PubSub
