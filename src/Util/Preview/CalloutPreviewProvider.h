#pragma once

#include <Util/Preview/PreviewProvider.h>

// A callout preset as a clip of the default callout length over the stock picture; the panel sets its target
// through previewChange().
class EDITORUTIL_EXPORT CalloutPreviewProvider : public PreviewProvider<Overlay::Preset>
{
    Q_OBJECT

public:
    explicit CalloutPreviewProvider(QObject* parent);
    ~CalloutPreviewProvider() override;
};
