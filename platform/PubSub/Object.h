#pragma once

namespace PubSub {

// Base of every record that lives on the bus; always inherited virtually. Its address is the
// record's identity: subscriptions are made per address, and a copy is a different object
// (copying never copies identity or subscriptions).
class Object
{
public:
    Object() noexcept = default;
    Object(const Object&) noexcept {}
    Object& operator=(const Object&) noexcept { return *this; }
    virtual ~Object();
};

} // namespace PubSub
