#pragma once

#include <Util/Preview/PreviewProvider.h>

// A title preset as a clip of the default title length over the stock picture; the panel sets its target
// through previewChange().
class EDITORUTIL_EXPORT TitlePreviewProvider : public PreviewProvider<Overlay::Preset>
{
    Q_OBJECT

public:
    explicit TitlePreviewProvider(QObject* parent);
    ~TitlePreviewProvider() override;
};
