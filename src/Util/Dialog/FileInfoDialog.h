#pragma once

#include <Util/EditorUtilExport.h>

#include <QDialog>

namespace Media {
class File;
}

namespace Dialog {

// What the editor knows of a media file: its name; for the first video stream the frame
// size as shown (pixel aspect applied), the frame rate as a ratio and the duration; for the
// first audio stream the channel count and the duration. Each value is a QLabel named
// "fileNameValue", "frameSizeValue", "frameRateValue", "videoDurationValue",
// "channelsValue" and "audioDurationValue" (stream rows are absent without the stream).
class EDITORUTIL_EXPORT FileInfoDialog : public QDialog
{
    Q_OBJECT
public:
    explicit FileInfoDialog(const Media::File& file, QWidget* parent = nullptr);
};

} // namespace Dialog
