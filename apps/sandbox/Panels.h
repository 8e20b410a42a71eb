#pragma once

#include <Util/Interfaces/EditorModel.h>

#include <QGroupBox>
#include <QLabel>

#include <map>
#include <string>

class QCheckBox;
class QDoubleSpinBox;
class QFormLayout;

namespace Util {
class ThumbnailRequester;
}

namespace Sandbox {

// The preview: the frame under the playhead (the overlay track over the main track), drawn
// by the model's thumbnail service, with the clip's name and the time below it.
class PreviewPanel : public QWidget
{
    Q_OBJECT

public:
    static constexpr int frameWidth = 480;
    static constexpr int frameHeight = 270;

    explicit PreviewPanel(QWidget* parent = nullptr);
    ~PreviewPanel() override;

    void showFrame(const Timeline::Object* timeline, Types::Time position);
    // The clip shown, or null when nothing is under the playhead.
    const Timeline::Clip* shownClip() const { return m_clip; }
    // Whether the frame asked for last has arrived.
    bool frameShown() const { return m_shown; }
    const QPixmap* picture() const;

Q_SIGNALS:
    void frameArrived();

private:
    QLabel* m_picture;
    QLabel* m_caption;
    std::map<std::string, Util::ThumbnailRequester*> m_requesters;
    const Timeline::Clip* m_clip = nullptr;
    std::string m_wantedResource;
    qint64 m_wantedTime = -1;
    bool m_shown = false;
};

// The selected clip: what it shows, where it stands, and the adjustments the timeline keeps
// for it (speed, direction).
class ClipPanel : public QGroupBox
{
    Q_OBJECT

public:
    ClipPanel(Model::Host& host, QWidget* parent = nullptr);
    void setClip(const Timeline::Object* timeline, const Timeline::Clip* clip);

private:
    void refresh();

    Model::Host& m_host;
    const Timeline::Object* m_timeline = nullptr;
    const Timeline::Clip* m_clip = nullptr;
    QFormLayout* m_form;
    QLabel* m_name;
    QLabel* m_media;
    QLabel* m_place;
    QLabel* m_format;
    QDoubleSpinBox* m_speed;
    QCheckBox* m_reversed;
    bool m_refreshing = false;
};

} // namespace Sandbox
