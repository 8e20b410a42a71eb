#pragma once

#include <Util/Preview/PreviewProvider.h>

// A colour filter shown on the stock picture, or on a ready preview record that it copies.
class EDITORUTIL_EXPORT ColorFilterPreviewProvider : public PreviewProvider<Effect::Object>
{
    Q_OBJECT

public:
    explicit ColorFilterPreviewProvider(QObject* parent);
    ColorFilterPreviewProvider(const Preview::Object<Effect::Object>& preview, QObject* parent);
    ~ColorFilterPreviewProvider() override;

    // Shows `target` (null: nothing) in the preview.
    void setTarget(const Effect::Object* target);
};
