#include "FileInfoDialog.h"

#include <Util/Format.h>
#include <Util/Interfaces/EditorModel.h>

#include <QDialogButtonBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QVBoxLayout>

#include <cmath>

namespace Dialog {

namespace {

QString durationText(Types::Time duration) { return Format::timeMs(duration / Types::TimeUnitsPerMillisecond); }

void addRow(QFormLayout* form, const QString& caption, const QString& value, const char* objectName)
{
    auto* label = new QLabel(value);
    label->setObjectName(QLatin1String(objectName));
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    form->addRow(caption, label);
}

} // namespace

FileInfoDialog::FileInfoDialog(const Media::File& file, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint)
{
    setObjectName(QStringLiteral("FileInfoDialog"));
    setWindowTitle(tr("File information"));
    setModal(true);

    auto* form = new QFormLayout;
    addRow(form, tr("File name:"), QFileInfo(file.path().toQString()).fileName(), "fileNameValue");
    if (const Media::Video* video = file.mainVideo()) {
        const long long shownWidth =
            video->pixelAspect.denominator() == 0
                ? video->width
                : std::llround(static_cast<double>(video->width) * boost::rational_cast<double>(video->pixelAspect));
        addRow(form, tr("Frame size:"), QStringLiteral("%1x%2").arg(shownWidth).arg(video->height), "frameSizeValue");
        addRow(form, tr("Frame rate:"),
               QStringLiteral("%1/%2").arg(video->frameRate.numerator()).arg(video->frameRate.denominator()),
               "frameRateValue");
        addRow(form, tr("Video duration:"), durationText(video->duration), "videoDurationValue");
    }
    if (const Media::Audio* audio = file.mainAudio()) {
        addRow(form, tr("Channels:"), QString::number(audio->channels), "channelsValue");
        addRow(form, tr("Audio duration:"), durationText(audio->duration), "audioDurationValue");
    }
    auto* buttons = new QDialogButtonBox(QDialogButtonBox::Ok, this);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);

    auto* layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(buttons);
}

} // namespace Dialog
