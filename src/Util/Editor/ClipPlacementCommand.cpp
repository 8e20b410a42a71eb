#include "ClipPlacementCommand.h"

#include <glog/logging.h>

#include <utility>

ClipPlacementCommand::Placements ClipPlacementCommand::placementsOf(const Timeline::Object* timeline,
                                                                    const std::vector<const Timeline::Clip*>& clips)
{
    Placements result;
    for (const Timeline::Clip* clip : clips) {
        Placement placement{clip, std::nullopt, std::nullopt};
        if (timeline->contains(clip))
            placement.timing = timeline->clipTiming(clip);
        if (const Timeline::Link* link = timeline->linkOf(clip))
            placement.link = *link;
        result.push_back(placement);
    }
    return result;
}

ClipPlacementCommand::ClipPlacementCommand(const QString& text, const Timeline::Object* timeline, Placements before,
                                           QUndoCommand* parent)
    : QUndoCommand(text, parent), m_timeline(timeline), m_before(std::move(before))
{
    std::vector<const Timeline::Clip*> clips;
    for (const Placement& placement : m_before)
        clips.push_back(placement.clip);
    m_after = placementsOf(timeline, clips);
}

void ClipPlacementCommand::undo() { put(m_before); }

void ClipPlacementCommand::redo()
{
    if (!std::exchange(m_pushed, false))
        put(m_after);
}

void ClipPlacementCommand::put(const Placements& placements)
{
    if (!Model::Registry::contains(typeid(Timeline::Object), m_timeline)) {
        LOG(ERROR) << "ClipPlacementCommand: the timeline of \"" << text().toStdString() << "\" is gone";
        return;
    }
    Model::View<Timeline::Object> view;
    auto edit = view.edit(m_timeline);
    for (const Placement& p : placements) {
        if (!p.timing) {
            if (edit->contains(p.clip))
                edit->removeClip(p.clip);
        } else if (edit->contains(p.clip)) {
            edit->moveClip(p.clip, *p.timing);
        } else if (Model::Registry::contains(typeid(Timeline::Clip), p.clip)) {
            edit->addClip(p.clip, *p.timing);
        } else {
            LOG(ERROR) << "ClipPlacementCommand: a clip of \"" << text().toStdString() << "\" is gone";
        }
    }
    // Ties once every clip stands where it should: a master may come back after its slave.
    for (const Placement& p : placements) {
        if (!edit->contains(p.clip))
            continue;
        if (p.link && edit->contains(p.link->master))
            edit->addLink(p.link->master, p.clip, p.link->offset);
        else if (!p.link && edit->linkOf(p.clip))
            edit->removeLink(p.clip);
    }
    edit.commit();
}
