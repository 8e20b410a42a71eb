#pragma once

#include <Util/Preview/PreviewProvider.h>

// An animation of a stock picture (the icon) moving over a stock background.
class EDITORUTIL_EXPORT AnimationPreviewProvider : public PreviewProvider<Animation::TransformationItem>
{
    Q_OBJECT

public:
    explicit AnimationPreviewProvider(QObject* parent);
    ~AnimationPreviewProvider() override;

    // Shows `item` from `position`: the position changes first, then the target, in two
    // separate changes of the preview.
    void setTarget(const Animation::TransformationItem* item, std::int64_t position);
};
