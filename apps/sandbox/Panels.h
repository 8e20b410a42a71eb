#pragma once

#include <Util/Editor/ClipAdjustmentsProvider.h>
#include <Util/Interfaces/DQtUtil.h>
#include <Util/Interfaces/EditorModel.h>

#include <QGroupBox>
#include <QImage>
#include <QLabel>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QListWidget;
class QMimeData;
class QPushButton;
class QTreeWidget;
class QUndoStack;
class CompositionProvider;

namespace Util {
class ThumbnailRequester;
}

namespace Sandbox {

// The preview: the frame under the playhead (the overlay track over the main track), drawn
// by the model's thumbnail service, with the clip's name and the time below it; or, while the
// browser of effects and presets holds the player, the picture of the item chosen there.
class PreviewPanel : public QWidget
{
    Q_OBJECT

public:
    static constexpr int frameWidth = 480;
    static constexpr int frameHeight = 270;

    explicit PreviewPanel(QWidget* parent = nullptr);
    ~PreviewPanel() override;

    void showFrame(const Timeline::Object* timeline, Types::Time position);
    // Shows a still picture instead of the timeline (a preview of an effect or a preset).
    void showPicture(const QImage& picture, const QString& caption);
    // The clip shown, or null when nothing is under the playhead (or a picture is shown).
    const Timeline::Clip* shownClip() const { return m_clip; }
    // Whether the frame asked for last has arrived.
    bool frameShown() const { return m_shown; }
    bool showsPicture() const { return m_showsPicture; }
    QPixmap picture() const;
    // A line above the frame saying who uses the player.
    void setNote(const QString& note);

Q_SIGNALS:
    void frameArrived();

private:
    QLabel* m_note;
    QLabel* m_picture;
    QLabel* m_caption;
    std::map<std::string, Util::ThumbnailRequester*> m_requesters;
    const Timeline::Clip* m_clip = nullptr;
    std::string m_wantedResource;
    qint64 m_wantedTime = -1;
    bool m_shown = false;
    bool m_showsPicture = false;
};

// The effects, filters, transitions, titles, callouts, quizzes, pan-and-zoom and animation
// presets, each kind with its preview provider. Choosing an item takes the player: the item
// becomes its provider's target and the player gives the preview its composition, upon which
// the provider asks for a (re)start and the preview's picture is drawn on the stock picture.
// Whoever takes the player next ends the preview (the composition goes). Each item can be
// dragged onto the timeline as the library's drags carry it.
class PreviewBrowser : public QWidget
{
    Q_OBJECT

public:
    PreviewBrowser(ExclusiveService& player, QWidget* parent = nullptr);
    ~PreviewBrowser() override;

    QTreeWidget* list() const { return m_list; }
    // Chooses item `index` of the kind named `kind` ("Effects", "Colour filters", ...).
    bool choose(const QString& kind, int index);
    // What dragging that item out carries (the caller owns it), onto a clip or the title track;
    // null when there is no such item.
    QMimeData* mimeDataFor(const QString& kind, int index) const;
    ExclusiveClient* client() const { return m_client; }

Q_SIGNALS:
    void pictureReady(const QImage& picture, const QString& caption);

private:
    struct Kind;
    template <class X, class Provider>
    void addKind(const QString& name, Provider* provider, void (*pack)(QMimeData*, const X&),
                 std::vector<std::pair<QString, std::shared_ptr<const X>>> items, std::int64_t position = 0);
    void chosen(int kind, int index);

    QTreeWidget* m_list;
    ExclusiveClient* m_client;
    Composition::Object m_composition;
    std::vector<std::unique_ptr<Kind>> m_kinds;
    std::function<void()> m_endPreview;
    QString m_caption;
};

// The selected clip: what it shows, where it stands, and its adjustments (normalization,
// direction, speed, stabilization, colour filter) through the library's adjustments provider:
// each change is one command of `undo`, entries that do not apply are disabled with the
// reason, and a refused value is put back with the provider's message below. Below them, what
// the clip was given (its effects, then its motion), each of which Remove takes off again.
class ClipPanel : public QGroupBox
{
    Q_OBJECT

public:
    ClipPanel(QUndoStack& undo, QWidget* parent = nullptr);
    void setClip(const Timeline::Object* timeline, const Timeline::Clip* clip);
    ClipAdjustmentsProvider& adjustments() { return m_adjustments; }
    QString message() const { return m_message->text(); }

private:
    void refresh();

    ClipAdjustmentsProvider m_adjustments;
    QFormLayout* m_form;
    QLabel* m_name;
    QLabel* m_media;
    QLabel* m_place;
    QLabel* m_format;
    QCheckBox* m_reversed;
    QDoubleSpinBox* m_speed;
    QCheckBox* m_normalized;
    QCheckBox* m_stabilized;
    QComboBox* m_filter;
    QListWidget* m_given;
    QPushButton* m_remove;
    QLabel* m_message;
    bool m_refreshing = false;
};

} // namespace Sandbox
