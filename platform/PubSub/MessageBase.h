#pragma once

#include <PubSub/Object.h>

namespace PubSub::Details {

// Base of every message: a small value naming the object it concerns. Each message type adds
// its payload (usually a pointer to a new or previous value). Messages are delivered by their
// static type; the dynamic type is only reported to the dispatcher.
class MessageBase
{
public:
    explicit MessageBase(const PubSub::Object* source = nullptr) noexcept : m_source(source) {}
    MessageBase(const MessageBase&) = default;
    MessageBase& operator=(const MessageBase&) = default;
    virtual ~MessageBase();

    // The bus object the message is addressed to (the record's PubSub::Object part).
    const PubSub::Object* source() const noexcept { return m_source; }

private:
    const PubSub::Object* m_source;
};

} // namespace PubSub::Details
