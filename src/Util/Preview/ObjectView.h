#pragma once

#include <Util/EditorUtilExport.h>
#include <Util/Interfaces/EditorModel.h>
#include <Util/Preview/MessageView.h>

#include <cstdint>
#include <set>
#include <vector>

namespace Preview {

// What a preview is made of apart from its target: the stock media it is drawn on and, for the
// kinds that are clips on a timeline, the clip's duration (0 when none applies).
struct Identity
{
    std::vector<Media::File> media;
    Types::Time duration = 0;
};

// A live preview of one item (an effect, a transition, a preset...) on the bus.
template <class X>
class Object : public virtual PubSub::Object
{
public:
    Identity identity;
    std::int64_t position = 0; // set only by animation previews
    const X* target = nullptr;
    const Composition::Object* composition = nullptr;
    std::int32_t width = 800;
    std::int32_t height = 450;
};

namespace Details {

// Message::View with the names previews use; its hooks become previewAdded, previewChanged and
// previewRemoved.
template <class T>
class ObjectViewBase : public Message::View<T>
{
public:
    using SetterChain = typename Message::View<T>::SetterChain;

    explicit ObjectViewBase(const T* preview = nullptr);

    const T* preview() const { return this->object(); }
    std::set<const T*> previews() const { return this->objects(); }
    SetterChain previewAdd(T* preview) { return this->add(preview); }
    SetterChain previewOwn(T* preview) { return this->own(preview); }
    SetterChain previewChange(const T* preview) { return this->change(preview); }
    bool previewRemove(const T* preview) { return this->remove(preview); }
    bool previewForget(const T* preview) { return this->forget(preview); }
    bool previewObserve(const T* preview) { return this->observe(preview); }
    bool previewIsObserved(const T* preview) const { return this->isObserved(preview); }
    bool previewIsOwned(const T* preview) const { return this->isOwned(preview); }
    T* previewOwnerPointer(const T* preview) const { return this->ownerPointer(preview); }

protected:
    virtual void previewAdded(const T* preview);
    virtual void previewChanged(const T* preview, const T* previous, const T* current);
    virtual void previewChanged(const T* preview, const T* previous);
    virtual void previewChanged(const T* preview);
    virtual void previewRemoved(const T* preview);

private:
    void added(const T* object) override;
    void changed(const T* object, const T* previous, const T* current) override;
    void changed(const T* object, const T* previous) override;
    void changed(const T* object) override;
    void removed(const T* object) override;
};

} // namespace Details

// The view of previews of X: reports a new target and a new composition of a preview, each
// with the value it had before (the new one is in the preview itself).
template <class X>
class View : public Details::ObjectViewBase<Object<X>>
{
public:
    explicit View(const Object<X>* preview = nullptr);

protected:
    virtual void targetChanged(const Object<X>* preview, const X* previousTarget);
    virtual void compositionChanged(const Object<X>* preview, const Composition::Object* previousComposition);

    void previewChanged(const Object<X>* preview, const Object<X>* previous, const Object<X>* current) override;
    using Details::ObjectViewBase<Object<X>>::previewChanged;
};

// --- definitions -----------------------------------------------------------------------------------

namespace Details {

template <class T>
ObjectViewBase<T>::ObjectViewBase(const T* preview) : Message::View<T>(preview)
{}

template <class T>
void ObjectViewBase<T>::previewAdded(const T*)
{}

template <class T>
void ObjectViewBase<T>::previewChanged(const T*, const T*, const T*)
{}

template <class T>
void ObjectViewBase<T>::previewChanged(const T*, const T*)
{}

template <class T>
void ObjectViewBase<T>::previewChanged(const T*)
{}

template <class T>
void ObjectViewBase<T>::previewRemoved(const T*)
{}

template <class T>
void ObjectViewBase<T>::added(const T* object)
{
    previewAdded(object);
}

template <class T>
void ObjectViewBase<T>::changed(const T* object, const T* previous, const T* current)
{
    previewChanged(object, previous, current);
}

template <class T>
void ObjectViewBase<T>::changed(const T* object, const T* previous)
{
    previewChanged(object, previous);
}

template <class T>
void ObjectViewBase<T>::changed(const T* object)
{
    previewChanged(object);
}

template <class T>
void ObjectViewBase<T>::removed(const T* object)
{
    previewRemoved(object);
}

} // namespace Details

template <class X>
View<X>::View(const Object<X>* preview) : Details::ObjectViewBase<Object<X>>(preview)
{}

template <class X>
void View<X>::targetChanged(const Object<X>*, const X*)
{}

template <class X>
void View<X>::compositionChanged(const Object<X>*, const Composition::Object*)
{}

template <class X>
void View<X>::previewChanged(const Object<X>* preview, const Object<X>* previous, const Object<X>* current)
{
    if (previous->target != current->target)
        targetChanged(preview, previous->target);
    if (previous->composition != current->composition)
        compositionChanged(preview, previous->composition);
}

} // namespace Preview

// The kinds of previews the library shows, built into it once.
#define EDITORUTIL_PREVIEW_INSTANTIATIONS(MODE)                                                                        \
    MODE(Effect::Object)                                                                                               \
    MODE(Transition::Object)                                                                                           \
    MODE(Overlay::Preset)                                                                                              \
    MODE(Quiz::Preset)                                                                                                 \
    MODE(Import::Object)                                                                                               \
    MODE(Animation::TransformationItem)

#define EDITORUTIL_PREVIEW_EXTERN(X)                                                                                   \
    extern template class EDITORUTIL_EXPORT Message::View<Preview::Object<X>>;                                         \
    extern template class EDITORUTIL_EXPORT Preview::Details::ObjectViewBase<Preview::Object<X>>;                      \
    extern template class EDITORUTIL_EXPORT Preview::View<X>;
EDITORUTIL_PREVIEW_INSTANTIATIONS(EDITORUTIL_PREVIEW_EXTERN)
#undef EDITORUTIL_PREVIEW_EXTERN
