#include "ClipContentCommand.h"

#include <glog/logging.h>

#include <algorithm>
#include <memory>
#include <utility>

ClipContentCommand::ClipContentCommand(const QString& text, const Timeline::Clip* clip, Timeline::Clip before,
                                       Timeline::Clip after, QUndoCommand* parent)
    : QUndoCommand(text, parent), m_clip(clip), m_before(std::move(before)), m_after(std::move(after))
{}

bool ClipContentCommand::sameContent(const Timeline::Clip& a, const Timeline::Clip& b)
{
    const std::vector<const Effect::Object*> x = a.effects();
    const std::vector<const Effect::Object*> y = b.effects();
    return a.animation() == b.animation()
           && std::equal(x.begin(), x.end(), y.begin(), y.end(),
                         [](const Effect::Object* e, const Effect::Object* f) { return *e == *f; });
}

void ClipContentCommand::undo() { put(m_before); }

void ClipContentCommand::redo()
{
    if (!std::exchange(m_pushed, false))
        put(m_after);
}

void ClipContentCommand::put(const Timeline::Clip& content)
{
    if (!Model::Registry::contains(typeid(Timeline::Clip), m_clip)) {
        LOG(ERROR) << "ClipContentCommand: the clip of \"" << text().toStdString() << "\" is gone; nothing to put back";
        return;
    }
    Model::View<Timeline::Clip> view;
    auto edit = view.edit(m_clip);
    for (const Effect::Object* effect : m_clip->effects())
        edit->removeEffect(effect->id());
    for (const Effect::Object* effect : content.effects())
        edit->replaceEffect(effect);
    const Animation::TransformationItem* motion = content.animation();
    edit->setAnimation(motion ? std::make_shared<const Animation::TransformationItem>(*motion) : nullptr);
    edit.commit();
}
