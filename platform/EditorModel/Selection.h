#pragma once

#include <EditorModel/ModelView.h>

#include <set>

namespace Selection {

// The items of one kind the user has selected (clips of the timeline, for one).
template <class T>
class Object : public virtual PubSub::Object
{
public:
    std::set<const T*> items;
};

// The model's view of the selection of T: follows every selection record of T there is and will
// be, and reports each change.
template <class T>
class View : public Model::View<Object<T>>
{
public:
    View()
    {
        this->observeNew(true);
        for (const Object<T>* selection : Model::Registry::objectsOf<Object<T>>())
            this->observe(selection);
    }

    // The selection record followed (the first, if several), or null.
    const Object<T>* selectionObject() const
    {
        const auto records = this->records();
        return records.empty() ? nullptr : *records.begin();
    }
    std::set<const T*> selection() const
    {
        const Object<T>* selection = selectionObject();
        return selection ? selection->items : std::set<const T*>();
    }
    // Asks for a new selection; false when there is no selection record to change.
    bool select(const std::set<const T*>& items)
    {
        const Object<T>* selection = selectionObject();
        if (!selection) {
            LOG(ERROR) << "Selection::View::select: no selection record";
            return false;
        }
        auto edit = this->edit(selection);
        edit->items = items;
        return edit.commit();
    }

protected:
    virtual void selectionChanged(const std::set<const T*>& /*current*/, const std::set<const T*>& /*previous*/) {}

private:
    void recordChanged(const Object<T>* selection, const Object<T>* previous) override
    {
        if (selection->items != previous->items)
            selectionChanged(selection->items, previous->items);
    }
};

} // namespace Selection
