#pragma once

#include <PubSub/Object.h>

#include <set>
#include <typeindex>
#include <typeinfo>

namespace Model {

// The records currently owned by somebody, per record type. Owners (the host's stores and the
// object views that own records) enter a record when they announce it and take it out when they
// remove it, so "every object of a type" can be enumerated without asking the bus.
namespace Registry {

void enter(const std::type_index& type, const PubSub::Object* object);
void leave(const std::type_index& type, const PubSub::Object* object);
bool contains(const std::type_index& type, const PubSub::Object* object);
std::set<const PubSub::Object*> objects(const std::type_index& type);

template <class T>
std::set<const T*> objectsOf()
{
    std::set<const T*> result;
    for (const PubSub::Object* object : objects(typeid(T)))
        result.insert(dynamic_cast<const T*>(object));
    result.erase(nullptr);
    return result;
}

} // namespace Registry
} // namespace Model
