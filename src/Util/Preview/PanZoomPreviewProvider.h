#pragma once

#include <Util/Preview/PreviewProvider.h>

// A pan-and-zoom animation played over the stock picture.
class EDITORUTIL_EXPORT PanZoomPreviewProvider : public PreviewProvider<Animation::TransformationItem>
{
    Q_OBJECT

public:
    explicit PanZoomPreviewProvider(QObject* parent);
    ~PanZoomPreviewProvider() override;

    // Shows `target` (null: nothing) in the preview.
    void setTarget(const Animation::TransformationItem* target);
};
