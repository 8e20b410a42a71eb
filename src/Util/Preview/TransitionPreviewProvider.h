#pragma once

#include <Util/Preview/PreviewProvider.h>

// A transition between two stock pictures (before and after it).
class EDITORUTIL_EXPORT TransitionPreviewProvider : public PreviewProvider<Transition::Object>
{
    Q_OBJECT

public:
    explicit TransitionPreviewProvider(QObject* parent);
    ~TransitionPreviewProvider() override;

    // Shows `target` (null: nothing) in the preview.
    void setTarget(const Transition::Object* target);
};
