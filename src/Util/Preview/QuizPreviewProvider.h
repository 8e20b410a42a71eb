#pragma once

#include <Util/Preview/PreviewProvider.h>

// A quiz preset as a clip of the default quiz length over the stock picture; the panel sets its target
// through previewChange().
class EDITORUTIL_EXPORT QuizPreviewProvider : public PreviewProvider<Quiz::Preset>
{
    Q_OBJECT

public:
    explicit QuizPreviewProvider(QObject* parent);
    ~QuizPreviewProvider() override;
};
