#include <EditorModel/Editor.h>
#include <EditorModel/GlobalObjects.h>
#include <EditorModel/Media.h>
#include <EditorModel/Playback.h>
#include <EditorModel/Presets.h>
#include <EditorModel/Registry.h>
#include <EditorModel/Thumbnail.h>
#include <EditorModel/Types.h>

#include <QCoreApplication>

#include <ostream>
#include <unordered_map>

namespace Types {

std::ostream& operator<<(std::ostream& out, const String& text) { return out << text.str(); }

} // namespace Types

namespace Translator {

Types::String translate(const std::string& text)
{
    return Types::String(QCoreApplication::translate("EditorModel", text.c_str()));
}

} // namespace Translator

namespace Model::Registry {

namespace {
std::unordered_map<std::type_index, std::set<const PubSub::Object*>>& table()
{
    static auto* records = new std::unordered_map<std::type_index, std::set<const PubSub::Object*>>;
    return *records;
}
} // namespace

void enter(const std::type_index& type, const PubSub::Object* object)
{
    if (object)
        table()[type].insert(object);
}

void leave(const std::type_index& type, const PubSub::Object* object)
{
    const auto it = table().find(type);
    if (it != table().end())
        it->second.erase(object);
}

bool contains(const std::type_index& type, const PubSub::Object* object)
{
    const auto it = table().find(type);
    return it != table().end() && it->second.count(object) != 0;
}

std::set<const PubSub::Object*> objects(const std::type_index& type)
{
    const auto it = table().find(type);
    return it == table().end() ? std::set<const PubSub::Object*>() : it->second;
}

} // namespace Model::Registry

namespace Media {

Opener::~Opener() = default;

namespace {
template <class Stream>
const Stream* streamWithIndex(const std::vector<const Stream*>& streams, int index)
{
    for (const Stream* stream : streams) {
        if (stream->index == index)
            return stream;
    }
    return nullptr;
}
} // namespace

const Video* File::videoStream(int index) const { return streamWithIndex(m_videos, index); }

const Audio* File::audioStream(int index) const { return streamWithIndex(m_audios, index); }

} // namespace Media

namespace Overlay {
namespace {
const Types::String overlayMime("application/x-editor-overlay-preset");
}
const Types::String* Preset::mimeType = &overlayMime;
} // namespace Overlay

namespace Quiz {
namespace {
const Types::String quizMime("application/x-editor-quiz-preset");
}
const Types::String* Preset::mimeType = &quizMime;
} // namespace Quiz

namespace Import {
namespace {
const Types::String importMime("application/x-editor-import-source");
}
const Types::String* Object::mimeType = &importMime;
} // namespace Import

namespace Thumbnail {
Provider::~Provider() = default;
} // namespace Thumbnail

namespace {
// The bus objects of the application itself; never destroyed.
template <int>
const PubSub::Object* applicationObject()
{
    static const PubSub::Object* object = new PubSub::Object;
    return object;
}
} // namespace

const PubSub::Object* Command::globalObject() { return applicationObject<0>(); }

const PubSub::Object* Statistics::globalObject() { return applicationObject<1>(); }

const PubSub::Object* AppEvents::globalObject() { return applicationObject<2>(); }

namespace Editor {

Worker::~Worker() = default;

WorkerView::WorkerView(bool handleRequests) : m_handleRequests(handleRequests)
{
    if (!handleRequests)
        return;
    observeNew(true);
    for (const Object* editor : Model::Registry::objectsOf<Object>()) {
        observe(editor);
        attachTo(editor, this);
    }
}

WorkerView::~WorkerView()
{
    for (const Object* editor : records()) {
        if (editor->worker == this)
            attachTo(editor, nullptr);
    }
}

const Object* WorkerView::editorObject() const
{
    const auto editors = records();
    return editors.empty() ? nullptr : *editors.begin();
}

void WorkerView::recordAdded(const Object* editor)
{
    if (m_handleRequests && !editor->worker)
        attachTo(editor, this);
}

void WorkerView::recordChanged(const Object* editor, const Object* previous)
{
    // Attaching a worker is no change of the editing state.
    Object withoutWorker(*previous);
    withoutWorker.worker = editor->worker;
    const bool onlyWorker = withoutWorker.active == editor->active && withoutWorker.mode == editor->mode
                            && withoutWorker.timeline == editor->timeline && withoutWorker.clip == editor->clip
                            && withoutWorker.editPosition == editor->editPosition;
    if (!onlyWorker)
        editorChanged(editor, previous);
}

void WorkerView::attachTo(const Object* editor, Worker* worker)
{
    auto e = edit(editor);
    e->worker = worker;
}

std::optional<Types::Time> editPosition(const Timeline::Clip* clip)
{
    for (const Object* editor : Model::Registry::objectsOf<Object>()) {
        if (clip && editor->canEdit() && editor->clip == clip && editor->editPosition)
            return editor->editPosition;
    }
    return std::nullopt;
}

} // namespace Editor

namespace Playback {

void View::playbackChanged(const Object* object, const Object* previous, const Object* current)
{
    const State* before = previous->state();
    const State* after = current->state();
    const int was = before ? before->code : State::Stopped;
    const int is = after ? after->code : State::Stopped;
    if (is == State::Playing && was != State::Playing)
        playbackStarted(object);
    if (is == State::Stopped && was != State::Stopped)
        playbackStopped(object);
    if (after && (!before || before->position != after->position))
        positionChanged(object);
}

} // namespace Playback
