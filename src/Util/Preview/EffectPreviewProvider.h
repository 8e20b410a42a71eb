#pragma once

#include <Util/Preview/PreviewProvider.h>

// An effect shown on the stock picture.
class EDITORUTIL_EXPORT EffectPreviewProvider : public PreviewProvider<Effect::Object>
{
    Q_OBJECT

public:
    explicit EffectPreviewProvider(QObject* parent);
    ~EffectPreviewProvider() override;

    // Shows `target` (null: nothing) in the preview.
    void setTarget(const Effect::Object* target);
};
