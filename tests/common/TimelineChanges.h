#pragma once

#include <EditorModel/TimelineViews.h>

// Counts the changes the model announces of one timeline (one per committed edit).
class TimelineChanges : public Timeline::Details::ObjectViewBase
{
public:
    explicit TimelineChanges(const Timeline::Object* timeline) { observe(timeline); }
    int count = 0;

private:
    void timelineChanged(const Timeline::Object*, const Timeline::Object*) override { ++count; }
};
