#pragma once

#include <Util/Preview/PreviewProvider.h>

// A source of an import; it has no stock pictures, and the panel sets its target through previewChange().
class EDITORUTIL_EXPORT ImportPreviewProvider : public PreviewProvider<Import::Object>
{
    Q_OBJECT

public:
    explicit ImportPreviewProvider(QObject* parent);
    ~ImportPreviewProvider() override;
};
