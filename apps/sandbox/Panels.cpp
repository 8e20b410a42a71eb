#include "Panels.h"

#include <Util/Format.h>
#include <Util/Preview/Resource.h>
#include <Util/Preview/ThumbnailRequester.h>

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QFileInfo>
#include <QFormLayout>
#include <QVBoxLayout>

namespace Sandbox {

namespace {

QString msText(Types::Time time) { return Format::timeMs(time / Types::TimeUnitsPerMillisecond); }

// The picture clip under `position`: overlay video first, then the main track. A clip whose
// end edge is at `position` counts when nothing starts there (playback stops on that edge).
const Timeline::Clip* clipUnder(const Timeline::Object* timeline, Types::Time position)
{
    const Timeline::Clip* ending = nullptr;
    for (const Timeline::Track* track : {timeline->extraVideoTrack(), timeline->primaryTrack()}) {
        for (const Timeline::Clip* clip : timeline->clipsOnTrack(track)) {
            const Timeline::ClipTiming& timing = timeline->clipTiming(clip);
            if (!clip->file())
                continue;
            if (position >= timing.start() && position < timing.end())
                return clip;
            if (position == timing.end() && !ending)
                ending = clip;
        }
    }
    return ending;
}

} // namespace

PreviewPanel::PreviewPanel(QWidget* parent) : QWidget(parent)
{
    auto* layout = new QVBoxLayout(this);
    m_picture = new QLabel(this);
    m_picture->setFixedSize(frameWidth, frameHeight);
    m_picture->setAlignment(Qt::AlignCenter);
    m_picture->setStyleSheet(QStringLiteral("background: black; color: #888;"));
    m_caption = new QLabel(this);
    m_caption->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_picture, 0, Qt::AlignHCenter);
    layout->addWidget(m_caption);
    layout->addStretch();
}

PreviewPanel::~PreviewPanel() = default;

const QPixmap* PreviewPanel::picture() const { return m_picture->pixmap(); }

void PreviewPanel::showFrame(const Timeline::Object* timeline, Types::Time position)
{
    m_clip = timeline ? clipUnder(timeline, position) : nullptr;
    if (!m_clip) {
        m_wantedResource.clear();
        m_picture->clear();
        m_picture->setText(tr("Nothing under the playhead"));
        m_caption->setText(msText(position));
        m_shown = true;
        return;
    }
    const Timeline::ClipTiming& timing = timeline->clipTiming(m_clip);
    m_caption->setText(QStringLiteral("%1   %2").arg(m_clip->name().toQString(), msText(position)));
    if (m_clip->isBroken() || !m_clip->file()->isOpened()) {
        m_wantedResource.clear();
        m_picture->clear();
        m_picture->setText(tr("Media missing"));
        m_shown = true;
        return;
    }
    const auto resource = Resource::encode(m_clip);
    const std::string key = std::get<0>(resource);
    Util::ThumbnailRequester*& requester = m_requesters[key];
    if (!requester) {
        requester = new Util::ThumbnailRequester(resource, this);
        requester->setSize(frameWidth, frameHeight);
        requester->setResizeMode(Util::ThumbnailRequester::KeepAspectRatio);
        requester->setPaddingColor(Qt::black);
        connect(requester, &Util::ThumbnailRequester::thumbnailReady, this,
                [this, key](Types::Time time, const QPixmap& pixmap) {
                    if (key != m_wantedResource || time != m_wantedTime)
                        return;
                    m_picture->setPixmap(pixmap);
                    m_shown = true;
                    emit frameArrived();
                });
    }
    const double media = double(position - timing.position) * timing.speed;
    const Types::Time length = Types::Time(double(timing.length) * timing.speed);
    m_wantedTime = timing.offset + Types::Time(timing.reversed ? double(length) - media : media);
    m_wantedResource = key;
    m_shown = false;
    requester->request(m_wantedTime);
}

ClipPanel::ClipPanel(Model::Host& host, QWidget* parent) : QGroupBox(tr("Clip"), parent), m_host(host)
{
    m_form = new QFormLayout(this);
    m_name = new QLabel(this);
    m_media = new QLabel(this);
    m_media->setWordWrap(true);
    m_place = new QLabel(this);
    m_format = new QLabel(this);
    m_speed = new QDoubleSpinBox(this);
    m_speed->setRange(0.25, 4.0);
    m_speed->setSingleStep(0.25);
    m_speed->setSuffix(QStringLiteral("x"));
    m_reversed = new QCheckBox(tr("Play backwards"), this);
    m_form->addRow(tr("Name"), m_name);
    m_form->addRow(tr("Media"), m_media);
    m_form->addRow(tr("On timeline"), m_place);
    m_form->addRow(tr("Format"), m_format);
    m_form->addRow(tr("Speed"), m_speed);
    m_form->addRow(QString(), m_reversed);
    connect(m_speed, qOverload<double>(&QDoubleSpinBox::valueChanged), this, [this](double speed) {
        if (!m_refreshing && m_clip)
            m_host.edit(m_timeline)->setClipSpeed(m_clip, speed);
    });
    connect(m_reversed, &QCheckBox::toggled, this, [this] {
        if (!m_refreshing && m_clip)
            m_host.edit(m_timeline)->reverseClip(m_clip);
    });
    refresh();
}

void ClipPanel::setClip(const Timeline::Object* timeline, const Timeline::Clip* clip)
{
    m_timeline = timeline;
    m_clip = timeline && timeline->contains(clip) ? clip : nullptr;
    refresh();
}

void ClipPanel::refresh()
{
    m_refreshing = true;
    const bool has = m_clip != nullptr;
    m_speed->setEnabled(has);
    m_reversed->setEnabled(has);
    if (!has) {
        m_name->setText(tr("No clip selected"));
        for (QLabel* label : {m_media, m_place, m_format})
            label->clear();
        m_speed->setValue(1.0);
        m_reversed->setChecked(false);
        m_refreshing = false;
        return;
    }
    const Timeline::ClipTiming& timing = m_timeline->clipTiming(m_clip);
    m_name->setText(m_clip->name().toQString() + (m_clip->isBroken() ? tr(" (missing)") : QString()));
    const Media::File* file = m_clip->file();
    m_media->setText(file ? QFileInfo(file->path().toQString()).absolutePath() : QString());
    m_place->setText(tr("%1 to %2 (%3)").arg(msText(timing.start()), msText(timing.end()), msText(timing.length)));
    QString format;
    if (file && file->isOpened()) {
        if (const Media::Video* video = file->videoStream(m_clip->streamIndex()))
            format = Format::videoSettings(video);
        else if (const Media::Audio* audio = file->audioStream(m_clip->streamIndex()))
            format = Format::audioSettings(audio, 0, 0).trimmed();
    }
    m_format->setText(format);
    m_speed->setValue(timing.speed);
    m_reversed->setChecked(timing.reversed);
    m_refreshing = false;
}

} // namespace Sandbox
