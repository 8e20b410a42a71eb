#pragma once

#include <EditorModel/Types.h>

#include <PubSub/MessageBase.h>
#include <PubSub/Object.h>

// The process-wide bus objects to which application commands, statistics events and application
// events are addressed, with their messages.

namespace Command {

const PubSub::Object* globalObject();

// A command without arguments, addressed to Command::globalObject().
class Message : public PubSub::Details::MessageBase
{
public:
    Message() : MessageBase(globalObject()) {}
};

// A command carrying one text (a path, a category).
class TextMessage : public Message
{
public:
    explicit TextMessage(Types::String text) : text(std::move(text)) {}
    Types::String text;
};

class OpenProject : public TextMessage
{
public:
    using TextMessage::TextMessage;
    const Types::String& path() const noexcept { return text; }
};
class AddFile : public TextMessage
{
public:
    using TextMessage::TextMessage;
    const Types::String& path() const noexcept { return text; }
};
class ShowAddMediaCategory : public TextMessage
{
public:
    using TextMessage::TextMessage;
    const Types::String& category() const noexcept { return text; }
};
class StartSlideshow : public Message
{
};
class ShowMainWindow : public Message
{
};
class HideMainWindow : public Message
{
};
class ShowToolsPage : public Message
{
};

} // namespace Command

namespace Statistics {

const PubSub::Object* globalObject();

// A usage event ("tag") reported by an action.
class Event : public PubSub::Details::MessageBase
{
public:
    explicit Event(Types::String tag) : MessageBase(globalObject()), tag(std::move(tag)) {}
    Types::String tag;
};

} // namespace Statistics

namespace AppEvents {

const PubSub::Object* globalObject();

// The application has finished starting up (its main window is shown).
class StartupCompleted : public PubSub::Details::MessageBase
{
public:
    StartupCompleted() : MessageBase(globalObject()) {}
};

// The application is about to quit.
class Quitting : public PubSub::Details::MessageBase
{
public:
    Quitting() : MessageBase(globalObject()) {}
};

} // namespace AppEvents
